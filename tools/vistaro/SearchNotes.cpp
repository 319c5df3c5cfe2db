#include "vistaro/SearchNotes.h"

#include <fmt/format.h>

#include <string>

#include "directory/VTUser.h"
#include "platform/Identity.h"
#include "platform/Platform.h"
#include "vistaro/CommandError.h"
#include "vistaro/Terminal.h"

namespace vt::tool {

void tellNotes(const SearchOptions& options, const VTUser* user, const MDQueryNotes& notes) {
  if (notes.hasNoAccount) {
    const std::uint32_t uid = user ? user->uid() : Platform::current().identity().geteuid();
    throw CommandError{kFailure,
                       fmt::format("nothing can be searched with the rights of user id {}: it has "
                                   "no account here, or may not be taken on",
                                   uid)};
  }
  const auto unusable = [&](const std::string& path) {
    return fmt::format("{}: no such folder, or {} may not search it", printable(path),
                       options.user ? printable(*options.user) : "you");
  };
  if (!options.paths.empty() && notes.unusableScopes.size() == options.paths.size()) {
    for (std::size_t i = 1; i < options.paths.size(); ++i) {
      printError(unusable(notes.unusableScopes[i - 1]));
    }
    throw CommandError{kUsage, unusable(notes.unusableScopes.back())};
  }
  for (const std::string& path : notes.unusableScopes) printError("note: " + unusable(path));
  for (const std::string& name : notes.unknownAttributes) {
    printError(fmt::format("note: no file has an attribute called {}", printable(name)));
  }
  if (notes.filesNotLookedInto > 0) {
    printError(
        fmt::format("note: {} of the files were not looked into yet; what is in them is not "
                    "found",
                    notes.filesNotLookedInto));
  }
  if (!notes.walkedBecause.empty()) {
    printError("note: the files were walked, since " + printable(notes.walkedBecause));
  }
}

}  // namespace vt::tool
