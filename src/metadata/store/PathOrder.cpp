#include "metadata/store/PathOrder.h"

#include <algorithm>
#include <utility>

namespace vt {
namespace {

/// Whether the bytes of `a` and a slash are before those of `b` and a slash.
bool isBeforeAsStep(std::string_view a, std::string_view b) {
  const std::size_t common = std::min(a.size(), b.size());
  const int order = a.substr(0, common).compare(b.substr(0, common));
  if (order != 0) return order < 0;
  if (a.size() == b.size()) return false;
  const auto next = [common](std::string_view text) {
    return static_cast<unsigned char>(text.size() > common ? text[common] : '/');
  };
  return next(a) < next(b);
}

/// Whether a path that ends with `name` is before one that goes on below the folder `step`, all
/// before both being the same.
bool isBeforeStep(std::string_view name, std::string_view step) {
  const std::size_t common = std::min(name.size(), step.size());
  const int order = name.substr(0, common).compare(step.substr(0, common));
  if (order != 0) return order < 0;
  return name.size() <= step.size() || static_cast<unsigned char>(name[common]) < '/';
}

}  // namespace

PathOrder::PathOrder(std::vector<std::uint32_t> parents, NameOf nameOf)
    : parents_(std::move(parents)), places_(parents_.size()), lastPlacesBelow_(parents_.size()) {
  const auto count = static_cast<std::uint32_t>(parents_.size());
  // Folders grouped by their parents, the groups in order: a counting sort.
  std::vector<std::uint32_t> starts(count + 1, 0);
  for (std::uint32_t folder = 1; folder < count; ++folder) ++starts[parents_[folder] + 1];
  for (std::uint32_t folder = 0; folder < count; ++folder) starts[folder + 1] += starts[folder];
  std::vector<std::uint32_t> children(count == 0 ? 0 : count - 1);
  {
    std::vector<std::uint32_t> next = starts;
    for (std::uint32_t folder = 1; folder < count; ++folder) {
      children[next[parents_[folder]]++] = folder;
    }
  }
  std::vector<std::uint32_t> belowCounts(count, 1);
  for (std::uint32_t folder = count; folder-- > 1;) {
    belowCounts[parents_[folder]] += belowCounts[folder];
  }
  // Parents first, so that each finds its own place set.
  for (std::uint32_t folder = 0; folder < count; ++folder) {
    lastPlacesBelow_[folder] = places_[folder] + belowCounts[folder] - 1;
    const auto first = children.begin() + starts[folder];
    const auto last = children.begin() + starts[folder + 1];
    std::sort(first, last, [&](std::uint32_t a, std::uint32_t b) {
      return isBeforeAsStep(nameOf(a), nameOf(b));
    });
    std::uint32_t place = places_[folder] + 1;
    for (auto child = first; child != last; ++child) {
      places_[*child] = place;
      place += belowCounts[*child];
    }
  }
}

bool PathOrder::isBefore(std::uint32_t folder, std::string_view name, std::uint32_t otherFolder,
                         std::string_view otherName, NameOf nameOf) const {
  if (folder == otherFolder) return name < otherName;
  if (isBelow(otherFolder, folder)) {
    return isBeforeStep(name, nameOf(stepTowards(otherFolder, folder)));
  }
  if (isBelow(folder, otherFolder)) {
    return !isBeforeStep(otherName, nameOf(stepTowards(folder, otherFolder)));
  }
  return places_[folder] < places_[otherFolder];
}

std::uint32_t PathOrder::stepTowards(std::uint32_t folder, std::uint32_t ancestor) const {
  while (parents_[folder] != ancestor) folder = parents_[folder];
  return folder;
}

}  // namespace vt
