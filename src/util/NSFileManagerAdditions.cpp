#include "util/NSFileManagerAdditions.h"

#include <memory>

#include "platform/Attributes.h"
#include "platform/ContentTypeTags.h"
#include "platform/MetadataIndex.h"
#include "platform/Platform.h"

namespace vt {

std::optional<std::string> mimeTypeAtPath(const std::string& path) {
  const Platform& platform = Platform::current();
  if (!platform.hasMetadataIndex()) return std::nullopt;
  MetadataIndex& index = platform.metadataIndex();
  const std::shared_ptr<MDItem> item = index.MDItemCreate(path);
  if (!item) return std::nullopt;
  const std::optional<Value> type = index.MDItemCopyAttribute(*item, kMDItemContentType);
  const std::string* identifier = type ? type->get<std::string>() : nullptr;
  if (!identifier) return std::nullopt;
  return platform.contentTypeTags().UTTypeCopyPreferredTagWithClass(*identifier,
                                                                    kUTTagClassMIMEType);
}

}  // namespace vt
