#include "directory/DirServiceWrapper.h"

#include <array>
#include <cmath>
#include <utility>

#include "directory/DirectoryHolders.h"
#include "foundation/Array.h"
#include "foundation/NSLog.h"
#include "foundation/UTF8.h"
#include "platform/Platform.h"
#include "platform/Process.h"
#include "platform/RuntimeBundles.h"

namespace vt {
namespace {

constexpr std::uint32_t kRecordBufferSize = 2048;
// The application-kit version of Mac OS X 10.5, the last without OpenDirectory.
constexpr double kLastVersionWithoutOpenDirectory = 949;

/// The first text under `type`; "" when there is none.
std::string firstValue(const Dictionary& attributes, std::string_view type) {
  const Value* values = attributes.find(type);
  return values ? *values->array()->at(0).get<std::string>() : std::string();
}

}  // namespace

std::shared_ptr<DirServiceWrapper> DirServiceWrapper::init() {
  std::shared_ptr<DirServiceWrapper> wrapper(
      new DirServiceWrapper(Platform::current().directoryServices()));
  if (wrapper->services_.dsOpenDirService(&wrapper->dsRef_) != kDSNoErr ||
      OpenSearchNode(wrapper->dsRef_, &wrapper->dsSearchNodeRef_) != kDSNoErr) {
    wrapper->cleanup();
    return nullptr;
  }
  return wrapper;
}

DirServiceWrapper::~DirServiceWrapper() { cleanup(); }

void DirServiceWrapper::cleanup() {
  if (dsSearchNodeRef_ != 0) services_.dsCloseDirNode(std::exchange(dsSearchNodeRef_, 0));
  if (dsRef_ != 0) services_.dsCloseDirService(std::exchange(dsRef_, 0));
}

std::shared_ptr<Dictionary> DirServiceWrapper::attributeDataForNodeOfType(
    const char* type, const char* value, const char* attr1, const char* attr2, const char* attr3,
    const char* attr4, const char* attr5, const char* attr6) {
  auto result = Dictionary::make();
  const std::array<const char*, 6> slots{attr1, attr2, attr3, attr4, attr5, attr6};
  std::size_t asked = 0;
  while (asked < slots.size() && slots[asked]) ++asked;

  // Declared first, so that it goes last: the lists are freed before the buffer.
  DataBufferHolder buffer(nullptr, {&services_, dsRef_});
  const FilledDataList attributes(services_, dsRef_, std::span(slots).first(asked));
  if (!attributes) return result;
  const FilledDataList names(services_, dsRef_, {&value, 1});
  if (!names) return result;
  const FilledDataList types(services_, dsRef_, {&type, 1});
  if (!types) return result;
  buffer.reset(services_.dsDataBufferAllocate(dsRef_, kRecordBufferSize));
  if (!buffer) return result;

  std::uint32_t count = 0;
  const DirStatus status = services_.dsGetRecordList(
      dsSearchNodeRef_, buffer.get(), names.get(), kDSExact, types.get(), attributes.get(),
      /*attributeInformationOnly=*/false, &count, /*continueData=*/nullptr);
  if (status == kDSNoErr && count == 1) readRecord(buffer.get(), *result);
  return result;
}

void DirServiceWrapper::readRecord(const DataBuffer* buffer, Dictionary& result) {
  RecordEntry* record = nullptr;
  DirAttributeListReference attributes = 0;
  if (services_.dsGetRecordEntry(dsSearchNodeRef_, buffer, /*index=*/1, &attributes, &record) !=
      kDSNoErr) {
    return;
  }
  const RecordEntryHolder recordHolder(record, {&services_, dsRef_});
  AttributeListHolder attributeList(services_);
  *attributeList.out() = attributes;
  for (std::uint32_t i = 1; i <= record->attributeCount; ++i) {
    readAttribute(buffer, attributes, i, result);
  }
}

void DirServiceWrapper::readAttribute(const DataBuffer* buffer,
                                      DirAttributeListReference attributes, std::uint32_t index,
                                      Dictionary& result) {
  AttributeEntry* attribute = nullptr;
  DirAttributeValueReference values = 0;
  if (services_.dsGetAttributeEntry(dsSearchNodeRef_, buffer, attributes, index, &values,
                                    &attribute) != kDSNoErr) {
    return;
  }
  const AttributeEntryHolder attributeHolder(attribute, {&services_, dsRef_});
  ValueEntryHolder valueHolder(nullptr, {&services_, dsRef_});
  ValueListHolder valueList(services_);
  *valueList.out() = values;

  const auto texts = Array::make();
  AttributeValueEntry* value = nullptr;
  for (std::uint32_t i = 1;
       services_.dsGetAttributeValue(dsSearchNodeRef_, buffer, i, values, &value) == kDSNoErr;
       ++i) {
    valueHolder.reset(value);
    if (!isValidUTF8(value->bytes)) continue;
    texts->append(value->bytes);
    if (!result.contains(attribute->type)) result.set(attribute->type, texts);
  }
}

bool DirServiceWrapper::authenticateUser(const char* user, const char* password) {
  if (!user || !password) return false;
  const double version = std::floor(Platform::current().process().appKitVersionNumber());
  return version > kLastVersionWithoutOpenDirectory
             ? authenticateThroughOpenDirectory(user, password)
             : authenticateThroughDirectoryServices(user, password);
}

bool DirServiceWrapper::authenticateThroughOpenDirectory(const char* user,
                                                         const char* password) const {
  RuntimeBundles& bundles = Platform::current().runtimeBundles();
  if (!bundles.load(kOpenDirectoryFrameworkPath)) {
    NSLog("Unableto load OpenDirectory framework");
    return false;
  }
  const auto sessionClass =
      std::dynamic_pointer_cast<ODSessionClass>(bundles.classNamed(kODSessionClassName));
  const auto session = sessionClass ? sessionClass->defaultSession() : nullptr;
  const auto nodeClass =
      std::dynamic_pointer_cast<ODNodeClass>(bundles.classNamed(kODNodeClassName));
  const auto node = nodeClass ? nodeClass->nodeWithSession(session, kDSAuthenticationSearchNodeName,
                                                           /*error=*/nullptr)
                              : nullptr;
  const auto record = node ? node->recordWithRecordType(kDSStdRecordTypeUsers, user,
                                                        {kDSAttributesAll}, /*error=*/nullptr)
                           : nullptr;
  return record && record->verifyPassword(password, /*error=*/nullptr);
}

bool DirServiceWrapper::authenticateThroughDirectoryServices(const char* user,
                                                             const char* password) {
  const auto attributes =
      attributeDataForNodeOfType(kDSStdRecordTypeUsers, user, kDSNAttrRecordName,
                                 kDSNAttrMetaNodeLocation, /*attr3=*/nullptr, /*attr4=*/nullptr,
                                 /*attr5=*/nullptr, /*attr6=*/nullptr);
  const std::string recordName = firstValue(*attributes, kDSNAttrRecordName);
  if (recordName.empty()) return false;
  const std::string nodeLocation = firstValue(*attributes, kDSNAttrMetaNodeLocation);
  if (nodeLocation.empty()) return false;

  const DataListHolder path(
      services_, dsRef_, services_.dsBuildFromPath(dsRef_, nodeLocation.c_str(), kDSPathSeparator));
  if (!path) return false;
  NodeHolder node(services_);
  if (services_.dsOpenDirNode(dsRef_, path.get(), node.out()) != kDSNoErr) return false;
  return DoPasswordAuth(dsRef_, node.get(), kDSStdAuthNodeNativeClearTextOK, recordName.c_str(),
                        password) == kDSNoErr;
}

}  // namespace vt
