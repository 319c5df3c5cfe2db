#include "foundation/PropertyList.h"

#include <string>

#include "foundation/BinaryPropertyListReader.h"
#include "foundation/OldStylePropertyListReader.h"
#include "foundation/XMLPropertyListReader.h"

namespace vt {
namespace {

// The first bytes in a form that can be looked at: without mark, zero bytes and blanks. Enough to
// tell "<?xml", "<!", "<plist" from "<0fbd77>", whatever the encoding.
std::string beginning(std::string_view bytes) {
  constexpr std::size_t kLookAt = 4096;
  constexpr std::string_view kPassedOver("\0 \t\r\n\xEF\xBB\xBF\xFE\xFF", 10);
  std::string seen;
  for (const char c : bytes.substr(0, kLookAt)) {
    if (kPassedOver.find(c) == std::string_view::npos) seen.push_back(c);
    if (seen.size() == 16) break;
  }
  return seen;
}

bool looksLikeXML(std::string_view seen) {
  if (!seen.starts_with('<')) return false;
  const std::size_t next = seen.find_first_not_of("0123456789abcdefABCDEF", 1);
  // Digits up to the ">" or the end of what was looked at are data. "<" alone is XML cut short.
  return seen.size() == 1 || (next != std::string_view::npos && seen[next] != '>');
}

}  // namespace

Result<Value, PropertyListError> readPropertyList(std::string_view bytes,
                                                  const PropertyListLimits& limits) {
  if (bytes.starts_with("bplist")) return readBinaryPropertyList(bytes, limits);
  if (looksLikeXML(beginning(bytes))) return readXMLPropertyList(bytes, limits);
  return readOldStylePropertyList(bytes, limits);
}

}  // namespace vt
