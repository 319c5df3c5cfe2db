#include <chrono>
#include <stdexcept>

#include "Classes.h"
#include "Message.h"
#include "directory/VTUser.h"
#include "scopes/VTSearchFolder.h"
#include "search/VTSearchManager.h"
#include "search/VTSearchResult.h"
#include "search/VTSearchResultContainer.h"

namespace vt::ruby {
namespace {

std::shared_ptr<Array> arrayOf(const std::vector<std::string>& texts) {
  auto array = Array::make();
  for (const std::string& text : texts) array->append(text);
  return array;
}

// "offset" in bytes, "expected" and "text"; nil when the last query was not rejected.
std::shared_ptr<Dictionary> lastRejection(const VTSearchManager& manager) {
  const std::optional<MDQueryRejection>& rejection = manager.lastRejection();
  if (!rejection) return nullptr;
  return Dictionary::make({{"offset", rejection->offset},
                           {"expected", rejection->expected},
                           {"text", rejection->text}});
}

std::shared_ptr<Dictionary> lastNotes(const VTSearchManager& manager) {
  const MDQueryNotes& notes = manager.lastNotes();
  return Dictionary::make({{"unknownAttributes", arrayOf(notes.unknownAttributes)},
                           {"unusableScopes", arrayOf(notes.unusableScopes)},
                           {"hasNoAccount", notes.hasNoAccount},
                           {"walkWasGivenUp", notes.walkWasGivenUp}});
}

void setLongestWalkSeconds(VTSearchManager& manager, double seconds) {
  constexpr double kMost = 1e9;  // more than fits into a count of milliseconds means nothing
  if (!(seconds >= 0 && seconds <= kMost)) throw std::invalid_argument("no such time");
  manager.setLongestWalk(std::chrono::duration_cast<std::chrono::milliseconds>(
      std::chrono::duration<double>(seconds)));
}

}  // namespace

void defineVTSearchManager(VALUE module) {
  using M = VTSearchManager;
  static constexpr Message kMessages[] = {
      initialiser<&M::initWithUser>("initWithUser:"),
      message<&M::executeQuery, Trait::kReleasesLock>("executeQuery:forSearchFolders:"),
      message<lastRejection>("lastRejection"),
      message<lastNotes>("lastNotes"),
      message<setLongestWalkSeconds>("setLongestWalkSeconds:"),
      message<&M::lastSearchWasCut>("lastSearchWasCut"),
      message<&M::queryRequestAttributeKeys>("queryRequestAttributeKeys"),
      message<&M::querySortAttributeKeys>("querySortAttributeKeys"),
      message<&M::groupAttributeName>("groupAttributeName"),
  };
  defineClass<M>(module, "VTSearchManager", classNamed(module, "VTObject"), kMessages);
}

}  // namespace vt::ruby
