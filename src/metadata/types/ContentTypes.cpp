#include "metadata/types/ContentTypes.h"

#include <algorithm>

#include "foundation/AsciiCase.h"

namespace vt {

std::optional<ContentTypeId> ContentTypes::typeBySuffix(std::string_view name,
                                                        const TypeByText& types) const {
  // The first byte starts no suffix: ".profile" is a name, not an extension.
  std::optional<ContentTypeId> found;
  std::size_t dot = name.size();
  for (std::size_t dots = 0; dots <= mostDots_; ++dots) {
    if (dot == 0) break;
    dot = name.rfind('.', dot - 1);
    if (dot == std::string_view::npos || dot == 0) break;
    const std::string_view suffix = name.substr(dot + 1);
    if (suffix.size() > longestExtension_) break;
    // A longer suffix overrules a shorter one, so the last that is found counts.
    if (const auto type = types.find(asciiLowercase(suffix))) found = type;
  }
  return found;
}

ContentTypeId ContentTypes::typeOfFile(std::string_view name) const {
  return typeBySuffix(name, fileTypes_).value_or(data_);
}

ContentTypeId ContentTypes::typeOfFolder(std::string_view name) const {
  return typeBySuffix(name, folderTypes_).value_or(folder_);
}

std::optional<ContentTypeId> ContentTypes::find(std::string_view identifier) const {
  return byIdentifier_.find(asciiLowercase(identifier));
}

bool ContentTypes::conforms(ContentTypeId type, ContentTypeId ancestor) const {
  return std::ranges::find(types_[type].tree, ancestor) != types_[type].tree.end();
}

const std::shared_ptr<Array>& ContentTypes::treeIdentifiers(ContentTypeId type) const {
  std::shared_ptr<Array>& identifiers = treeIdentifiers_[type];
  if (!identifiers) {
    identifiers = Array::make();
    for (const ContentTypeId member : types_[type].tree) {
      identifiers->append(std::string(types_[member].identifier));
    }
  }
  return identifiers;
}

std::optional<std::string> ContentTypes::preferredMimeType(std::string_view identifier) const {
  const std::optional<ContentTypeId> type = find(identifier);
  if (!type || types_[*type].mimeTypes.empty()) return std::nullopt;
  return std::string(types_[*type].mimeTypes.front());
}

}  // namespace vt
