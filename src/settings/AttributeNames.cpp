#include "settings/AttributeNames.h"

#include <vector>

#include "foundation/NSLog.h"
#include "platform/Bundles.h"
#include "platform/Identity.h"
#include "platform/MetadataIndex.h"
#include "platform/Platform.h"
#include "platform/SystemPaths.h"
#include "settings/LetterCase.h"

namespace vt {
namespace {

constexpr std::string_view kUserTags = "kMDItemOMUserTags";

/// Acts as another user while it lives, in a process that acts as user 0. A refusal is left to the
/// identity service, which remembers it until the way back.
class StartupUserScope {
 public:
  explicit StartupUserScope(const std::optional<Value>& userId)
      : identity_(Platform::current().identity()), isSwitched_(userId && identity_.geteuid() == 0) {
    if (isSwitched_) identity_.seteuid(userId->unsignedIntegerValue());
  }
  StartupUserScope(const StartupUserScope&) = delete;
  StartupUserScope& operator=(const StartupUserScope&) = delete;
  ~StartupUserScope() {
    if (isSwitched_) identity_.seteuid(0);
  }

 private:
  Identity& identity_;
  bool isSwitched_;
};

}  // namespace

AttributeNames AttributeNames::load(const std::optional<Value>& startupUserId) {
  AttributeNames names;
  std::vector<std::string> attributes;
  {
    const Platform& platform = Platform::current();
    const StartupUserScope scope(startupUserId);
    // Without its tables there is no index; the server then runs without attributes.
    if (platform.hasMetadataIndex())
      attributes = platform.metadataIndex().MDSchemaCopyAllAttributes();
    NSLog("Got %d spotlight attributes", attributes.size());
    names.displayNames_->reserve(attributes.size());
    names.attributesByShortName_->reserve(attributes.size());
    for (const std::string& attribute : attributes) {
      if (auto displayName =
              platform.metadataIndex().MDSchemaCopyDisplayNameForAttribute(attribute)) {
        names.displayNames_->set(attribute, *std::move(displayName));
      }
    }
  }
  for (const std::string& attribute : attributes) names.addShortNames(attribute);
  return names;
}

void AttributeNames::addShortNames(const std::string& attribute) {
  const std::string key = attribute + std::string(kShortNameSuffix);
  std::string shortNames = Platform::current().bundles().localizedStringForKey(
      std::string(kMetadataBundle), key, "", kSchemaTable);
  if (shortNames.empty() || shortNames == key) {
    const std::optional<std::string> displayName = displayNameFor(attribute);
    if (!displayName) return;
    shortNames = lowercaseString(*displayName);
    if (attribute == kUserTags) shortNames.insert(0, "tag,");
  }
  std::string_view rest = shortNames;
  for (;;) {
    const std::size_t comma = rest.find(',');
    addShortName(rest.substr(0, comma), attribute);
    if (comma == std::string_view::npos) return;
    rest.remove_prefix(comma + 1);
  }
}

// Looked up as written but stored in lower case: one that is written with capitals is never found,
// and takes the place of what was stored before.
void AttributeNames::addShortName(std::string_view shortName, const std::string& attribute) {
  const Value* known = attributesByShortName_->find(shortName);
  std::shared_ptr<Array> attributes = known ? known->array() : nullptr;
  if (!attributes) {
    attributes = Array::make();
    attributesByShortName_->set(lowercaseString(shortName), attributes);
  }
  attributes->append(attribute);
}

std::optional<std::string> AttributeNames::displayNameFor(std::string_view attribute) const {
  const Value* name = displayNames_->find(attribute);
  return name ? std::optional<std::string>(*name->get<std::string>()) : std::nullopt;
}

std::shared_ptr<Array> AttributeNames::attributesFor(std::string_view shortName) const {
  const Value* attributes = attributesByShortName_->find(lowercaseString(shortName));
  return attributes ? attributes->array() : nullptr;
}

}  // namespace vt
