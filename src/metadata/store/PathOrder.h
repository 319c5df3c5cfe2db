#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

#include "foundation/FunctionRef.h"

namespace vt {

/// Orders files by the bytes of their paths without making the paths.
///
/// Each folder gets its place among all folders by the bytes of its path and a slash behind it.
/// What is in a folder and below it then is next to each other, and two files mostly differ by the
/// places of their folders alone. Comparing names folder by folder would not do: "a-b" is before
/// what is in "a", since a hyphen is before a slash.
class PathOrder {
 public:
  /// The name of a folder, by number.
  using NameOf = FunctionRef<std::string_view(std::uint32_t)>;

  /// `parents` has those of all folders, each before its own; the first is "/". Takes n log n time
  /// in the number of folders.
  PathOrder(std::vector<std::uint32_t> parents, NameOf nameOf);

  /// Whether the path of `name` in `folder` is before that of `otherName` in `otherFolder`.
  bool isBefore(std::uint32_t folder, std::string_view name, std::uint32_t otherFolder,
                std::string_view otherName, NameOf nameOf) const;

 private:
  bool isBelow(std::uint32_t folder, std::uint32_t ancestor) const {
    return places_[folder] > places_[ancestor] && places_[folder] <= lastPlacesBelow_[ancestor];
  }
  /// The folder in `ancestor` that `folder` is, or is below of.
  std::uint32_t stepTowards(std::uint32_t folder, std::uint32_t ancestor) const;

  std::vector<std::uint32_t> parents_;
  std::vector<std::uint32_t> places_;           // by folder
  std::vector<std::uint32_t> lastPlacesBelow_;  // by folder: of it and all below it
};

}  // namespace vt
