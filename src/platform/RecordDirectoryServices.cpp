#include "platform/RecordDirectoryServices.h"

#include <string.h>  // explicit_bzero

#include <algorithm>
#include <iterator>

#include "platform/DirectoryBuffer.h"

namespace vt {
namespace {

constexpr std::string_view kNodeRecordType = "node";
constexpr const char* kNodePaths[] = {kDSSearchNodePath, kDSLocalNodePath};

bool contains(const DataList& list, std::string_view text) {
  return std::find(list.strings.begin(), list.strings.end(), text) != list.strings.end();
}

std::vector<std::string> partsOf(std::string_view path, std::string_view separator) {
  std::vector<std::string> parts;
  while (!path.empty()) {
    const std::size_t end = separator.empty() ? path.npos : path.find(separator);
    const std::string_view part = path.substr(0, end);
    if (!part.empty()) parts.emplace_back(part);
    if (end == path.npos) break;
    path.remove_prefix(end + separator.size());
  }
  return parts;
}

void keepOnly(DirectoryRecord& record, const DataList& attributes, bool informationOnly) {
  if (!contains(attributes, kDSAttributesAll)) {
    std::erase_if(record.attributes, [&](const DirectoryAttribute& attribute) {
      return !contains(attributes, attribute.type);
    });
  }
  if (!informationOnly) return;
  for (DirectoryAttribute& attribute : record.attributes) attribute.values.clear();
}

}  // namespace

template <class T>
std::uint32_t RecordDirectoryServices::add(Numbered<T>& table, T thing) {
  const std::uint32_t number = ++lastNumber_;
  table.emplace(number, std::move(thing));
  return number;
}

template <class T>
T* RecordDirectoryServices::add(Owned<T>& table, T thing) {
  return table.emplace_back(std::make_unique<T>(std::move(thing))).get();
}

template <class T>
DirStatus RecordDirectoryServices::giveBack(std::string_view call, Numbered<T>& table,
                                            std::uint32_t number) {
  const DirStatus refused = entering(call);
  if (table.erase(number) == 0) {
    ++wrongReleases_;
    return kDSInvalidReference;
  }
  return refused;
}

template <class T>
DirStatus RecordDirectoryServices::giveBack(std::string_view call, Owned<T>& table,
                                            const T* thing) {
  const DirStatus refused = entering(call);
  const auto found = std::find_if(table.begin(), table.end(),
                                  [&](const auto& owned) { return owned.get() == thing; });
  if (found == table.end()) {
    ++wrongReleases_;
    return kDSInvalidReference;
  }
  table.erase(found);
  return refused;
}

DirStatus RecordDirectoryServices::entering(std::string_view) { return kDSNoErr; }

DirContinueData RecordDirectoryServices::addContinuation() { return add(continuations_, {}); }

DirStatus RecordDirectoryServices::dsOpenDirService(DirReference* session) {
  if (const DirStatus refused = entering("dsOpenDirService")) return refused;
  if (!session) return kDSNullParameter;
  *session = add(sessions_, Session{});
  return kDSNoErr;
}

DirStatus RecordDirectoryServices::dsCloseDirService(DirReference session) {
  return giveBack("dsCloseDirService", sessions_, session);
}

DirStatus RecordDirectoryServices::dsFindDirNodes(DirReference session, DataBuffer* buffer,
                                                  const DataList*, DirPatternMatch pattern,
                                                  std::uint32_t* count,
                                                  DirContinueData* continueData) {
  if (const DirStatus refused = entering("dsFindDirNodes")) return refused;
  if (!buffer || !count || !continueData) return kDSNullParameter;
  *count = 0;
  if (!sessions_.contains(session)) return kDSInvalidReference;
  if (pattern != kDSAuthenticationSearchNodeName) return kDSNodeNotFound;
  return putRecords(*buffer, {{std::string(kNodeRecordType), kDSSearchNodePath, {}}}, *count,
                    continueData);
}

DirStatus RecordDirectoryServices::dsGetDirNodeName(DirReference session, const DataBuffer* buffer,
                                                    std::uint32_t index,
                                                    std::unique_ptr<DataList>* name) {
  if (const DirStatus refused = entering("dsGetDirNodeName")) return refused;
  if (!buffer || !name) return kDSNullParameter;
  if (!sessions_.contains(session)) return kDSInvalidReference;
  const std::optional<DirectoryRecord> node = recordAt(*buffer, index);
  if (!node || node->type != kNodeRecordType) return kDSIndexOutOfRange;
  *name = std::make_unique<DataList>(
      DataList{partsOf(node->name, kDSPathSeparator), add(lists_, List{})});
  return kDSNoErr;
}

DirStatus RecordDirectoryServices::dsOpenDirNode(DirReference session, const DataList* name,
                                                 DirNodeReference* node) {
  if (const DirStatus refused = entering("dsOpenDirNode")) return refused;
  if (!name || !node) return kDSNullParameter;
  if (!sessions_.contains(session)) return kDSInvalidReference;
  const bool known = std::ranges::any_of(kNodePaths, [&](const char* path) {
    return partsOf(path, kDSPathSeparator) == name->strings;
  });
  if (!known) return kDSNodeNotFound;
  *node = add(nodes_, Node{});
  return kDSNoErr;
}

DirStatus RecordDirectoryServices::dsCloseDirNode(DirNodeReference node) {
  return giveBack("dsCloseDirNode", nodes_, node);
}

DataBuffer* RecordDirectoryServices::dsDataBufferAllocate(DirReference session,
                                                          std::uint32_t size) {
  if (entering("dsDataBufferAllocate") || !sessions_.contains(session)) return nullptr;
  return add(buffers_, DataBuffer(size));
}

DirStatus RecordDirectoryServices::dsDataBufferDeAllocate(DirReference, DataBuffer* buffer) {
  const bool known =
      std::ranges::any_of(buffers_, [&](const auto& owned) { return owned.get() == buffer; });
  // A buffer may have held a password.
  if (known) explicit_bzero(buffer->bytes.data(), buffer->bytes.size());
  return giveBack("dsDataBufferDeAllocate", buffers_, buffer);
}

DataNode* RecordDirectoryServices::dsDataNodeAllocateString(DirReference session,
                                                            const char* text) {
  if (entering("dsDataNodeAllocateString") || !text || !sessions_.contains(session)) {
    return nullptr;
  }
  return add(dataNodes_, DataNode{text});
}

DirStatus RecordDirectoryServices::dsDataNodeDeAllocate(DirReference, DataNode* node) {
  return giveBack("dsDataNodeDeAllocate", dataNodes_, node);
}

std::unique_ptr<DataList> RecordDirectoryServices::dsBuildListFromStrings(
    DirReference session, std::span<const char* const> strings) {
  if (entering("dsBuildListFromStrings") || !sessions_.contains(session)) return nullptr;
  if (strings.empty() || std::ranges::find(strings, nullptr) != strings.end()) return nullptr;
  return std::make_unique<DataList>(
      DataList{{strings.begin(), strings.end()}, add(lists_, List{})});
}

DirStatus RecordDirectoryServices::dsBuildListFromStringsAlloc(
    DirReference session, DataList* list, std::span<const char* const> strings) {
  if (const DirStatus refused = entering("dsBuildListFromStringsAlloc")) return refused;
  if (!list || strings.empty()) return kDSNullParameter;
  if (std::ranges::find(strings, nullptr) != strings.end()) return kDSNullParameter;
  if (!sessions_.contains(session)) return kDSInvalidReference;
  *list = {{strings.begin(), strings.end()}, add(lists_, List{})};
  return kDSNoErr;
}

std::unique_ptr<DataList> RecordDirectoryServices::dsBuildFromPath(DirReference session,
                                                                   const char* path,
                                                                   const char* separator) {
  if (entering("dsBuildFromPath") || !path || !separator) return nullptr;
  if (!sessions_.contains(session)) return nullptr;
  std::vector<std::string> parts = partsOf(path, separator);
  if (parts.empty()) return nullptr;
  return std::make_unique<DataList>(DataList{std::move(parts), add(lists_, List{})});
}

DirStatus RecordDirectoryServices::dsDataListDeallocate(DirReference, DataList* list) {
  const DirStatus status = giveBack("dsDataListDeallocate", lists_, list ? list->contents : 0);
  if (list) *list = {};
  return status;
}

std::deque<DirectoryRecord> RecordDirectoryServices::matches(const RecordQuery& query) const {
  std::deque<DirectoryRecord> found;
  for (const std::string& type : query.types->strings) {
    for (const std::string& name : query.names->strings) {
      std::vector<DirectoryRecord> records = name == kDSRecordsAll
                                                 ? source_->records(type, std::nullopt)
                                                 : source_->records(type, name);
      std::ranges::move(records, std::back_inserter(found));
    }
  }
  for (DirectoryRecord& record : found) {
    keepOnly(record, *query.attributes, query.attributeInformationOnly);
  }
  return found;
}

DirStatus RecordDirectoryServices::putRecords(DataBuffer& buffer,
                                              std::deque<DirectoryRecord> records,
                                              std::uint32_t& count, DirContinueData* continueData) {
  buffer.length = 0;
  auto next = records.begin();
  while (next != records.end() && appendRecord(buffer, *next)) ++next;
  DirStatus status = kDSNoErr;
  if (next != records.end() && (next == records.begin() || !continueData)) {
    status = kDSBufferTooSmall;
    buffer.length = 0;
    ++next;  // or the answer would never get past this record
  } else {
    count = static_cast<std::uint32_t>(next - records.begin());
  }
  if (continueData && next != records.end()) {
    records.erase(records.begin(), next);
    *continueData = add(continuations_, std::move(records));
  }
  return status;
}

DirStatus RecordDirectoryServices::dsGetRecordList(
    DirNodeReference node, DataBuffer* buffer, const DataList* names, DirPatternMatch pattern,
    const DataList* types, const DataList* attributes, bool attributeInformationOnly,
    std::uint32_t* count, DirContinueData* continueData) {
  if (count) *count = 0;
  // Taken out first: whatever happens next, the old continuation is used up.
  std::optional<std::deque<DirectoryRecord>> rest;
  if (continueData && *continueData != 0) {
    if (auto remaining = continuations_.extract(*continueData))
      rest = std::move(remaining.mapped());
    *continueData = 0;
    if (!rest) return kDSInvalidReference;
  }
  if (const DirStatus refused = entering("dsGetRecordList")) return refused;
  if (!buffer || !names || !types || !attributes || !count) return kDSNullParameter;
  if (!nodes_.contains(node)) return kDSInvalidReference;
  if (pattern != kDSExact) return kDSRecordNotFound;
  if (!rest) rest = matches({names, types, attributes, attributeInformationOnly});
  return putRecords(*buffer, std::move(*rest), *count, continueData);
}

DirStatus RecordDirectoryServices::dsGetRecordEntry(DirNodeReference node, const DataBuffer* buffer,
                                                    std::uint32_t index,
                                                    DirAttributeListReference* attributeList,
                                                    RecordEntry** entry) {
  if (const DirStatus refused = entering("dsGetRecordEntry")) return refused;
  if (!buffer || !attributeList || !entry) return kDSNullParameter;
  if (!nodes_.contains(node)) return kDSInvalidReference;
  std::optional<DirectoryRecord> record = recordAt(*buffer, index);
  if (!record) return kDSIndexOutOfRange;
  *entry = add(recordEntries_,
               {record->type, record->name, static_cast<std::uint32_t>(record->attributes.size())});
  *attributeList = add(attributeLists_, std::move(*record));
  return kDSNoErr;
}

DirStatus RecordDirectoryServices::dsGetAttributeEntry(
    DirNodeReference node, const DataBuffer* buffer, DirAttributeListReference attributeList,
    std::uint32_t index, DirAttributeValueReference* valueList, AttributeEntry** entry) {
  if (const DirStatus refused = entering("dsGetAttributeEntry")) return refused;
  if (!buffer || !valueList || !entry) return kDSNullParameter;
  const auto record = attributeLists_.find(attributeList);
  if (!nodes_.contains(node) || record == attributeLists_.end()) return kDSInvalidReference;
  const std::vector<DirectoryAttribute>& attributes = record->second.attributes;
  if (index == 0 || index > attributes.size()) return kDSIndexOutOfRange;
  const DirectoryAttribute& attribute = attributes[index - 1];
  *entry =
      add(attributeEntries_, {attribute.type, static_cast<std::uint32_t>(attribute.values.size())});
  *valueList = add(valueLists_, attribute);
  return kDSNoErr;
}

DirStatus RecordDirectoryServices::dsGetAttributeValue(DirNodeReference node,
                                                       const DataBuffer* buffer,
                                                       std::uint32_t index,
                                                       DirAttributeValueReference valueList,
                                                       AttributeValueEntry** entry) {
  if (const DirStatus refused = entering("dsGetAttributeValue")) return refused;
  if (!buffer || !entry) return kDSNullParameter;
  const auto attribute = valueLists_.find(valueList);
  if (!nodes_.contains(node) || attribute == valueLists_.end()) return kDSInvalidReference;
  const std::vector<std::string>& values = attribute->second.values;
  if (index == 0 || index > values.size()) return kDSIndexOutOfRange;
  *entry = add(valueEntries_, {values[index - 1]});
  return kDSNoErr;
}

DirStatus RecordDirectoryServices::dsCloseAttributeList(DirAttributeListReference attributeList) {
  return giveBack("dsCloseAttributeList", attributeLists_, attributeList);
}

DirStatus RecordDirectoryServices::dsCloseAttributeValueList(DirAttributeValueReference valueList) {
  return giveBack("dsCloseAttributeValueList", valueLists_, valueList);
}

DirStatus RecordDirectoryServices::dsDeallocRecordEntry(DirReference, RecordEntry* entry) {
  return giveBack("dsDeallocRecordEntry", recordEntries_, entry);
}

DirStatus RecordDirectoryServices::dsDeallocAttributeEntry(DirReference, AttributeEntry* entry) {
  return giveBack("dsDeallocAttributeEntry", attributeEntries_, entry);
}

DirStatus RecordDirectoryServices::dsDeallocAttributeValueEntry(DirReference,
                                                                AttributeValueEntry* entry) {
  return giveBack("dsDeallocAttributeValueEntry", valueEntries_, entry);
}

DirStatus RecordDirectoryServices::dsReleaseContinueData(DirReference,
                                                         DirContinueData continueData) {
  return giveBack("dsReleaseContinueData", continuations_, continueData);
}

DirStatus RecordDirectoryServices::dsDoDirNodeAuth(DirNodeReference node, const DataNode* method,
                                                   bool authenticationOnly, const DataBuffer* step,
                                                   DataBuffer* response,
                                                   DirContinueData* continueData) {
  if (const DirStatus refused = entering("dsDoDirNodeAuth")) return refused;
  if (!method || !step || !response || !continueData) return kDSNullParameter;
  if (!nodes_.contains(node)) return kDSInvalidReference;
  if (!authenticationOnly || method->text == kDSStdAuthCrypt) return kDSAuthMethodNotSupported;
  std::optional<std::vector<std::string>> texts = textsIn(*step);
  if (!texts || texts->size() != 2) return kDSAuthInBuffFormatError;
  const bool verified = source_->verifyPassword(texts->at(0), texts->at(1));
  explicit_bzero(texts->at(1).data(), texts->at(1).size());
  return verified ? kDSNoErr : kDSAuthFailed;
}

std::vector<std::string> RecordDirectoryServices::outstanding() const {
  std::vector<std::string> report;
  const auto count = [&](std::size_t number, const char* what) {
    if (number > 0) report.push_back(std::to_string(number) + " " + what);
  };
  count(sessions_.size(), "sessions");
  count(nodes_.size(), "nodes");
  count(lists_.size(), "data lists");
  count(attributeLists_.size(), "attribute lists");
  count(valueLists_.size(), "value lists");
  count(continuations_.size(), "continuations");
  count(buffers_.size(), "data buffers");
  count(dataNodes_.size(), "data nodes");
  count(recordEntries_.size(), "record entries");
  count(attributeEntries_.size(), "attribute entries");
  count(valueEntries_.size(), "value entries");
  return report;
}

}  // namespace vt
