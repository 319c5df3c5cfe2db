#pragma once

#include <cstdint>

namespace vt {

/// What a directory call answers: 0, or one of the negative codes below or of the directory's own.
using DirStatus = std::int32_t;

// Status codes.
inline constexpr DirStatus kDSNoErr = 0;
inline constexpr DirStatus kDSInvalidReference = -14003;
inline constexpr DirStatus kDSNodeNotFound = -14008;
inline constexpr DirStatus kDSBufferTooSmall = -14089;
inline constexpr DirStatus kDSAuthFailed = -14090;
inline constexpr DirStatus kDSAuthMethodNotSupported = -14093;
inline constexpr DirStatus kDSAuthInBuffFormatError = -14094;
inline constexpr DirStatus kDSRecordNotFound = -14136;
inline constexpr DirStatus kDSNullParameter = -14200;
inline constexpr DirStatus kDSNoRoomInBuffer = -14260;
inline constexpr DirStatus kDSIndexOutOfRange = -14284;
inline constexpr DirStatus kDSMemoryError = -14901;

/// Which nodes or records a call looks for.
using DirPatternMatch = std::uint32_t;
inline constexpr DirPatternMatch kDSExact = 0x2001;
/// The node that answers for every place where users may be found.
inline constexpr DirPatternMatch kDSAuthenticationSearchNodeName = 0x2201;

// Record types.
inline constexpr const char* kDSStdRecordTypeUsers = "dsRecTypeStandard:Users";
inline constexpr const char* kDSStdRecordTypeGroups = "dsRecTypeStandard:Groups";
inline constexpr const char* kDSStdRecordTypeSharePoints = "dsRecTypeStandard:SharePoints";

// Wildcards.
inline constexpr const char* kDSRecordsAll = "dsRecordsAll";
inline constexpr const char* kDSAttributesAll = "dsAttributesAll";

// Attribute types.
inline constexpr const char* kDSNAttrRecordName = "dsAttrTypeStandard:RecordName";
inline constexpr const char* kDSNAttrMetaNodeLocation = "dsAttrTypeStandard:AppleMetaNodeLocation";
inline constexpr const char* kDS1AttrUniqueID = "dsAttrTypeStandard:UniqueID";
inline constexpr const char* kDS1AttrPrimaryGroupID = "dsAttrTypeStandard:PrimaryGroupID";
inline constexpr const char* kDS1AttrDistinguishedName = "dsAttrTypeStandard:RealName";
inline constexpr const char* kDSNAttrGroupMembership = "dsAttrTypeStandard:GroupMembership";

// Attribute types of share points.
inline constexpr const char* kDSNativeAttrDirectoryPath = "dsAttrTypeNative:directory_path";
inline constexpr const char* kDSNativeAttrAFPName = "dsAttrTypeNative:afp_name";
inline constexpr const char* kDSNativeAttrSMBName = "dsAttrTypeNative:smb_name";
inline constexpr const char* kDSNativeAttrAFPShared = "dsAttrTypeNative:afp_shared";
inline constexpr const char* kDSNativeAttrSMBShared = "dsAttrTypeNative:smb_shared";

// Authentication methods, in the order in which they are compared.
inline constexpr const char* kDSStdAuthNodeNativeNoClearText =
    "dsAuthMethodStandard:dsAuthNodeNativeCannotUseClearText";
inline constexpr const char* kDSStdAuthNodeNativeClearTextOK =
    "dsAuthMethodStandard:dsAuthNodeNativeCanUseClearText";
inline constexpr const char* kDSStdAuthClearText = "dsAuthMethodStandard:dsAuthClearText";
inline constexpr const char* kDSStdAuthCrypt = "dsAuthMethodStandard:dsAuthCrypt";

// Places.
inline constexpr const char* kDSSearchNodePath = "/Search";
inline constexpr const char* kDSLocalNodePath = "/Local/Default";
inline constexpr const char* kDSPathSeparator = "/";
inline constexpr const char* kOpenDirectoryFrameworkPath =
    "/System/Library/Frameworks/OpenDirectory.framework";
inline constexpr const char* kODSessionClassName = "ODSession";
inline constexpr const char* kODNodeClassName = "ODNode";

}  // namespace vt
