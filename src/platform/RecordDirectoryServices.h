#pragma once

#include <cstddef>
#include <deque>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "platform/DirectoryRecord.h"
#include "platform/DirectoryServices.h"

namespace vt {

/// The directory's calls over any source of records: sessions, nodes, buffers, continuation and
/// the accounts of what has been handed out.
///
/// Both nodes ("/Search" and "/Local/Default") answer for the whole source. Password checks accept
/// the methods that send the password as it is, and kDSStdAuthNodeNativeNoClearText.
class RecordDirectoryServices : public DirectoryServices {
 public:
  explicit RecordDirectoryServices(std::shared_ptr<const RecordSource> source)
      : source_(std::move(source)) {}

  DirStatus dsOpenDirService(DirReference* session) override;
  DirStatus dsCloseDirService(DirReference session) override;
  DirStatus dsFindDirNodes(DirReference session, DataBuffer* buffer, const DataList* namePattern,
                           DirPatternMatch pattern, std::uint32_t* count,
                           DirContinueData* continueData) override;
  DirStatus dsGetDirNodeName(DirReference session, const DataBuffer* buffer, std::uint32_t index,
                             std::unique_ptr<DataList>* name) override;
  DirStatus dsOpenDirNode(DirReference session, const DataList* name,
                          DirNodeReference* node) override;
  DirStatus dsCloseDirNode(DirNodeReference node) override;
  DataBuffer* dsDataBufferAllocate(DirReference session, std::uint32_t size) override;
  DirStatus dsDataBufferDeAllocate(DirReference session, DataBuffer* buffer) override;
  DataNode* dsDataNodeAllocateString(DirReference session, const char* text) override;
  DirStatus dsDataNodeDeAllocate(DirReference session, DataNode* node) override;
  std::unique_ptr<DataList> dsBuildListFromStrings(DirReference session,
                                                   std::span<const char* const> strings) override;
  DirStatus dsBuildListFromStringsAlloc(DirReference session, DataList* list,
                                        std::span<const char* const> strings) override;
  std::unique_ptr<DataList> dsBuildFromPath(DirReference session, const char* path,
                                            const char* separator) override;
  DirStatus dsDataListDeallocate(DirReference session, DataList* list) override;
  DirStatus dsGetRecordList(DirNodeReference node, DataBuffer* buffer, const DataList* names,
                            DirPatternMatch pattern, const DataList* types,
                            const DataList* attributes, bool attributeInformationOnly,
                            std::uint32_t* count, DirContinueData* continueData) override;
  DirStatus dsGetRecordEntry(DirNodeReference node, const DataBuffer* buffer, std::uint32_t index,
                             DirAttributeListReference* attributeList,
                             RecordEntry** entry) override;
  DirStatus dsGetAttributeEntry(DirNodeReference node, const DataBuffer* buffer,
                                DirAttributeListReference attributeList, std::uint32_t index,
                                DirAttributeValueReference* valueList,
                                AttributeEntry** entry) override;
  DirStatus dsGetAttributeValue(DirNodeReference node, const DataBuffer* buffer,
                                std::uint32_t index, DirAttributeValueReference valueList,
                                AttributeValueEntry** entry) override;
  DirStatus dsCloseAttributeList(DirAttributeListReference attributeList) override;
  DirStatus dsCloseAttributeValueList(DirAttributeValueReference valueList) override;
  DirStatus dsDeallocRecordEntry(DirReference session, RecordEntry* entry) override;
  DirStatus dsDeallocAttributeEntry(DirReference session, AttributeEntry* entry) override;
  DirStatus dsDeallocAttributeValueEntry(DirReference session, AttributeValueEntry* entry) override;
  DirStatus dsReleaseContinueData(DirReference session, DirContinueData continueData) override;
  DirStatus dsDoDirNodeAuth(DirNodeReference node, const DataNode* method, bool authenticationOnly,
                            const DataBuffer* step, DataBuffer* response,
                            DirContinueData* continueData) override;

  /// What has been handed out and not yet given back: "2 data buffers". Empty when nothing is.
  std::vector<std::string> outstanding() const;
  /// How many times something was given back that was not, or no longer, handed out.
  std::size_t wrongReleases() const { return wrongReleases_; }

 protected:
  /// Called first by every operation, with its name. Anything but 0 makes the call fail with that
  /// status; a call that gives something back does so all the same.
  virtual DirStatus entering(std::string_view call);

  /// Hands out continuation data that stands for no further record.
  DirContinueData addContinuation();

  const RecordSource& source() const { return *source_; }

 private:
  /// The things of one kind that are handed out by number.
  template <class T>
  using Numbered = std::map<std::uint32_t, T>;
  /// The things of one kind that are handed out by address.
  template <class T>
  using Owned = std::vector<std::unique_ptr<T>>;

  template <class T>
  std::uint32_t add(Numbered<T>& table, T thing);
  template <class T>
  T* add(Owned<T>& table, T thing);
  template <class T>
  DirStatus giveBack(std::string_view call, Numbered<T>& table, std::uint32_t number);
  template <class T>
  DirStatus giveBack(std::string_view call, Owned<T>& table, const T* thing);

  struct RecordQuery {
    const DataList* names;
    const DataList* types;
    const DataList* attributes;
    bool attributeInformationOnly;
  };
  std::deque<DirectoryRecord> matches(const RecordQuery& query) const;
  DirStatus putRecords(DataBuffer& buffer, std::deque<DirectoryRecord> records,
                       std::uint32_t& count, DirContinueData* continueData);

  std::shared_ptr<const RecordSource> source_;
  std::uint32_t lastNumber_ = 0;  // one sequence for all, so that no number is good twice
  std::size_t wrongReleases_ = 0;

  struct Session {};
  struct Node {};
  struct List {};
  Numbered<Session> sessions_;
  Numbered<Node> nodes_;
  Numbered<List> lists_;
  Numbered<DirectoryRecord> attributeLists_;
  Numbered<DirectoryAttribute> valueLists_;
  Numbered<std::deque<DirectoryRecord>> continuations_;  // taken from in front, buffer by buffer
  Owned<DataBuffer> buffers_;
  Owned<DataNode> dataNodes_;
  Owned<RecordEntry> recordEntries_;
  Owned<AttributeEntry> attributeEntries_;
  Owned<AttributeValueEntry> valueEntries_;
};

}  // namespace vt
