#pragma once

#include <concepts>
#include <functional>
#include <memory>
#include <string>
#include <string_view>

namespace vt {

/// A dictionary key: immutable UTF-8 text that copies by reference.
///
/// Code that builds many dictionaries with the same keys (one record per hit) makes its keys once
/// and copies them, so a key costs a counter and comparing equal keys costs a pointer.
class Key {
 public:
  explicit Key(std::string_view text) : text_(std::make_shared<const std::string>(text)) {}

  const std::string& str() const { return *text_; }

  friend bool operator==(const Key& a, const Key& b) {
    return a.text_ == b.text_ || *a.text_ == *b.text_;
  }
  friend bool operator==(const Key& a, std::string_view b) { return *a.text_ == b; }

 private:
  std::shared_ptr<const std::string> text_;
};

}  // namespace vt
