#pragma once

#include <cstddef>
#include <functional>
#include <optional>
#include <string_view>
#include <vector>

#include "metadata/types/ContentType.h"

namespace vt {

/// Finds types by texts, which it borrows, in one piece of memory: each program reads the table of
/// types at its start.
class TypeByText {
 public:
  /// `most` texts are going to be added, at the most.
  explicit TypeByText(std::size_t most = 0) {
    std::size_t places = 1;
    while (places < 2 * most + 1) places *= 2;
    places_.resize(places);
  }

  /// Keeps what is there already, and is then false.
  bool add(std::string_view text, ContentTypeId type) {
    Place& place = places_[placeOf(text)];
    if (place.isTaken) return false;
    place = {text, type, /*isTaken=*/true};
    return true;
  }

  std::optional<ContentTypeId> find(std::string_view text) const {
    const Place& place = places_[placeOf(text)];
    return place.isTaken ? std::optional(place.type) : std::nullopt;
  }

 private:
  struct Place {
    std::string_view text;
    ContentTypeId type = 0;
    bool isTaken = false;
  };

  // Where the text is, or is to be put: half of the places are free, so there is one.
  std::size_t placeOf(std::string_view text) const {
    const std::size_t mask = places_.size() - 1;
    std::size_t at = std::hash<std::string_view>()(text) & mask;
    while (places_[at].isTaken && places_[at].text != text) at = (at + 1) & mask;
    return at;
  }

  std::vector<Place> places_;  // a power of two
};

}  // namespace vt
