#include "metadata/store/TextColumn.h"

namespace vt {

std::size_t TextColumn::numberAt(std::size_t offset, std::size_t from) const {
  // In steps that double, since the next text that is looked for is mostly near.
  std::size_t step = 1;
  while (from + step < offsets_.size() && offsets_[from + step] <= offset) {
    from += step;
    step *= 2;
  }
  const std::size_t end = std::min(from + step, offsets_.size());
  const auto after = std::upper_bound(offsets_.begin() + static_cast<std::ptrdiff_t>(from) + 1,
                                      offsets_.begin() + static_cast<std::ptrdiff_t>(end), offset);
  return static_cast<std::size_t>(after - offsets_.begin()) - 1;
}

bool TextColumn::isWhole() const {
  if (offsets_.empty() || offsets_.front() != 0 || offsets_.back() != text_.size()) return false;
  for (std::size_t number = 0; number < size(); ++number) {
    // The first end from where a text begins is where the next one begins.
    const std::size_t end = text_.find(kEnd, offsets_[number]);
    if (end == std::string_view::npos || offsets_[number + 1] != end + 1) return false;
  }
  return true;
}

}  // namespace vt
