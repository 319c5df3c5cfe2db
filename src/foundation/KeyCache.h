#pragma once

#include <array>
#include <functional>
#include <optional>
#include <string_view>

#include "foundation/Key.h"

namespace vt {

/// Hands out one shared Key for the same text while a property list is read: the dictionaries of a
/// list mostly carry the same few keys. Two keys may fall into one place; the later one then stays.
class KeyCache {
 public:
  Key keyFor(std::string_view text) {
    std::optional<Key>& place = places_[std::hash<std::string_view>{}(text) % kPlaces];
    if (!place || *place != text) place.emplace(text);
    return *place;
  }

 private:
  static constexpr std::size_t kPlaces = 256;

  std::array<std::optional<Key>, kPlaces> places_;
};

}  // namespace vt
