#include "scopes/VTSearchFolder.h"

#include <stdexcept>
#include <utility>

#include "foundation/NSLog.h"
#include "foundation/Property.h"
#include "scopes/VTConcreteSearchFolder.h"
#include "scopes/VTSearchFolderGroup.h"

namespace vt {

std::shared_ptr<VTSearchFolder> VTSearchFolder::initWithTitle(std::optional<std::string> title) {
  std::shared_ptr<VTSearchFolder> folder(new VTSearchFolder);
  folder->setTitle(std::move(title));
  return folder;
}

std::shared_ptr<VTSearchFolder> VTSearchFolder::initWithDictionary(const Dictionary&) {
  return std::shared_ptr<VTSearchFolder>(new VTSearchFolder);
}

std::shared_ptr<Array> VTSearchFolder::serializedDataFromFolderArray(
    const ObjectArray<VTSearchFolder>& folders) {
  auto stored = Array::make();
  for (const std::shared_ptr<VTSearchFolder>& folder : folders) {
    std::shared_ptr<Dictionary> data = folder ? folder->serializedData() : nullptr;
    if (!data) throw InvalidArgumentError("a search folder without stored form in a folder list");
    stored->append(std::move(data));
  }
  return stored;
}

std::shared_ptr<ObjectArray<VTSearchFolder>> VTSearchFolder::deserializedFoldersFromStorage(
    const std::shared_ptr<Array>& storage) {
  auto folders = ObjectArray<VTSearchFolder>::make();
  if (!storage) return folders;
  for (const Value& element : *storage) {
    const std::shared_ptr<Dictionary> data = element.dictionary();
    if (!data) {
      NSLog("Stored search folder left out: it is %@, not a dictionary",
            describeKind(element.kind()));
      continue;
    }
    try {
      folders->append(deserializeFolderWithData(*data));
    } catch (const UndefinedKeyError& error) {
      NSLog("Stored search folder left out: %@", error.what());
    } catch (const InvalidArgumentError& error) {
      NSLog("Stored search folder left out: %@", error.what());
    }
  }
  return folders;
}

std::shared_ptr<VTSearchFolder> VTSearchFolder::deserializeFolderWithData(const Dictionary& data) {
  if (data.contains("children")) return VTSearchFolderGroup::initWithDictionary(data);
  return VTConcreteSearchFolder::initWithDictionary(data);
}

bool VTSearchFolder::isEqual(const VTObject* other) const {
  const auto* folder = dynamic_cast<const VTSearchFolder*>(other);
  if (!folder) return false;
  const std::optional<std::string> mine = title();
  return mine && mine == folder->title();
}

void VTSearchFolder::setTitle(std::optional<std::string> title) {
  const ValueChange change(*this, "title");
  title_.store(std::move(title));
}

void VTSearchFolder::setDownload(std::int64_t download) {
  const ValueChange change(*this, "download");
  download_ = download;
}

bool VTSearchFolder::isDownloadable(const std::string&) const { return false; }

std::optional<std::string> VTSearchFolder::afpURLforPath(const std::string&) const {
  return std::nullopt;
}

std::optional<std::string> VTSearchFolder::smbURLforPath(const std::string&,
                                                         bool /*windowsClient*/) const {
  return std::nullopt;
}

std::shared_ptr<Array> VTSearchFolder::paths() const { return nullptr; }

std::shared_ptr<Dictionary> VTSearchFolder::serializedData() const { return nullptr; }

std::shared_ptr<ObjectArray<VTSearchFolder>> VTSearchFolder::folders() const { return nullptr; }

std::shared_ptr<VTSearchFolder> VTSearchFolder::searchFolderForTitle(const std::string& title) {
  return this->title() == title ? shared_from_this() : nullptr;
}

const Property* VTSearchFolder::propertyNamed(std::string_view key) const {
  static constexpr Property kProperties[] = {
      property<&VTSearchFolder::title, &VTSearchFolder::setTitle>("title"),
      property<&VTSearchFolder::download, &VTSearchFolder::setDownload>("download"),
      property<&VTSearchFolder::paths>("paths"),
      property<&VTSearchFolder::folders>("folders"),
  };
  return findProperty(kProperties, key);
}

}  // namespace vt
