#pragma once

#include <initializer_list>
#include <memory>
#include <utility>
#include <vector>

#include "foundation/VTObject.h"
#include "foundation/Value.h"

namespace vt {

/// A shared list of objects, seen without knowing their class: what access by key hands out.
class ObjectArrayBase : public VTObject {
 public:
  virtual std::size_t size() const = 0;
  /// The element as a value. Throws std::out_of_range past the end.
  virtual Value valueAt(std::size_t index) const = 0;
};

/// An ordered, mutable list of shared objects that is itself shared: a getter hands out the array
/// itself, a setter keeps the array itself, and what one holder appends the others see.
template <class T>
class ObjectArray final : public ObjectArrayBase {
 public:
  ObjectArray() = default;
  explicit ObjectArray(std::vector<std::shared_ptr<T>> elements) : elements_(std::move(elements)) {}

  static std::shared_ptr<ObjectArray> make(
      std::initializer_list<std::shared_ptr<T>> elements = {}) {
    return std::make_shared<ObjectArray>(std::vector<std::shared_ptr<T>>(elements));
  }

  std::vector<std::shared_ptr<T>>& elements() { return elements_; }
  const std::vector<std::shared_ptr<T>>& elements() const { return elements_; }

  std::size_t size() const override { return elements_.size(); }
  bool empty() const { return elements_.empty(); }
  void append(std::shared_ptr<T> element) { elements_.push_back(std::move(element)); }
  /// Throws std::out_of_range past the end.
  const std::shared_ptr<T>& at(std::size_t index) const { return elements_.at(index); }
  Value valueAt(std::size_t index) const override { return Value(elements_.at(index)); }

  auto begin() const { return elements_.begin(); }
  auto end() const { return elements_.end(); }

 private:
  std::vector<std::shared_ptr<T>> elements_;
};

}  // namespace vt
