#include "scopes/VTConcreteSearchFolder.h"

#include <utility>

#include "foundation/Property.h"

namespace vt {
namespace {

constexpr DependentKey kDependent[] = {
    {"afpURLPath", "path"},
    {"smbURLPath", "path"},
    {"sharePointName", "path"},
};

std::set<std::string> sourcesOf(std::string_view key) {
  std::set<std::string> sources;
  for (const DependentKey& pair : kDependent) {
    if (pair.dependent == key) sources.emplace(pair.source);
  }
  return sources;
}

}  // namespace

std::shared_ptr<VTConcreteSearchFolder> VTConcreteSearchFolder::initWithTitle(
    std::optional<std::string> title) {
  std::shared_ptr<VTConcreteSearchFolder> folder(new VTConcreteSearchFolder);
  folder->setTitle(std::move(title));
  return folder;
}

std::shared_ptr<VTConcreteSearchFolder> VTConcreteSearchFolder::initWithPath(
    std::optional<std::string> path, std::optional<std::string> title) {
  std::shared_ptr<VTConcreteSearchFolder> folder(new VTConcreteSearchFolder);
  folder->setPath(std::move(path));
  folder->setTitle(std::move(title));
  folder->setUserDefinedURLPaths(/*userDefined=*/false);
  return folder;
}

std::shared_ptr<VTConcreteSearchFolder> VTConcreteSearchFolder::initWithDictionary(
    const Dictionary& data) {
  std::shared_ptr<VTConcreteSearchFolder> folder(new VTConcreteSearchFolder);
  for (const auto& [key, value] : data) folder->setValue(value, key.str());
  return folder;
}

void VTConcreteSearchFolder::setPath(std::optional<std::string> path) {
  const ValueChange change(*this, "path");
  cachedAFPURLPath_.store(std::nullopt);
  cachedSMBURLPath_.store(std::nullopt);
  path_.store(std::move(path));
}

void VTConcreteSearchFolder::setUserDefinedURLPaths(bool userDefined) {
  const ValueChange change(*this, "userDefinedURLPaths");
  userDefinedURLPaths_ = userDefined;
}

void VTConcreteSearchFolder::setAfpURLPath(std::optional<std::string> address) {
  const ValueChange change(*this, "afpURLPath");
  afpURLPath_.store(std::move(address));
}

void VTConcreteSearchFolder::setSmbURLPath(std::optional<std::string> address) {
  const ValueChange change(*this, "smbURLPath");
  smbURLPath_.store(std::move(address));
}

bool VTConcreteSearchFolder::isDownloadable(const std::string& path) const {
  const std::optional<std::string> covered = this->path();
  // An empty path is found nowhere; otherwise it would open every file of the machine.
  return covered && !covered->empty() && path.starts_with(*covered) && download() == 1;
}

std::shared_ptr<Array> VTConcreteSearchFolder::paths() const {
  const std::optional<std::string> covered = path();
  return Array::make({covered ? Value(*covered) : Value(nullptr)});
}

std::shared_ptr<Dictionary> VTConcreteSearchFolder::serializedData() const {
  auto data = Dictionary::make();
  for (const std::string_view key : {"title", "download", "path", "userDefinedURLPaths"}) {
    data->set(key, valueForKey(key).value_or(nullptr));
  }
  if (const std::optional<std::string> address = afpURLPath()) data->set("afpURLPath", *address);
  if (const std::optional<std::string> address = smbURLPath()) data->set("smbURLPath", *address);
  return data;
}

const Property* VTConcreteSearchFolder::propertyNamed(std::string_view key) const {
  using Folder = VTConcreteSearchFolder;
  static constexpr Property kProperties[] = {
      property<&Folder::path, &Folder::setPath>("path"),
      property<&Folder::userDefinedURLPaths, &Folder::setUserDefinedURLPaths>(
          "userDefinedURLPaths"),
      property<&Folder::afpURLPath, &Folder::setAfpURLPath>("afpURLPath"),
      property<&Folder::smbURLPath, &Folder::setSmbURLPath>("smbURLPath"),
      property<&Folder::sharePointName>("sharePointName"),
      property<&Folder::sharePointData>("sharePointData"),
      property<&Folder::afpAvailable>("afpAvailable"),
      property<&Folder::smbAvailable>("smbAvailable"),
  };
  const Property* property = findProperty(kProperties, key);
  return property ? property : VTSearchFolder::propertyNamed(key);
}

std::span<const DependentKey> VTConcreteSearchFolder::dependentKeys() const { return kDependent; }

std::set<std::string> VTConcreteSearchFolder::keyPathsForValuesAffectingAfpURLPath() {
  return sourcesOf("afpURLPath");
}

std::set<std::string> VTConcreteSearchFolder::keyPathsForValuesAffectingSmbURLPath() {
  return sourcesOf("smbURLPath");
}

std::set<std::string> VTConcreteSearchFolder::keyPathsForValuesAffectingSharePointName() {
  return sourcesOf("sharePointName");
}

}  // namespace vt
