#pragma once

#include <limits>
#include <stdexcept>
#include <string>

#include "Corpus.h"
#include "Report.h"
#include "directory/VTUser.h"
#include "scopes/VTConcreteSearchFolder.h"
#include "search/VTSearchManager.h"
#include "search/VTSearchResultContainer.h"

namespace vt {

/// How long one search of the tree takes as the web page makes it, the records of up to 10,000 hits
/// built, on behalf of a user or, for nullptr, of everybody; infinity when it finds nothing. Throws
/// when it walks.
inline double secondsOfSearch(const Corpus& corpus, const std::string& query, const char* user) {
  const auto manager =
      VTSearchManager::initWithUser(user != nullptr ? VTUser::userWithName(user) : nullptr);
  const auto folders = ObjectArray<VTSearchFolder>::make(
      {VTConcreteSearchFolder::initWithPath(corpus.tree, "Corpus")});
  std::size_t groups = 0;
  const double seconds =
      secondsOf([&] { groups = manager->executeQuery(query, folders)->count(); });
  if (!manager->lastNotes().walkedBecause.empty()) {
    throw std::runtime_error("walked, since " + manager->lastNotes().walkedBecause);
  }
  return groups > 0 ? seconds : std::numeric_limits<double>::infinity();
}

}  // namespace vt
