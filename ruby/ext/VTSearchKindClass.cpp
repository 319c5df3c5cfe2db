#include "Classes.h"
#include "Message.h"
#include "kinds/VTSearchKind.h"

namespace vt::ruby {

void defineVTSearchKind(VALUE module) {
  using K = VTSearchKind;
  static constexpr Message kMessages[] = {
      initialiser<&K::initWithTitle>("initWithTitle:types:"),
      classMessage<&K::allSearchKinds>("allSearchKinds"),
      classMessage<&K::searchableKinds>("searchableKinds"),
      classMessage<&K::kindForContentTypes>("kindForContentTypes:"),
      classMessage<&K::defaultKind>("defaultKind"),
      classMessage<&K::kindWithTitle>("kindWithTitle:"),
      message<&K::titleCompare>("titleCompare:"),
      message<&K::title>("title"),
      message<&K::types, Trait::kReadOnly>("types"),
      message<&K::searchable>("searchable"),
      message<&K::setSearchable>("setSearchable:"),
      message<&K::defaultView>("defaultView"),
      message<&K::setDefaultView>("setDefaultView:"),
      message<&K::sortorder>("sortorder"),
      message<&K::setSortorder>("setSortorder:"),
  };
  defineClass<K>(module, "VTSearchKind", classNamed(module, "VTObject"), kMessages);
}

}  // namespace vt::ruby
