#include "foundation/BinaryPropertyListReader.h"

#include <fmt/format.h>

#include <algorithm>
#include <bit>
#include <cmath>
#include <limits>
#include <optional>
#include <utility>
#include <vector>

#include "foundation/Array.h"
#include "foundation/BinaryPropertyListLayout.h"
#include "foundation/Dictionary.h"
#include "foundation/KeyCache.h"
#include "foundation/UTF16.h"
#include "foundation/UTF8.h"

namespace vt {
namespace {

using Kind = PropertyListErrorKind;

using Layout = BinaryPropertyListLayout;
using Head = Layout::Head;

/// Unfolds the object graph into a tree. The first error ends the work: every function then
/// answers nothing, up to the top.
class BinaryPropertyListReader {
 public:
  BinaryPropertyListReader(std::string_view bytes, const PropertyListLimits& limits)
      : layout_(bytes), limits_(limits) {}

  Result<Value, PropertyListError> read() {
    if (layout_.readTrailer()) {
      isOpen_.resize(layout_.objectCount());
      if (std::optional<Value> root = readObject(layout_.topObject())) return std::move(*root);
    }
    return *layout_.error();
  }

 private:
  std::optional<Value> readObject(std::uint64_t reference) {
    const std::optional<std::size_t> offset = layout_.offsetOf(reference);
    if (!offset) return std::nullopt;
    const std::optional<Head> head = layout_.readHead(*offset);
    if (!head) return std::nullopt;
    switch (head->marker) {
      case Layout::kSimple:
        return readSimple(*offset, head->low);
      case Layout::kInteger:
        return readInteger(*offset, *head);
      case Layout::kReal:
        return readReal(*offset, *head);
      case Layout::kDate:
        return readDate(*offset, *head);
      case Layout::kData:
        return readData(*offset, *head);
      case Layout::kASCII:
      case Layout::kUTF16:
        return readString(*offset, *head);
      case Layout::kArray:
      case Layout::kDictionary:
        return readContainer(reference, *offset, *head);
      case Layout::kUID:
        return layout_.fail(*offset, Kind::kUnsupported, "a UID, which no value stands for");
      case Layout::kSet:
      case Layout::kOrderedSet:
        return layout_.fail(*offset, Kind::kUnsupported, "a set, which no value stands for");
      default:
        return failAsUnknown(*offset);
    }
  }

  std::nullopt_t failAsUnknown(std::size_t offset) {
    return layout_.fail(offset, Kind::kSyntax,
                        fmt::format("no object begins with the byte 0x{:02x}",
                                    static_cast<unsigned char>(layout_.bytes()[offset])));
  }

  std::optional<Value> readSimple(std::size_t offset, std::uint8_t low) {
    if (low == 0x8 || low == 0x9) return Value(low == 0x9);
    if (low == 0x0) return layout_.fail(offset, Kind::kUnsupported, "null, which no list may hold");
    return failAsUnknown(offset);
  }

  std::optional<Value> readInteger(std::size_t offset, const Head& head) {
    if (head.low > 4) return failAsUnknown(offset);
    const std::size_t size = std::size_t{1} << head.low;
    const std::optional<std::string_view> content = layout_.contentAt(offset, head.content, size);
    if (!content) return std::nullopt;
    // Up to 4 bytes are unsigned and 8 are signed; 16 are signed too, and in practice hold the
    // unsigned numbers that 8 cannot.
    const std::uint64_t low = bigEndianNumber(content->substr(size > 8 ? 8 : 0));
    if (size <= 8) return Value(static_cast<std::int64_t>(low));
    const std::uint64_t high = bigEndianNumber(content->substr(0, 8));
    const bool lowIsNegative = low > std::uint64_t{std::numeric_limits<std::int64_t>::max()};
    if (high == 0) return lowIsNegative ? Value(low) : Value(static_cast<std::int64_t>(low));
    if (high == std::numeric_limits<std::uint64_t>::max() && lowIsNegative) {
      return Value(static_cast<std::int64_t>(low));
    }
    return layout_.fail(offset, Kind::kInvalidValue, "an integer that 64 bits do not hold");
  }

  std::optional<Value> readReal(std::size_t offset, const Head& head) {
    if (head.low != 2 && head.low != 3) return failAsUnknown(offset);
    const std::size_t size = std::size_t{1} << head.low;
    const std::optional<std::string_view> content = layout_.contentAt(offset, head.content, size);
    if (!content) return std::nullopt;
    const std::uint64_t bits = bigEndianNumber(*content);
    if (size == 8) return Value(std::bit_cast<double>(bits));
    return Value(double{std::bit_cast<float>(static_cast<std::uint32_t>(bits))});
  }

  std::optional<Value> readDate(std::size_t offset, const Head& head) {
    if (head.low != 3) return failAsUnknown(offset);
    const std::optional<std::string_view> content = layout_.contentAt(offset, head.content, 8);
    if (!content) return std::nullopt;
    const auto seconds = std::bit_cast<double>(bigEndianNumber(*content));
    // 3.2e11 s are ten thousand years: beyond the years that any other format names.
    if (!(std::fabs(seconds) < 3.2e11)) {
      return layout_.fail(offset, Kind::kInvalidValue,
                          fmt::format("a date {} seconds from 2001", seconds));
    }
    return Value(dateFromReferenceSeconds(seconds));
  }

  std::optional<Value> readData(std::size_t offset, const Head& head) {
    const std::optional<std::string_view> content =
        layout_.contentAt(offset, head.content, head.count);
    if (!content || !countBytes(offset, content->size())) return std::nullopt;
    return Value(Data(*content));
  }

  std::optional<Value> readString(std::size_t offset, const Head& head) {
    std::string unfolded;
    const std::optional<std::string_view> text = readText(offset, head, unfolded);
    if (!text || !countBytes(offset, text->size())) return std::nullopt;
    return text->data() == unfolded.data() ? Value(std::move(unfolded)) : Value(*text);
  }

  /// The text of a string object: a view of the file or, if it had to be converted, of `buffer`.
  std::optional<std::string_view> readText(std::size_t offset, const Head& head,
                                           std::string& buffer) {
    if (head.marker == Layout::kASCII) {
      const std::optional<std::string_view> text =
          layout_.contentAt(offset, head.content, head.count);
      if (!text) return std::nullopt;
      const std::size_t ascii = asciiLength(*text);
      if (ascii == text->size()) return text;
      return layout_.fail(head.content + ascii, Kind::kInvalidText,
                          "a byte that is not ASCII in an ASCII string");
    }
    if (head.count > layout_.bytes().size()) {
      return layout_.contentAt(offset, head.content, head.count);  // fails; no product overflows
    }
    const std::optional<std::string_view> units =
        layout_.contentAt(offset, head.content, head.count * 2);
    if (!units) return std::nullopt;
    UTF16Decoding decoding = decodeUTF16(*units, ByteOrder::kBigEndian);
    if (decoding.errorOffset) {
      return layout_.fail(head.content + *decoding.errorOffset, Kind::kInvalidText,
                          "half of a surrogate pair");
    }
    buffer = std::move(decoding.text);
    return std::string_view(buffer);
  }

  std::optional<Value> readContainer(std::uint64_t reference, std::size_t offset,
                                     const Head& head) {
    if (isOpen_[reference]) {
      return layout_.fail(offset, Kind::kTooDeep,
                          fmt::format("object {} is contained in itself", reference));
    }
    if (depth_ == limits_.depth) {
      return layout_.fail(offset, Kind::kTooDeep,
                          fmt::format("more than {} containers in one another", limits_.depth));
    }
    const bool isDictionary = head.marker == Layout::kDictionary;
    if (head.count > limits_.objects - std::min(objects_, limits_.objects)) {
      return layout_.fail(offset, Kind::kTooManyObjects,
                          fmt::format("more than {} values", limits_.objects));
    }
    const std::optional<std::string_view> references =
        layout_.referencesAt(offset, head.content, isDictionary ? head.count * 2 : head.count);
    if (!references) return std::nullopt;
    // Charged for all at once and before anything is reserved: a small file can nest references to
    // one long array in its own elements.
    objects_ += head.count;
    ++depth_;
    isOpen_[reference] = true;
    std::optional<Value> value =
        isDictionary ? readDictionary(*references, head.count) : readArray(*references, head.count);
    isOpen_[reference] = false;
    --depth_;
    return value;
  }

  std::optional<Value> readArray(std::string_view references, std::uint64_t count) {
    const auto array = std::make_shared<Array>();
    array->elements().reserve(count);
    for (std::uint64_t i = 0; i < count; ++i) {
      std::optional<Value> element = readObject(layout_.referenceAt(references, i));
      if (!element) return std::nullopt;
      array->append(std::move(*element));
    }
    return Value(array);
  }

  std::optional<Value> readDictionary(std::string_view references, std::uint64_t count) {
    const auto dictionary = std::make_shared<Dictionary>();
    dictionary->reserve(count);
    for (std::uint64_t i = 0; i < count; ++i) {
      const std::optional<Key> key = readKey(layout_.referenceAt(references, i));
      if (!key) return std::nullopt;
      std::optional<Value> value = readObject(layout_.referenceAt(references, count + i));
      if (!value) return std::nullopt;
      dictionary->set(*key, std::move(*value));
    }
    return Value(dictionary);
  }

  std::optional<Key> readKey(std::uint64_t reference) {
    const std::optional<std::size_t> offset = layout_.offsetOf(reference);
    if (!offset) return std::nullopt;
    const std::optional<Head> head = layout_.readHead(*offset);
    if (!head) return std::nullopt;
    if (head->marker != Layout::kASCII && head->marker != Layout::kUTF16) {
      return layout_.fail(*offset, Kind::kStructure, "a key that is no string");
    }
    std::string unfolded;
    const std::optional<std::string_view> text = readText(*offset, *head, unfolded);
    if (!text || !countBytes(*offset, text->size())) return std::nullopt;
    return keys_.keyFor(*text);
  }

  bool countBytes(std::size_t offset, std::size_t count) {
    unfoldedBytes_ += count;
    if (unfoldedBytes_ > limits_.bytes) {
      layout_.fail(offset, Kind::kTooLarge,
                   "shared text and data unfold to more bytes than allowed");
    }
    return !layout_.error();
  }

  Layout layout_;
  const PropertyListLimits limits_;

  std::vector<bool> isOpen_;  // the containers on the way from the root to here
  std::size_t depth_ = 0;
  std::size_t objects_ = 1;  // the root
  std::size_t unfoldedBytes_ = 0;
  KeyCache keys_;
};

}  // namespace

Result<Value, PropertyListError> readBinaryPropertyList(std::string_view bytes,
                                                        const PropertyListLimits& limits) {
  if (bytes.size() > limits.bytes) return tooManyBytes(bytes.size(), limits.bytes);
  return BinaryPropertyListReader(bytes, limits).read();
}

}  // namespace vt
