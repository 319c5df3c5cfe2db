#pragma once

#include <initializer_list>
#include <memory>
#include <optional>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

#include "foundation/Key.h"
#include "foundation/NestedContainers.h"
#include "foundation/Value.h"

namespace vt {

/// A mutable map from text to values that keeps the order in which keys were first set.
///
/// Has identity: it is shared and never copied by accident. Small ones are searched in line; past
/// a handful of entries a hash index is kept, so look-up and setting stay constant in time.
/// Removing a key costs a pass over the entries.
class Dictionary {
 public:
  using Entry = std::pair<Key, Value>;

  Dictionary() = default;
  Dictionary(const Dictionary&) = delete;
  Dictionary& operator=(const Dictionary&) = delete;
  ~Dictionary() {
    NestedContainers nested;
    giveNestedTo(nested);
  }

  static std::shared_ptr<Dictionary> make(
      std::initializer_list<std::pair<std::string_view, Value>> entries = {});

  /// The value under `key`, or nullptr. Valid until the dictionary changes.
  const Value* find(std::string_view key) const;
  Value* find(std::string_view key);
  /// A copy of the value under `key` (containers stay shared); nothing when the key is absent.
  std::optional<Value> get(std::string_view key) const;
  bool contains(std::string_view key) const { return find(key) != nullptr; }

  /// Replaces in place, so a key that is set again keeps its position.
  void set(std::string_view key, Value value);
  void set(const Key& key, Value value);
  /// Appends without looking for an earlier entry: the caller knows that `key` is new.
  void append(const Key& key, Value value);
  /// Whether the key was there.
  bool remove(std::string_view key);

  void reserve(std::size_t entries) { entries_.reserve(entries); }
  std::size_t size() const { return entries_.size(); }
  bool empty() const { return entries_.empty(); }
  const std::vector<Entry>& entries() const { return entries_; }
  auto begin() const { return entries_.begin(); }
  auto end() const { return entries_.end(); }

  /// Equal when both hold equal values under the same keys, in whatever order.
  friend bool operator==(const Dictionary& a, const Dictionary& b);

 private:
  friend class NestedContainers;

  using Index = std::unordered_map<std::string_view, std::size_t>;

  void giveNestedTo(NestedContainers& nested) {
    for (auto& [key, value] : entries_) nested.take(value);
  }
  std::optional<std::size_t> positionOf(std::string_view key) const;

  std::vector<Entry> entries_;
  // Views into the keys, which never move: a Key holds its text by pointer. Absent while small.
  mutable std::unique_ptr<Index> index_;
};

}  // namespace vt
