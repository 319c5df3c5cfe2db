#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <string>

#include "directory/VTUser.h"
#include "foundation/ObjectArray.h"
#include "kinds/VTSearchKind.h"
#include "scopes/VTSearchFolder.h"
#include "vistaro/SearchOptions.h"

namespace vt::tool {

// What the options of a search choose. Each throws CommandError for what cannot be.

/// The query to run: the words as they are when they are one, else a query made of them.
std::string queryFor(const SearchOptions& options);

/// On whose behalf to search; nullptr for whoever runs the command.
std::shared_ptr<VTUser> userFor(const SearchOptions& options);

/// The folders to search: those named by path, the one named by title, or all of the settings.
std::shared_ptr<ObjectArray<VTSearchFolder>> foldersFor(const SearchOptions& options,
                                                        const VTUser* user);

/// The kind to show; nullptr for all.
std::shared_ptr<VTSearchKind> kindFor(const SearchOptions& options);

/// The attribute to sort by; nothing for the order of the search.
std::optional<std::string> sortAttributeFor(const SearchOptions& options);

/// Items of each group on a page; 0 shows all.
std::size_t perPageFor(const SearchOptions& options, const VTUser* user);

}  // namespace vt::tool
