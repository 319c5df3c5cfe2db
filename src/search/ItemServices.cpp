// What a page asks of one item of a group: its types, and what may be done with it.

#include <algorithm>
#include <array>

#include "directory/VTUser.h"
#include "foundation/Array.h"
#include "kinds/VTSearchKind.h"
#include "platform/Attributes.h"
#include "platform/Files.h"
#include "platform/Platform.h"
#include "scopes/VTSearchFolder.h"
#include "search/ItemAccess.h"
#include "search/VTSearchResult.h"
#include "search/WebLinkFile.h"
#include "settings/VTSettings.h"
#include "util/NSFileManagerAdditions.h"

namespace vt {
namespace {

constexpr std::string_view kFolderType = "public.directory";

/// The whole file when `user` (who may be nullptr) may read it and it has at most `limit` bytes.
std::optional<std::string> readFor(const VTUser* user, const std::string& path,
                                   std::uint64_t limit) {
  const ItemAccess access(user, path);
  if (!access.isGranted()) return std::nullopt;
  Result<std::string, FileError> bytes = Platform::current().files().readContent(path, limit);
  return bytes ? std::optional(std::move(bytes).value()) : std::nullopt;
}

}  // namespace

bool VTSearchResult::typeTreeContains(std::string_view type, std::uint64_t index) const {
  const std::optional<Value> tree = valueForKey(kMDItemContentTypeTree, index);
  const std::shared_ptr<Array> types = tree ? tree->array() : nullptr;
  return types && std::ranges::any_of(*types, [&](const Value& element) {
           const std::string* identifier = element.get<std::string>();
           return identifier && *identifier == type;
         });
}

std::optional<std::string> VTSearchResult::mimeTypeForItemAtIndex(std::uint64_t index) const {
  const std::optional<std::string> path = pathForItemAtIndex(index);
  if (!path) return std::nullopt;
  const ItemAccess access(user_.get(), *path);
  return access.isGranted() ? mimeTypeAtPath(*path) : std::nullopt;
}

bool VTSearchResult::isEmailableAtIndex(std::uint64_t index) const {
  return !typeTreeContains(kFolderType, index) &&
         VTSettings::sharedInstance()->mailingConfiguredAndEnabled();
}

std::optional<std::string> VTSearchResult::webLinkForItemAtIndex(std::uint64_t index) const {
  const std::optional<std::string> path = pathForItemAtIndex(index);
  if (!path || !isWebLinkPath(*path)) return std::nullopt;
  const std::optional<std::string> bytes = readFor(user_.get(), *path, kMostWebLinkBytes);
  return bytes ? webLinkInFile(*bytes) : std::nullopt;
}

bool VTSearchResult::isDownloadableForItemAtIndex(std::uint64_t index) const {
  const std::optional<std::string> path = pathForItemAtIndex(index);
  if (!path || !searchFolders_ || typeTreeContains(kFolderType, index)) return false;
  return std::ranges::any_of(*searchFolders_, [&](const std::shared_ptr<VTSearchFolder>& folder) {
    return folder->isDownloadable(*path);
  });
}

bool VTSearchResult::isiPhoneDownloadableForItemAtIndex(std::uint64_t index) const {
  if (!isDownloadableForItemAtIndex(index)) return false;
  if (typeTreeContains("public.image", index)) return true;
  // Rich text is text, and yet phones do not show it.
  if (typeTreeContains("public.text", index) && !typeTreeContains("public.rtf", index)) return true;
  static constexpr std::array<std::string_view, 3> kDocumentTypes = {
      "com.microsoft.word.doc", "com.microsoft.excel.xls", "com.adobe.pdf"};
  return std::ranges::any_of(kDocumentTypes,
                             [&](std::string_view type) { return typeTreeContains(type, index); });
}

}  // namespace vt
