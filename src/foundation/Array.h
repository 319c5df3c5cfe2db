#pragma once

#include <initializer_list>
#include <memory>
#include <utility>
#include <vector>

#include "foundation/NestedContainers.h"
#include "foundation/Value.h"

namespace vt {

/// An ordered, mutable list of values. Has identity: it is shared and never copied by accident.
class Array {
 public:
  Array() = default;
  explicit Array(std::vector<Value> elements) : elements_(std::move(elements)) {}
  Array(const Array&) = delete;
  Array& operator=(const Array&) = delete;
  ~Array() {
    NestedContainers nested;
    for (Value& element : elements_) nested.take(element);
  }

  static std::shared_ptr<Array> make(std::initializer_list<Value> elements = {}) {
    return std::make_shared<Array>(std::vector<Value>(elements));
  }

  std::vector<Value>& elements() { return elements_; }
  const std::vector<Value>& elements() const { return elements_; }

  std::size_t size() const { return elements_.size(); }
  bool empty() const { return elements_.empty(); }
  void append(Value value) { elements_.push_back(std::move(value)); }
  /// Throws std::out_of_range past the end.
  const Value& at(std::size_t index) const { return elements_.at(index); }

  auto begin() const { return elements_.begin(); }
  auto end() const { return elements_.end(); }

  friend bool operator==(const Array& a, const Array& b) { return a.elements_ == b.elements_; }

 private:
  std::vector<Value> elements_;
};

}  // namespace vt
