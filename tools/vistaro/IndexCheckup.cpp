#include <fmt/format.h>

#include "platform/Identity.h"
#include "platform/Platform.h"
#include "platform/linux/Environment.h"
#include "vistaro/Checkup.h"
#include "vistaro/IndexState.h"
#include "vistaro/LocalTime.h"

namespace vt::tool {

std::vector<Diagnosis> checkIndex() {
  const Result<Environment, EnvironmentError> environment = readEnvironment();
  if (!environment) return {{Finding::kFault, environment.error().text}};
  const std::string& folder = environment->indexFolder;
  const IndexState state = indexStateAt(folder);
  if (state.isMissing()) {
    return {{Finding::kNote,
             "there is no index: a search walks its folders, about as fast as "
             "find; `vistaro index` makes one"}};
  }
  if (state.error) {
    // Root's index is root's alone, which is as it should be for everybody else.
    const bool isOfRoot = state.error->kind == StoreError::Kind::kNotOurs &&
                          Platform::current().identity().geteuid() != 0;
    return {{isOfRoot ? Finding::kNote : Finding::kFault,
             fmt::format("the index is not used: {}", state.error->reason)}};
  }
  const Manifest& manifest = state.generation->manifest;
  const std::string indexer = state.lock ? "an indexer runs" : "no indexer runs";
  if (!state.isFresh()) {
    return {{Finding::kNote,
             fmt::format("the index at {} is {}, from {}, so searches walk their folders; {}",
                         folder, wordFor(state), localTimeText(manifest.began), indexer)}};
  }
  return {{Finding::kOk,
           fmt::format("the index at {} is fresh: {} files below {} folder{}; {}", folder,
                       state.generation->segment->columns().rowCount(), manifest.roots.size(),
                       manifest.roots.size() == 1 ? "" : "s", indexer)}};
}

}  // namespace vt::tool
