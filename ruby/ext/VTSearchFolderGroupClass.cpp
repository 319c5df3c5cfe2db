#include <algorithm>

#include "Classes.h"
#include "Message.h"
#include "scopes/VTSearchFolderGroup.h"

namespace vt::ruby {
namespace {

bool reaches(const VTSearchFolder& from, const VTSearchFolder& to) {
  if (&from == &to) return true;
  const std::shared_ptr<ObjectArray<VTSearchFolder>> members = from.folders();
  return members &&
         std::ranges::any_of(*members, [&](const std::shared_ptr<VTSearchFolder>& member) {
           return reaches(*member, to);
         });
}

// Whatever asks a group that holds itself goes on until the stack is used up.
void addFolder(VTSearchFolderGroup& group, const std::shared_ptr<VTSearchFolder>& folder) {
  if (folder && reaches(*folder, group)) {
    throw InvalidArgumentError("a search folder group cannot hold itself");
  }
  group.addFolder(folder);
}

}  // namespace

void defineVTSearchFolderGroup(VALUE module) {
  using G = VTSearchFolderGroup;
  static constexpr Message kMessages[] = {
      initialiser<&G::initWithTitle>("initWithTitle:"),
      initialiser<&G::initWithDictionary>("initWithDictionary:"),
      message<addFolder>("addFolder:"),
      message<&G::removeFolder>("removeFolder:"),
  };
  defineClass<G>(module, "VTSearchFolderGroup", classNamed(module, "VTSearchFolder"), kMessages);
}

}  // namespace vt::ruby
