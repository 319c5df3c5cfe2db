#include "foundation/XMLPropertyListReader.h"

#include <expat.h>
#include <fmt/format.h>

#include <algorithm>
#include <exception>
#include <memory>
#include <new>
#include <optional>
#include <utility>
#include <vector>

#include "foundation/Array.h"
#include "foundation/Dictionary.h"
#include "foundation/KeyCache.h"
#include "foundation/PropertyListBase64.h"
#include "foundation/PropertyListScalars.h"

namespace vt {
namespace {

using Kind = PropertyListErrorKind;

enum class Element : std::uint8_t {
  kPlist,
  kDict,
  kArray,
  kKey,
  kString,
  kInteger,
  kReal,
  kDate,
  kData,
  kTrue,
  kFalse,
};

struct ElementName {
  std::string_view name;
  Element element;
};

constexpr ElementName kElementNames[] = {
    {"key", Element::kKey},         {"string", Element::kString}, {"dict", Element::kDict},
    {"integer", Element::kInteger}, {"true", Element::kTrue},     {"false", Element::kFalse},
    {"array", Element::kArray},     {"date", Element::kDate},     {"real", Element::kReal},
    {"data", Element::kData},       {"plist", Element::kPlist},
};

std::optional<Element> elementNamed(std::string_view name) {
  for (const ElementName& entry : kElementNames) {
    if (entry.name == name) return entry.element;
  }
  return std::nullopt;
}

bool isBlank(std::string_view text) {
  return text.find_first_not_of(" \t\r\n") == std::string_view::npos;
}

bool isContainer(Element element) {
  return element == Element::kDict || element == Element::kArray;
}

struct ParserDeleter {
  void operator()(XML_Parser parser) const { XML_ParserFree(parser); }
};

/// Builds the tree from the parser's events. Of each open element it keeps only what is needed to
/// place its value, so a document costs no more than its result.
class XMLPropertyListReader {
 public:
  XMLPropertyListReader(std::string_view bytes, const PropertyListLimits& limits)
      : bytes_(bytes), limits_(limits), parser_(XML_ParserCreate(nullptr)) {
    if (!parser_) throw std::bad_alloc();
    XML_SetUserData(parser_.get(), this);
    XML_SetElementHandler(parser_.get(), onStart, onEnd);
    XML_SetCharacterDataHandler(parser_.get(), onText);
    XML_SetEntityDeclHandler(parser_.get(), onEntityDeclaration);
    XML_SetSkippedEntityHandler(parser_.get(), onSkippedEntity);
  }

  Result<Value, PropertyListError> read() {
    // In one piece: fed in slices, a token that spans many would be scanned once for each.
    const XML_Status status = XML_Parse(parser_.get(), bytes_.data(),
                                        static_cast<int>(bytes_.size()), /*isFinal=*/XML_TRUE);
    if (thrown_) std::rethrow_exception(thrown_);
    if (!error_ && status != XML_STATUS_OK) failAsParser();
    if (error_) return std::move(*error_);
    return std::move(root_);
  }

 private:
  struct Container {
    std::shared_ptr<Dictionary> dictionary;  // this or the array
    std::shared_ptr<Array> array;
    std::optional<Key> key;  // waits for its value
  };

  // ---- what the parser calls. Exceptions (no memory) must not pass through its C frames.

  template <class Action>
  static void guarded(void* self, Action action) {
    auto* reader = static_cast<XMLPropertyListReader*>(self);
    if (reader->error_ || reader->thrown_) return;  // a stopped parser still delivers a few events
    try {
      action(*reader);
    } catch (...) {
      reader->thrown_ = std::current_exception();
      XML_StopParser(reader->parser_.get(), /*resumable=*/XML_FALSE);
    }
  }

  static void onStart(void* self, const XML_Char* name, const XML_Char** /*attributes*/) {
    guarded(self, [name](XMLPropertyListReader& reader) { reader.start(name); });
  }
  static void onEnd(void* self, const XML_Char* /*name*/) {
    guarded(self, [](XMLPropertyListReader& reader) { reader.end(); });
  }
  static void onText(void* self, const XML_Char* text, int length) {
    guarded(self, [text, length](XMLPropertyListReader& reader) {
      reader.text({text, static_cast<std::size_t>(length)});
    });
  }
  static void onEntityDeclaration(void* self, const XML_Char* name, int /*isParameter*/,
                                  const XML_Char* /*value*/, int /*valueLength*/,
                                  const XML_Char* /*base*/, const XML_Char* /*systemId*/,
                                  const XML_Char* /*publicId*/, const XML_Char* /*notation*/) {
    guarded(self, [name](XMLPropertyListReader& reader) {
      reader.fail(Kind::kUnsupported, fmt::format("the entity {} is declared", quotedPiece(name)));
    });
  }
  static void onSkippedEntity(void* self, const XML_Char* name, int /*isParameter*/) {
    guarded(self, [name](XMLPropertyListReader& reader) {
      reader.fail(Kind::kUnsupported, fmt::format("unknown entity {}", quotedPiece(name)));
    });
  }

  // ---- elements

  void start(std::string_view name) {
    const std::optional<Element> element = elementNamed(name);
    if (!element) {
      return fail(Kind::kStructure, fmt::format("unknown element <{}>", name));
    }
    if (leaf_) {
      return fail(Kind::kStructure, fmt::format("<{}> inside a {}", name, nameOf(*leaf_)));
    }
    if (!insidePlist_) {
      if (*element != Element::kPlist) {
        return fail(Kind::kStructure, fmt::format("<{}> where <plist> should stand", name));
      }
      insidePlist_ = true;
      return;
    }
    if (!mayStandHere(*element, name)) return;
    if (isContainer(*element)) {
      open(*element);
    } else {
      leaf_ = element;
      leafOffset_ = currentOffset();
      text_.clear();
    }
  }

  bool mayStandHere(Element element, std::string_view name) {
    if (element == Element::kPlist) {
      fail(Kind::kStructure, "<plist> inside <plist>");
    } else if (open_.empty() && hasRoot_) {
      fail(Kind::kStructure, fmt::format("<{}> after the root value", name));
    } else if (!inDictionary() && element == Element::kKey) {
      fail(Kind::kStructure, "<key> outside a dictionary");
    } else if (inDictionary() && element == Element::kKey && open_.back().key) {
      fail(Kind::kStructure,
           fmt::format("the key {} has no value", quotedPiece(open_.back().key->str())));
    } else if (inDictionary() && element != Element::kKey && !open_.back().key) {
      fail(Kind::kStructure, fmt::format("<{}> without a key before it", name));
    }
    return !error_;
  }

  void open(Element element) {
    if (open_.size() == limits_.depth) {
      return fail(Kind::kTooDeep,
                  fmt::format("more than {} containers in one another", limits_.depth));
    }
    Container container;
    if (element == Element::kDict) {
      container.dictionary = std::make_shared<Dictionary>();
      place(container.dictionary);
    } else {
      container.array = std::make_shared<Array>();
      place(container.array);
    }
    open_.push_back(std::move(container));
  }

  void end() {
    if (leaf_) {
      finishLeaf(*leaf_);
      leaf_.reset();
    } else if (!open_.empty()) {
      if (open_.back().key) {
        return fail(Kind::kStructure,
                    fmt::format("the key {} has no value", quotedPiece(open_.back().key->str())));
      }
      open_.pop_back();
    } else if (!hasRoot_) {
      fail(Kind::kStructure, "<plist> without a value");
    }
  }

  void text(std::string_view text) {
    if (leaf_) {
      text_.append(text);
    } else if (!isBlank(text)) {
      fail(Kind::kStructure, fmt::format("text between elements: {}", quotedPiece(text)));
    }
  }

  void finishLeaf(Element element) {
    switch (element) {
      case Element::kKey:
        open_.back().key = keys_.keyFor(text_);
        return;
      case Element::kString:
        return place(std::string(text_));  // a copy: exact in size, and the buffer stays ours
      case Element::kTrue:
      case Element::kFalse:
        if (!isBlank(text_)) return failInLeaf("an empty element");
        return place(element == Element::kTrue);
      case Element::kInteger:
        return placeIf(parsePropertyListInteger(text_), "an integer of 64 bits");
      case Element::kReal:
        return placeIf(parsePropertyListReal(text_), "a real number");
      case Element::kDate:
        return placeIf(parsePropertyListDate(text_), "a date (YYYY-MM-DDThh:mm:ssZ)");
      default:
        return placeIf(decodeBase64Strictly(text_), "base64");
    }
  }

  template <class Reading>
  void placeIf(std::optional<Reading> reading, std::string_view wanted) {
    if (reading) {
      place(std::move(*reading));
    } else {
      failInLeaf(wanted);
    }
  }

  void place(Value value) {
    if (++objects_ > limits_.objects) {
      return failAt(leaf_ ? leafOffset_ : currentOffset(), Kind::kTooManyObjects,
                    fmt::format("more than {} values", limits_.objects));
    }
    if (open_.empty()) {
      root_ = std::move(value);
      hasRoot_ = true;
    } else if (inDictionary()) {
      Container& container = open_.back();
      container.dictionary->set(*container.key, std::move(value));
      container.key.reset();
    } else {
      open_.back().array->append(std::move(value));
    }
  }

  bool inDictionary() const { return !open_.empty() && open_.back().dictionary; }

  static std::string_view nameOf(Element element) {
    const auto* entry = std::ranges::find(kElementNames, element, &ElementName::element);
    return entry->name;
  }

  // ---- errors

  std::size_t currentOffset() const {
    return static_cast<std::size_t>(std::max<XML_Index>(XML_GetCurrentByteIndex(parser_.get()), 0));
  }

  void fail(Kind kind, std::string text) { failAt(currentOffset(), kind, std::move(text)); }

  void failInLeaf(std::string_view wanted) {
    failAt(leafOffset_, Kind::kInvalidValue,
           fmt::format("<{}> holds {}, not {}", nameOf(*leaf_), quotedPiece(text_), wanted));
  }

  void failAt(std::size_t offset, Kind kind, std::string text) {
    error_ = {kind, offset, lineAt(offset), std::move(text)};
    XML_StopParser(parser_.get(), /*resumable=*/XML_FALSE);
  }

  void failAsParser() {
    const XML_Error code = XML_GetErrorCode(parser_.get());
    if (code == XML_ERROR_NO_MEMORY) throw std::bad_alloc();
    const bool truncated = code == XML_ERROR_NO_ELEMENTS || code == XML_ERROR_UNCLOSED_TOKEN ||
                           code == XML_ERROR_PARTIAL_CHAR ||
                           code == XML_ERROR_UNCLOSED_CDATA_SECTION;
    const std::size_t offset = std::min(currentOffset(), bytes_.size());
    error_ = {truncated ? Kind::kTruncated : Kind::kSyntax, offset, lineAt(offset),
              XML_ErrorString(code)};
  }

  // The parser counts lines too, but only for the place where it stands.
  std::size_t lineAt(std::size_t offset) const {
    const std::string_view before = bytes_.substr(0, offset);
    const bool isUTF16 = before.find('\0') != std::string_view::npos;
    if (!isUTF16) return lineAtOffset(bytes_, offset);
    // The parser went past the first character, so there are two bytes at least: a mark or a "<".
    const bool lowByteFirst = bytes_[0] == '\xFF' || bytes_[0] == '<';
    std::string units;
    for (std::size_t i = 0; i + 1 < before.size(); i += 2) {
      const char low = before[lowByteFirst ? i : i + 1];
      const char high = before[lowByteFirst ? i + 1 : i];
      units.push_back(high == 0 ? low : '?');
    }
    return lineAtOffset(units, units.size());
  }

  const std::string_view bytes_;
  const PropertyListLimits limits_;
  const std::unique_ptr<XML_ParserStruct, ParserDeleter> parser_;

  std::vector<Container> open_;
  bool insidePlist_ = false;
  bool hasRoot_ = false;
  Value root_;
  std::size_t objects_ = 0;
  KeyCache keys_;

  std::optional<Element> leaf_;  // the open element that holds text
  std::size_t leafOffset_ = 0;
  std::string text_;

  std::optional<PropertyListError> error_;
  std::exception_ptr thrown_;
};

}  // namespace

Result<Value, PropertyListError> readXMLPropertyList(std::string_view bytes,
                                                     const PropertyListLimits& limits) {
  if (bytes.size() > limits.bytes) return tooManyBytes(bytes.size(), limits.bytes);
  return XMLPropertyListReader(bytes, limits).read();
}

}  // namespace vt
