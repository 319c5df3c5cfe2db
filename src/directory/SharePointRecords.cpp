#include "directory/DirectoryFunctions.h"
#include "directory/DirectoryHolders.h"
#include "foundation/Dictionary.h"
#include "foundation/NSLog.h"
#include "foundation/UTF8.h"
#include "platform/Platform.h"

namespace vt {

DirReference gDirRef = 0;

namespace {

constexpr std::uint32_t kRecordBufferSize = 2048;

void readAttribute(DirectoryServices& services, DirNodeReference node, const DataBuffer* buffer,
                   DirAttributeListReference attributes, std::uint32_t index, Dictionary& result) {
  AttributeEntry* attribute = nullptr;
  DirAttributeValueReference values = 0;
  if (services.dsGetAttributeEntry(node, buffer, attributes, index, &values, &attribute) !=
      kDSNoErr) {
    return;
  }
  const AttributeEntryHolder attributeHolder(attribute, {&services, gDirRef});
  // Declared before the list, so that it goes after it.
  ValueEntryHolder valueHolder(nullptr, {&services, gDirRef});
  ValueListHolder valueList(services);
  *valueList.out() = values;

  if (attribute->valueCount != 1) return;
  AttributeValueEntry* value = nullptr;
  if (services.dsGetAttributeValue(node, buffer, /*index=*/1, values, &value) != kDSNoErr) return;
  valueHolder.reset(value);
  if (isValidUTF8(value->bytes)) result.set(attribute->type, value->bytes);
}

void readRecord(DirectoryServices& services, DirNodeReference node, const DataBuffer* buffer,
                std::uint32_t index, Dictionary& result) {
  RecordEntry* record = nullptr;
  DirAttributeListReference attributes = 0;
  if (services.dsGetRecordEntry(node, buffer, index, &attributes, &record) != kDSNoErr) return;
  const RecordEntryHolder recordHolder(record, {&services, gDirRef});
  AttributeListHolder attributeList(services);
  *attributeList.out() = attributes;

  for (std::uint32_t i = 1; i <= record->attributeCount; ++i) {
    readAttribute(services, node, buffer, attributes, i, result);
  }
}

}  // namespace

DirStatus MyOpenDirNode(DirNodeReference* node) {
  DirectoryServices& services = Platform::current().directoryServices();
  const DataListHolder path(services, gDirRef,
                            services.dsBuildFromPath(gDirRef, kDSLocalNodePath, kDSPathSeparator));
  if (!path) return kDSNoErr;
  const DirStatus status = services.dsOpenDirNode(gDirRef, path.get(), node);
  if (status != kDSNoErr) NSLog("Open node failed. Err = %ld\n", status);
  return status;
}

std::shared_ptr<Array> GetRecordList(DirNodeReference node) {
  auto result = Array::make();
  DirectoryServices& services = Platform::current().directoryServices();
  // Declared first, so that it goes last: the lists are freed before the buffer.
  const DataBufferHolder buffer(services.dsDataBufferAllocate(gDirRef, kRecordBufferSize),
                                {&services, gDirRef});
  if (!buffer) return result;
  const auto list = [&](const char* const& text) {
    return services.dsBuildListFromStrings(gDirRef, {&text, 1});
  };
  const DataListHolder names(services, gDirRef, list(kDSRecordsAll));
  const DataListHolder types(services, gDirRef, list(kDSStdRecordTypeSharePoints));
  const DataListHolder attributes(services, gDirRef, list(kDSAttributesAll));
  if (!names || !types || !attributes) return result;

  ContinueDataHolder continuation(services, gDirRef);
  do {
    std::uint32_t count = 0;
    // The status tells nothing that count and continuation do not.
    services.dsGetRecordList(node, buffer.get(), names.get(), kDSExact, types.get(),
                             attributes.get(), /*attributeInformationOnly=*/false, &count,
                             continuation.out());
    for (std::uint32_t i = 1; i <= count; ++i) {
      auto record = Dictionary::make();
      result->append(record);
      readRecord(services, node, buffer.get(), i, *record);
    }
  } while (continuation);
  return result;
}

}  // namespace vt
