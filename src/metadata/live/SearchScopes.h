#pragma once

#include <string>
#include <vector>

#include "metadata/live/Descriptor.h"
#include "metadata/rights/AccessJudge.h"

namespace vt {

/// A folder to search below, which is there and which the account may reach and search.
struct SearchScope {
  std::string given;          ///< as the caller named it
  std::string path;           ///< hits are called by it
  std::string canonicalPath;  ///< tells scopes apart
  Descriptor folder;          ///< of O_PATH
};

struct SearchScopes {
  std::vector<SearchScope> usable;  ///< each canonical path once
  /// As they were given: those that are relative, missing, no folders, or not to be reached or
  /// searched by the account.
  std::vector<std::string> unusable;
};

/// Finds the folders at `paths`, which may lead through links, as the kernel would for the account.
SearchScopes findSearchScopes(const std::vector<std::string>& paths, const AccessJudge& judge);

}  // namespace vt
