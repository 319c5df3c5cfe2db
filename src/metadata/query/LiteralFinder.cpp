#include "metadata/query/LiteralFinder.h"

#include <utility>

namespace vt::query {

LiteralFinder::LiteralFinder(std::string needle)
    : needle_(std::move(needle)), borders_(needle_.size() + 1, 0) {
  std::uint32_t border = 0;
  for (std::size_t at = 1; at < needle_.size(); ++at) {
    while (border > 0 && needle_[at] != needle_[border]) border = borders_[border];
    if (needle_[at] == needle_[border]) ++border;
    borders_[at + 1] = border;
  }
}

}  // namespace vt::query
