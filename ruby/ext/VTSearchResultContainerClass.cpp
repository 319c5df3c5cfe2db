#include "Classes.h"
#include "Message.h"
#include "directory/VTUser.h"
#include "search/VTSearchResult.h"
#include "search/VTSearchResultContainer.h"

namespace vt::ruby {

void defineVTSearchResultContainer(VALUE module) {
  using C = VTSearchResultContainer;
  static constexpr Message kMessages[] = {
      initialiser<&C::initWithUser>("initWithUser:results:"),
      message<&C::results>("results"),
      message<&C::count>("count"),
      message<&C::resultAtIndex>("resultAtIndex:"),
      message<&C::resultWithGroupName>("resultWithGroupName:"),
      message<&C::removeResultsWithContentType>("removeResultsWithContentType:"),
  };
  defineClass<C>(module, "VTSearchResultContainer", classNamed(module, "VTObject"), kMessages);
}

}  // namespace vt::ruby
