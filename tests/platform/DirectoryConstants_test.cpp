#include "platform/DirectoryConstants.h"

#include <gtest/gtest.h>

#include <string_view>

namespace vt {
namespace {

TEST(DirectoryConstants, AreThoseOfTheDirectory) {
  struct Case {
    std::string_view constant;
    std::string_view text;
  };
  const Case cases[] = {
      {kDSStdRecordTypeUsers, "dsRecTypeStandard:Users"},
      {kDSStdRecordTypeGroups, "dsRecTypeStandard:Groups"},
      {kDSStdRecordTypeSharePoints, "dsRecTypeStandard:SharePoints"},
      {kDSRecordsAll, "dsRecordsAll"},
      {kDSAttributesAll, "dsAttributesAll"},
      {kDSNAttrRecordName, "dsAttrTypeStandard:RecordName"},
      {kDSNAttrMetaNodeLocation, "dsAttrTypeStandard:AppleMetaNodeLocation"},
      {kDS1AttrUniqueID, "dsAttrTypeStandard:UniqueID"},
      {kDS1AttrPrimaryGroupID, "dsAttrTypeStandard:PrimaryGroupID"},
      {kDS1AttrDistinguishedName, "dsAttrTypeStandard:RealName"},
      {kDSNAttrGroupMembership, "dsAttrTypeStandard:GroupMembership"},
      {kDSStdAuthNodeNativeClearTextOK, "dsAuthMethodStandard:dsAuthNodeNativeCanUseClearText"},
      {kDSLocalNodePath, "/Local/Default"},
      {kDSPathSeparator, "/"},
  };
  for (const Case& c : cases) EXPECT_EQ(c.constant, c.text);
  EXPECT_EQ(kDSAuthenticationSearchNodeName, 0x2201U);
  EXPECT_EQ(kDSExact, 0x2001U);
}

TEST(DirectoryConstants, HoldMethodNamesOfTheLengthsThatAreCompared) {
  EXPECT_EQ(std::string_view(kDSStdAuthNodeNativeNoClearText).size() + 1, 56U);
  EXPECT_EQ(std::string_view(kDSStdAuthNodeNativeClearTextOK).size() + 1, 53U);
  EXPECT_EQ(std::string_view(kDSStdAuthClearText).size() + 1, 37U);
  EXPECT_EQ(std::string_view(kDSStdAuthCrypt).size() + 1, 33U);
}

}  // namespace
}  // namespace vt
