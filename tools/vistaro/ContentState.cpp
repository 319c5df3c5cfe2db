#include "vistaro/ContentState.h"

#include <algorithm>
#include <cstddef>
#include <memory>
#include <utility>

#include "metadata/store/GenerationColumns.h"

namespace vt::tool {
namespace {

// Enough to see what is the matter, and not the log of a year.
constexpr std::size_t kFailuresTold = 20;

StoreFailure look(const std::string& indexFolder, const IndexGeneration& generation,
                  ContentState& state) {
  auto opened = CatalogueReader::open(indexFolder);
  if (!opened) return opened.error();
  CatalogueReader& catalogue = **opened;
  if (StoreFailure failure = catalogue.lookAnew()) return failure;
  const auto counts = catalogue.counts();
  if (!counts) return counts.error();
  const Bitmap dead = columnsOf(generation).dead;
  for (const std::shared_ptr<const Segment>& segment : {generation.segment, generation.delta}) {
    if (!segment) continue;
    auto rows = catalogue.rowsOf(segment->identity(), segment->columns().rowCount());
    if (!rows) return rows.error();
    if (!*rows) continue;
    if (segment == generation.segment) {
      dead.forEach([&](std::size_t row) { (**rows)[row] = kWithoutContent; });
    }
    state.pending += static_cast<std::uint64_t>(std::ranges::count(**rows, kPendingContent));
  }
  auto failures = catalogue.failures(kFailuresTold);
  if (!failures) return failures.error();
  state.failures = std::move(failures).value();
  state.counts = *counts;
  return std::nullopt;
}

}  // namespace

ContentState contentStateOf(const std::string& indexFolder, const IndexGeneration& generation) {
  ContentState state;
  state.error = look(indexFolder, generation, state);
  return state;
}

}  // namespace vt::tool
