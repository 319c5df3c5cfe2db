#include "kinds/KindRegistry.h"

#include <utility>

#include "foundation/Array.h"
#include "foundation/PropertyList.h"
#include "kinds/VTSearchKind.h"
#include "platform/Platform.h"
#include "platform/Resources.h"

namespace vt {
namespace {

std::shared_ptr<Dictionary> shippedGroups() {
  const std::optional<std::string> bytes =
      Platform::current().resources().resource("ContentTypeGroups", "plist");
  if (!bytes) return nullptr;
  const auto root = readPropertyList(*bytes);
  return root ? root->dictionary() : nullptr;
}

// What the entry says under `key`; the reading of a missing number is 0 and NO.
Value valueOf(const Dictionary& entry, std::string_view key) {
  return entry.get(key).value_or(nullptr);
}

}  // namespace

std::shared_ptr<KindRegistry> KindRegistry::shared() {
  return Platform::current().shared<KindRegistry>([] {
    const std::shared_ptr<Dictionary> groups = shippedGroups();
    return std::make_shared<KindRegistry>(groups ? *groups : *Dictionary::make());
  });
}

KindRegistry::KindRegistry(const Dictionary& groups) {
  for (const auto& [title, value] : groups) {
    const std::shared_ptr<Dictionary> entry = value.dictionary();
    add(title.str(), entry ? *entry : *Dictionary::make());
  }
}

void KindRegistry::add(const std::string& title, const Dictionary& entry) {
  const std::shared_ptr<Array> types = valueOf(entry, "types").array();
  const std::shared_ptr<VTSearchKind> kind = VTSearchKind::initWithTitle(title, types);
  allKinds_->append(kind);
  if (valueOf(entry, "default").boolValue()) defaultKind_ = kind;
  kind->setSearchable(valueOf(entry, "searchable").boolValue());
  kind->setDefaultView(valueOf(entry, "defaultView").intValue());
  kind->setSortorder(static_cast<std::uint32_t>(valueOf(entry, "sortorder").intValue()));
  if (!types) return;
  for (const Value& type : *types) {
    if (const std::string* identifier = type.get<std::string>()) kindsByType_[*identifier] = kind;
  }
}

std::shared_ptr<VTSearchKind> KindRegistry::kindForType(const std::string& identifier) const {
  const auto found = kindsByType_.find(identifier);
  return found == kindsByType_.end() ? nullptr : found->second;
}

}  // namespace vt
