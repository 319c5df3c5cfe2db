#pragma once

#include <string.h>  // explicit_bzero

#include <optional>
#include <utility>

#include "foundation/Data.h"

namespace vt {

/// Bytes that are wiped from memory when they are replaced or go away.
class SecureBytes {
 public:
  SecureBytes() = default;
  SecureBytes(const SecureBytes&) = delete;
  SecureBytes& operator=(const SecureBytes&) = delete;
  ~SecureBytes() { wipe(); }

  const std::optional<Data>& data() const { return data_; }
  bool isEmpty() const { return !data_ || data_->empty(); }

  void set(std::optional<Data> data) {
    wipe();
    data_ = std::move(data);
  }

 private:
  void wipe() {
    if (!isEmpty()) explicit_bzero(data_->bytes().data(), data_->size());
  }

  std::optional<Data> data_;
};

}  // namespace vt
