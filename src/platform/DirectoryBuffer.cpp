#include "platform/DirectoryBuffer.h"

#include <algorithm>
#include <concepts>
#include <cstring>
#include <limits>

namespace vt {
namespace {

class Writer {
 public:
  explicit Writer(DataBuffer& buffer) : buffer_(buffer) {}

  void number(std::unsigned_integral auto value) { raw(&value, sizeof(value)); }
  void text(std::string_view text) { raw(text.data(), text.size()); }

 private:
  void raw(const void* bytes, std::size_t size) {
    if (size == 0) return;
    std::memcpy(buffer_.bytes.data() + buffer_.length, bytes, size);
    buffer_.length += static_cast<std::uint32_t>(size);
  }

  DataBuffer& buffer_;
};

class Reader {
 public:
  explicit Reader(const DataBuffer& buffer)
      : bytes_(buffer.bytes), end_(std::min<std::size_t>(buffer.length, buffer.bytes.size())) {}

  bool atEnd() const { return position_ == end_; }

  template <std::unsigned_integral T>
  bool number(T& value) {
    if (end_ - position_ < sizeof(T)) return false;
    std::memcpy(&value, bytes_.data() + position_, sizeof(T));
    position_ += sizeof(T);
    return true;
  }

  bool text(std::string& text, std::size_t size) {
    if (end_ - position_ < size) return false;
    const auto first = bytes_.begin() + static_cast<std::ptrdiff_t>(position_);
    text.assign(first, first + static_cast<std::ptrdiff_t>(size));
    position_ += size;
    return true;
  }

 private:
  const std::vector<std::uint8_t>& bytes_;
  std::size_t end_;
  std::size_t position_ = 0;
};

bool readAttribute(Reader& reader, DirectoryAttribute& attribute) {
  std::uint32_t typeLength = 0;
  std::uint32_t valueCount = 0;
  if (!reader.number(typeLength) || !reader.number(valueCount)) return false;
  if (!reader.text(attribute.type, typeLength)) return false;
  for (std::uint32_t i = 0; i < valueCount; ++i) {
    std::uint32_t length = 0;
    if (!reader.number(length) || !reader.text(attribute.values.emplace_back(), length)) {
      return false;
    }
  }
  return true;
}

bool readRecord(Reader& reader, DirectoryRecord& record) {
  std::uint16_t typeLength = 0;
  std::uint16_t nameLength = 0;
  std::uint32_t attributeCount = 0;
  if (!reader.number(typeLength) || !reader.number(nameLength) || !reader.number(attributeCount)) {
    return false;
  }
  if (!reader.text(record.type, typeLength) || !reader.text(record.name, nameLength)) return false;
  for (std::uint32_t i = 0; i < attributeCount; ++i) {
    if (!readAttribute(reader, record.attributes.emplace_back())) return false;
  }
  return true;
}

}  // namespace

std::size_t encodedSize(const DirectoryRecord& record) {
  std::size_t size = 8 + record.type.size() + record.name.size();
  for (const DirectoryAttribute& attribute : record.attributes) {
    size += 8 + attribute.type.size();
    for (const std::string& value : attribute.values) size += 4 + value.size();
  }
  return size;
}

bool appendRecord(DataBuffer& buffer, const DirectoryRecord& record) {
  constexpr std::size_t kLongest = std::numeric_limits<std::uint16_t>::max();
  if (record.type.size() > kLongest || record.name.size() > kLongest) return false;
  if (encodedSize(record) > buffer.capacity - buffer.length) return false;

  Writer writer(buffer);
  writer.number(static_cast<std::uint16_t>(record.type.size()));
  writer.number(static_cast<std::uint16_t>(record.name.size()));
  writer.number(static_cast<std::uint32_t>(record.attributes.size()));
  writer.text(record.type);
  writer.text(record.name);
  for (const DirectoryAttribute& attribute : record.attributes) {
    writer.number(static_cast<std::uint32_t>(attribute.type.size()));
    writer.number(static_cast<std::uint32_t>(attribute.values.size()));
    writer.text(attribute.type);
    for (const std::string& value : attribute.values) {
      writer.number(static_cast<std::uint32_t>(value.size()));
      writer.text(value);
    }
  }
  return true;
}

std::optional<DirectoryRecord> recordAt(const DataBuffer& buffer, std::uint32_t index) {
  Reader reader(buffer);
  for (std::uint32_t i = 1; i <= index; ++i) {
    DirectoryRecord record;
    if (!readRecord(reader, record)) return std::nullopt;
    if (i == index) return record;
  }
  return std::nullopt;
}

std::optional<std::vector<std::string>> textsIn(const DataBuffer& buffer) {
  Reader reader(buffer);
  std::vector<std::string> texts;
  while (!reader.atEnd()) {
    std::uint32_t length = 0;
    if (!reader.number(length) || !reader.text(texts.emplace_back(), length)) return std::nullopt;
  }
  return texts;
}

}  // namespace vt
