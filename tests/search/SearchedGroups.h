#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "scopes/VTConcreteSearchFolder.h"
#include "search/VTSearchManager.h"
#include "search/VTSearchResult.h"
#include "search/VTSearchResultContainer.h"
#include "support/LogCapture.h"

namespace vt {

inline std::shared_ptr<ObjectArray<VTSearchFolder>> theFolder(const std::string& path = "/data") {
  return ObjectArray<VTSearchFolder>::make({VTConcreteSearchFolder::initWithPath(path, "Data")});
}

/// The groups with their hits, as "Images: /a /b".
inline std::vector<std::string> groupsOf(const VTSearchResultContainer& container) {
  std::vector<std::string> lines;
  for (const std::shared_ptr<VTSearchResult>& group : *container.results()) {
    std::string line = *group->title() + ":";
    for (std::uint64_t i = 0; i < group->count(); ++i) line += " " + *group->pathForItemAtIndex(i);
    lines.push_back(line);
  }
  return lines;
}

/// Those of a search for anything in one folder.
inline std::vector<std::string> search(const std::shared_ptr<VTUser>& user = nullptr) {
  const LogCapture log;
  return groupsOf(*VTSearchManager::initWithUser(user)->executeQuery("q", theFolder()));
}

}  // namespace vt
