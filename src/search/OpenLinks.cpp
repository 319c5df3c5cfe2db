// The links by which a page opens an item: over AFP or SMB, or on the server itself.

#include "foundation/UTF8.h"
#include "platform/Files.h"
#include "platform/Platform.h"
#include "scopes/ShortestAddress.h"
#include "scopes/VTSearchFolder.h"
#include "search/VTSearchResult.h"

namespace vt {
namespace {

/// The value of a hexadecimal digit; nothing for any other character.
std::optional<unsigned> digitValue(char digit) {
  if (digit >= '0' && digit <= '9') return digit - '0';
  if (digit >= 'a' && digit <= 'f') return digit - 'a' + 10;
  if (digit >= 'A' && digit <= 'F') return digit - 'A' + 10;
  return std::nullopt;
}

std::optional<std::string> withoutPercentEscapes(std::string_view text) {
  std::string plain;
  plain.reserve(text.size());
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] != '%') {
      plain += text[i];
      continue;
    }
    if (text.size() - i < 3) return std::nullopt;
    const std::optional<unsigned> high = digitValue(text[i + 1]);
    const std::optional<unsigned> low = digitValue(text[i + 2]);
    if (!high || !low) return std::nullopt;
    plain += static_cast<char>(*high << 4U | *low);
    i += 2;
  }
  return isValidUTF8(plain) ? std::optional(std::move(plain)) : std::nullopt;
}

/// The folder that holds `path`, which is absolute.
std::string parentOf(const std::string& path) {
  const std::size_t slash = path.rfind('/');
  return slash == 0 || slash == std::string::npos ? "/" : path.substr(0, slash);
}

}  // namespace

std::optional<std::string> VTSearchResult::encodedURL(const std::string& url) {
  const std::optional<std::string> plain = withoutPercentEscapes(url);
  if (!plain) return std::nullopt;
  std::string encoded;
  encoded.reserve(plain->size());
  for (const char character : *plain) {
    if (character == '\'') {
      encoded += "%27";
    } else {
      encoded += character;
    }
  }
  return encoded;
}

std::optional<std::string> VTSearchResult::openURLPathForItemAtIndex(std::uint64_t index,
                                                                     bool windowsClient,
                                                                     bool localClient) const {
  std::optional<std::string> link;
  if (localClient) {
    link = pathForItemAtIndex(index);
    if (link) link->insert(0, "urlrunner://file//");
  } else {
    if (!windowsClient) link = afpURLPathForItemAtIndex(index);
    if (!link) link = smbURLPathForItemAtIndex(index, windowsClient);
  }
  return link ? encodedURL(*link) : std::nullopt;
}

std::optional<std::string> VTSearchResult::afpURLPathForItemAtIndex(std::uint64_t index) const {
  const std::optional<std::string> path = pathForItemAtIndex(index);
  if (!path) return std::nullopt;
  return shortestAddress(searchFolders_,
                         [&](const VTSearchFolder& folder) { return folder.afpURLforPath(*path); });
}

std::optional<std::string> VTSearchResult::smbURLPathForItemAtIndex(std::uint64_t index,
                                                                    bool windowsClient) const {
  std::optional<std::string> path = pathForItemAtIndex(index);
  if (!path) return std::nullopt;
  const Files& files = Platform::current().files();
  if (windowsClient && files.exists(*path) && !files.isDirectory(*path)) path = parentOf(*path);
  return shortestAddress(searchFolders_, [&](const VTSearchFolder& folder) {
    return folder.smbURLforPath(*path, windowsClient);
  });
}

}  // namespace vt
