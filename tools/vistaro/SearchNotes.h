#pragma once

#include "platform/MetadataIndex.h"
#include "vistaro/SearchOptions.h"

namespace vt {
class VTUser;
}

namespace vt::tool {

/// Says on standard error what a searcher would else wonder about. `user` is nullptr for whoever
/// runs the command. Throws CommandError when nothing could be searched.
void tellNotes(const SearchOptions& options, const VTUser* user, const MDQueryNotes& notes);

}  // namespace vt::tool
