#include "search/ItemMetadata.h"

#include "platform/MetadataIndex.h"
#include "platform/Platform.h"
#include "search/ItemAccess.h"
#include "search/VTSearchResult.h"
#include "settings/VTSettings.h"

namespace vt {
std::shared_ptr<Dictionary> metadataAttributes(const std::string& path, const VTUser* user) {
  const Platform& platform = Platform::current();
  const ItemAccess access(user, path);
  if (!access.isGranted() || !platform.hasMetadataIndex()) return Dictionary::make();
  MetadataIndex& index = platform.metadataIndex();
  const std::shared_ptr<MDItem> item = index.MDItemCreate(path);
  if (!item) return Dictionary::make();
  return index.MDItemCopyAttributes(*item, index.MDItemCopyAttributeNames(*item));
}

std::shared_ptr<Dictionary> VTSearchResult::metadataForItemAtIndex(std::uint64_t index) const {
  auto metadata = Dictionary::make();
  const std::optional<std::string> path = pathForItemAtIndex(index);
  if (!path) return metadata;
  const std::shared_ptr<Dictionary> attributes = metadataAttributes(*path, user_.get());
  const std::shared_ptr<VTSettings> settings = VTSettings::sharedInstance();
  metadata->reserve(attributes->size());
  for (const auto& [name, value] : *attributes) {
    if (const auto shown = settings->displayNameForAttributeKey(name.str())) {
      metadata->set(*shown, value);
    }
  }
  return metadata;
}

}  // namespace vt
