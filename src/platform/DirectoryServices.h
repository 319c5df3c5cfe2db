#pragma once

#include <cstdint>
#include <initializer_list>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "platform/DirectoryConstants.h"

namespace vt {

using DirReference = std::uint32_t;                ///< an open session; 0 = none
using DirNodeReference = std::uint32_t;            ///< an open node; 0 = none
using DirAttributeListReference = std::uint32_t;   ///< the attributes of one record read; 0 = none
using DirAttributeValueReference = std::uint32_t;  ///< the values of one attribute read; 0 = none
using DirContinueData = std::uint32_t;             ///< the rest of an answer; 0 = none remains

/// Room for what a call answers, or for what it is asked.
struct DataBuffer {
  explicit DataBuffer(std::uint32_t size) : capacity(size), bytes(size) {}

  std::uint32_t capacity;
  std::uint32_t length = 0;         ///< how many bytes are in use
  std::vector<std::uint8_t> bytes;  ///< always `capacity` of them
};

/// One text handed to the directory.
struct DataNode {
  std::string text;
};

/// Several texts handed to the directory, or the parts of a node's path.
struct DataList {
  std::vector<std::string> strings;
  std::uint32_t contents = 0;  ///< what the directory knows the contents by; 0 = not filled
};

/// What one record in a buffer says of itself.
struct RecordEntry {
  std::string type;
  std::string name;
  std::uint32_t attributeCount = 0;
};

/// What one attribute of a record says of itself.
struct AttributeEntry {
  std::string type;
  std::uint32_t valueCount = 0;
};

/// One value of an attribute: bytes, by convention UTF-8 text.
struct AttributeValueEntry {
  std::string bytes;
};

/// The system's directory of users, groups and share points.
///
/// Everything handed out stays the directory's own until it is given back by the call named for it,
/// exactly once; a pointer is a handle, not an owner. Indices count from 1. A call that fails hands
/// out nothing and leaves its out arguments as they were, unless it says otherwise. One thread at a
/// time.
class DirectoryServices {
 public:
  virtual ~DirectoryServices() = default;

  virtual DirStatus dsOpenDirService(DirReference* session) = 0;
  virtual DirStatus dsCloseDirService(DirReference session) = 0;

  /// Puts the names of the nodes of kind `pattern` into `buffer` and their number into `count`.
  /// `namePattern` may be null. Continuation data is stored when not all of them fit.
  virtual DirStatus dsFindDirNodes(DirReference session, DataBuffer* buffer,
                                   const DataList* namePattern, DirPatternMatch pattern,
                                   std::uint32_t* count, DirContinueData* continueData) = 0;
  /// The parts of the path of one node that dsFindDirNodes() found. Give back the contents with
  /// dsDataListDeallocate() before the list itself goes.
  virtual DirStatus dsGetDirNodeName(DirReference session, const DataBuffer* buffer,
                                     std::uint32_t index, std::unique_ptr<DataList>* name) = 0;
  virtual DirStatus dsOpenDirNode(DirReference session, const DataList* name,
                                  DirNodeReference* node) = 0;
  virtual DirStatus dsCloseDirNode(DirNodeReference node) = 0;

  /// Null when there is no session or no memory. Giving a buffer back wipes it.
  virtual DataBuffer* dsDataBufferAllocate(DirReference session, std::uint32_t size) = 0;
  virtual DirStatus dsDataBufferDeAllocate(DirReference session, DataBuffer* buffer) = 0;
  virtual DataNode* dsDataNodeAllocateString(DirReference session, const char* text) = 0;
  virtual DirStatus dsDataNodeDeAllocate(DirReference session, DataNode* node) = 0;

  /// A list of `strings`. Null when there is none or one of them is null. Give back the contents
  /// with dsDataListDeallocate() before the list itself goes.
  virtual std::unique_ptr<DataList> dsBuildListFromStrings(
      DirReference session, std::span<const char* const> strings) = 0;
  /// The same into a list of the caller's.
  virtual DirStatus dsBuildListFromStringsAlloc(DirReference session, DataList* list,
                                                std::span<const char* const> strings) = 0;
  /// The parts of `path`; empty parts are left out. Null when none remains.
  virtual std::unique_ptr<DataList> dsBuildFromPath(DirReference session, const char* path,
                                                    const char* separator) = 0;
  virtual DirStatus dsDataListDeallocate(DirReference session, DataList* list) = 0;

  /// Fills `buffer` with the records of one of `types` called one of `names` (or kDSRecordsAll),
  /// each with those of `attributes` (or kDSAttributesAll) that it has, and stores their number.
  ///
  /// With `continueData`: as many as fit, and continuation data while some remain, to be handed
  /// in again. A record that no empty buffer of this size holds is answered by kDSBufferTooSmall
  /// and no record; the continuation then goes on behind it. Any other failure ends the answer:
  /// the continuation data is released and set to 0. Without `continueData` (null), all or
  /// nothing: kDSBufferTooSmall when some would remain. `count` is 0 on every failure.
  virtual DirStatus dsGetRecordList(DirNodeReference node, DataBuffer* buffer,
                                    const DataList* names, DirPatternMatch pattern,
                                    const DataList* types, const DataList* attributes,
                                    bool attributeInformationOnly, std::uint32_t* count,
                                    DirContinueData* continueData) = 0;
  virtual DirStatus dsGetRecordEntry(DirNodeReference node, const DataBuffer* buffer,
                                     std::uint32_t index, DirAttributeListReference* attributeList,
                                     RecordEntry** entry) = 0;
  virtual DirStatus dsGetAttributeEntry(DirNodeReference node, const DataBuffer* buffer,
                                        DirAttributeListReference attributeList,
                                        std::uint32_t index, DirAttributeValueReference* valueList,
                                        AttributeEntry** entry) = 0;
  virtual DirStatus dsGetAttributeValue(DirNodeReference node, const DataBuffer* buffer,
                                        std::uint32_t index, DirAttributeValueReference valueList,
                                        AttributeValueEntry** entry) = 0;
  virtual DirStatus dsCloseAttributeList(DirAttributeListReference attributeList) = 0;
  virtual DirStatus dsCloseAttributeValueList(DirAttributeValueReference valueList) = 0;
  virtual DirStatus dsDeallocRecordEntry(DirReference session, RecordEntry* entry) = 0;
  virtual DirStatus dsDeallocAttributeEntry(DirReference session, AttributeEntry* entry) = 0;
  virtual DirStatus dsDeallocAttributeValueEntry(DirReference session,
                                                 AttributeValueEntry* entry) = 0;
  virtual DirStatus dsReleaseContinueData(DirReference session, DirContinueData continueData) = 0;

  /// Checks the name and password in `step` (each a 4-byte length in host byte order and its bytes)
  /// by `method`. With `authenticationOnly` the session's own rights stay as they are; nothing else
  /// is offered. kDSAuthFailed when they are refused.
  virtual DirStatus dsDoDirNodeAuth(DirNodeReference node, const DataNode* method,
                                    bool authenticationOnly, const DataBuffer* step,
                                    DataBuffer* response, DirContinueData* continueData) = 0;
};

}  // namespace vt
