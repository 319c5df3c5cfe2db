#include "foundation/Dictionary.h"

namespace vt {
namespace {

// Up to here a walk over the entries beats hashing the key.
constexpr std::size_t kLargestWithoutIndex = 8;

}  // namespace

std::shared_ptr<Dictionary> Dictionary::make(
    std::initializer_list<std::pair<std::string_view, Value>> entries) {
  auto dictionary = std::make_shared<Dictionary>();
  for (const auto& [key, value] : entries) dictionary->set(key, value);
  return dictionary;
}

std::optional<std::size_t> Dictionary::positionOf(std::string_view key) const {
  if (entries_.size() <= kLargestWithoutIndex) {
    for (std::size_t i = 0; i < entries_.size(); ++i) {
      if (entries_[i].first == key) return i;
    }
    return std::nullopt;
  }
  if (!index_) {
    index_ = std::make_unique<Index>();
    index_->reserve(entries_.size() * 2);
    for (std::size_t i = 0; i < entries_.size(); ++i) index_->emplace(entries_[i].first.str(), i);
  }
  const auto found = index_->find(key);
  if (found == index_->end()) return std::nullopt;
  return found->second;
}

const Value* Dictionary::find(std::string_view key) const {
  const std::optional<std::size_t> position = positionOf(key);
  return position ? &entries_[*position].second : nullptr;
}

Value* Dictionary::find(std::string_view key) {
  const std::optional<std::size_t> position = positionOf(key);
  return position ? &entries_[*position].second : nullptr;
}

std::optional<Value> Dictionary::get(std::string_view key) const {
  const Value* value = find(key);
  return value ? std::optional<Value>(*value) : std::nullopt;
}

void Dictionary::set(std::string_view key, Value value) {
  if (Value* present = find(key)) {
    *present = std::move(value);
  } else {
    append(Key(key), std::move(value));
  }
}

void Dictionary::set(const Key& key, Value value) {
  if (Value* present = find(key.str())) {
    *present = std::move(value);
  } else {
    append(key, std::move(value));
  }
}

void Dictionary::append(const Key& key, Value value) {
  entries_.emplace_back(key, std::move(value));
  if (index_) index_->emplace(entries_.back().first.str(), entries_.size() - 1);
}

bool Dictionary::remove(std::string_view key) {
  const std::optional<std::size_t> position = positionOf(key);
  if (!position) return false;
  index_.reset();  // positions behind the entry change; the next look-up makes the index anew
  entries_.erase(entries_.begin() + static_cast<std::ptrdiff_t>(*position));
  return true;
}

bool operator==(const Dictionary& a, const Dictionary& b) {
  if (a.size() != b.size()) return false;
  for (const auto& [key, value] : a) {
    const Value* other = b.find(key.str());
    if (!other || !(*other == value)) return false;
  }
  return true;
}

}  // namespace vt
