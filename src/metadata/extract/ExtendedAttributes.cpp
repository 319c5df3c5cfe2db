#include "metadata/extract/ExtendedAttributes.h"

#include <sys/xattr.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdint>
#include <optional>
#include <utility>

#include "foundation/Array.h"
#include "foundation/PropertyList.h"
#include "foundation/UTF8.h"

namespace vt {
namespace {

constexpr std::size_t kMostValueBytes = std::size_t{64} * 1024;
constexpr std::size_t kMostElements = 1000;

enum class Shape : std::uint8_t {
  kText,
  kTexts,
  kTags,          ///< a colour may stand in a second line of each
  kTagsInCommas,  ///< in one text
  kDates,
  kBoolean,
};

/// An extended attribute, without "user." before it, and what it is here.
struct Row {
  std::string_view name;
  std::string_view attribute;
  Shape shape;
};

// Of two that are one attribute here, the one that stands first counts, and lists are of both.
constexpr Row kRows[] = {
    {"com.apple.metadata:_kMDItemUserTags", "kMDItemUserTags", Shape::kTags},
    {"com.apple.metadata:kMDItemFinderComment", "kMDItemFinderComment", Shape::kText},
    {"com.apple.metadata:kMDItemWhereFroms", "kMDItemWhereFroms", Shape::kTexts},
    {"com.apple.metadata:kMDItemDownloadedDate", "kMDItemDownloadedDate", Shape::kDates},
    {"com.apple.metadata:kMDItemIsScreenCapture", "kMDItemIsScreenCapture", Shape::kBoolean},
    {"com.apple.metadata:kMDItemScreenCaptureType", "kMDItemScreenCaptureType", Shape::kText},
    {"xdg.tags", "kMDItemUserTags", Shape::kTagsInCommas},
    {"xdg.comment", "kMDItemFinderComment", Shape::kText},
    {"xdg.origin.url", "kMDItemWhereFroms", Shape::kTexts},
    {"xdg.referrer.url", "kMDItemWhereFroms", Shape::kTexts},
};

constexpr std::array<std::string_view, 6> kAttributes = {
    "kMDItemDownloadedDate",    "kMDItemFinderComment", "kMDItemIsScreenCapture",
    "kMDItemScreenCaptureType", "kMDItemUserTags",      "kMDItemWhereFroms"};

/// The row for an extended attribute; nullptr when it is not read. Samba keeps those of Macs as
/// streams, and the colon in their names as the character that stands for it in SMB.
const Row* rowOf(std::string_view name) {
  constexpr std::string_view kUser = "user.";
  constexpr std::string_view kStream = "DosStream.";
  constexpr std::string_view kStreamEnd = ":$DATA";
  constexpr std::string_view kColonInSMB = "\xef\x80\xa2";  // U+F022
  if (!name.starts_with(kUser)) return nullptr;
  name.remove_prefix(kUser.size());
  if (name.starts_with(kStream)) {
    name.remove_prefix(kStream.size());
    if (name.ends_with(kStreamEnd)) name.remove_suffix(kStreamEnd.size());
  }
  std::string plain(name);
  if (const std::size_t at = plain.find(kColonInSMB); at != std::string::npos) {
    plain.replace(at, kColonInSMB.size(), ":");
  }
  const auto* const row = std::ranges::find(kRows, plain, &Row::name);
  return row == std::end(kRows) ? nullptr : row;
}

template <class Visit>
void forEachName(std::string_view list, Visit visit) {
  while (!list.empty()) {
    const std::size_t end = std::min(list.find('\0'), list.size());
    visit(list.substr(0, end));
    list.remove_prefix(std::min(end + 1, list.size()));
  }
}

std::string listOf(int file) {
  // Most have none, or few.
  std::string list(1024, '\0');
  ssize_t size = ::flistxattr(file, list.data(), list.size());
  if (size < 0 && errno == ERANGE) {
    list.resize(XATTR_LIST_MAX);
    size = ::flistxattr(file, list.data(), list.size());
  }
  list.resize(static_cast<std::size_t>(std::max<ssize_t>(size, 0)));
  return list;
}

std::optional<std::string> valueOf(int file, const std::string& name) {
  std::string bytes(kMostValueBytes, '\0');
  const ssize_t size = ::fgetxattr(file, name.c_str(), bytes.data(), bytes.size());
  if (size < 0) return std::nullopt;
  bytes.resize(static_cast<std::size_t>(size));
  return bytes;
}

/// The bytes as a value: a binary property list, else text.
Value decoded(std::string_view bytes) {
  if (bytes.starts_with("bplist")) {
    Result<Value, PropertyListError> read = readPropertyList(bytes);
    // Streams of Samba's end with one more NUL.
    if (!read && bytes.ends_with('\0')) read = readPropertyList(bytes.substr(0, bytes.size() - 1));
    return read ? std::move(read).value() : Value();
  }
  while (bytes.ends_with('\0')) bytes.remove_suffix(1);
  return displayText(bytes);
}

std::string_view withoutBlanks(std::string_view text) {
  constexpr std::string_view kBlanks = " \t\r\n";
  const std::size_t first = std::min(text.find_first_not_of(kBlanks), text.size());
  text.remove_prefix(first);
  return text.substr(0, text.find_last_not_of(kBlanks) + 1);
}

/// Takes values of one attribute after the other.
class KeptAttributes {
 public:
  void add(const Row& row, const Value& value) {
    switch (row.shape) {
      case Shape::kText:
        if (const auto* text = value.get<std::string>()) set(row.attribute, withoutBlanks(*text));
        break;
      case Shape::kBoolean:
        if (value.get<bool>() != nullptr) values_.emplace(row.attribute, value);
        break;
      case Shape::kTagsInCommas:
        if (const auto* text = value.get<std::string>()) addTags(row.attribute, *text);
        break;
      case Shape::kTexts:
      case Shape::kTags:
      case Shape::kDates:
        if (const std::shared_ptr<Array> list = value.array()) {
          for (const Value& element : *list) addElement(row, element);
        } else {
          addElement(row, value);
        }
        break;
    }
  }

  std::map<std::string, Value> take() { return std::move(values_); }

 private:
  void set(std::string_view attribute, std::string_view text) {
    if (!text.empty()) values_.emplace(attribute, text);
  }

  void addTags(std::string_view attribute, std::string_view tags) {
    while (!tags.empty()) {
      const std::size_t end = std::min(tags.find(','), tags.size());
      append(attribute, Value(withoutBlanks(tags.substr(0, end))));
      tags.remove_prefix(std::min(end + 1, tags.size()));
    }
  }

  void addElement(const Row& row, const Value& element) {
    if (row.shape == Shape::kDates) {
      if (element.get<Date>() != nullptr) append(row.attribute, element);
    } else if (const auto* text = element.get<std::string>()) {
      const bool isTag = row.shape == Shape::kTags;
      append(row.attribute,
             Value(withoutBlanks(isTag ? std::string_view(*text).substr(0, text->find('\n'))
                                       : std::string_view(*text))));
    }
  }

  void append(std::string_view attribute, Value element) {
    if (const auto* text = element.get<std::string>(); text != nullptr && text->empty()) return;
    Value& value = values_.try_emplace(std::string(attribute), Array::make()).first->second;
    const std::shared_ptr<Array> list = value.array();
    const bool isKnown = std::ranges::find(list->elements(), element) != list->end();
    if (!isKnown && list->size() < kMostElements) list->append(std::move(element));
  }

  std::map<std::string, Value> values_;
};

}  // namespace

std::map<std::string, Value> extendedAttributesOf(int file) {
  std::array<std::string, std::size(kRows)> names;  // by row; "" where the file has none
  forEachName(listOf(file), [&](std::string_view name) {
    if (const Row* row = rowOf(name)) names[static_cast<std::size_t>(row - kRows)] = name;
  });
  KeptAttributes kept;
  for (std::size_t i = 0; i < names.size(); ++i) {
    if (names[i].empty()) continue;
    if (const std::optional<std::string> bytes = valueOf(file, names[i])) {
      kept.add(kRows[i], decoded(*bytes));
    }
  }
  return kept.take();
}

std::span<const std::string_view> extendedAttributeNames() { return kAttributes; }

bool hasExtendedAttributes(std::string_view list) {
  bool has = false;
  forEachName(list, [&](std::string_view name) { has = has || rowOf(name) != nullptr; });
  return has;
}

}  // namespace vt
