#include "Classes.h"
#include "Message.h"
#include "scopes/VTSharePoint.h"

namespace vt::ruby {

void defineVTSharePoint(VALUE module) {
  static constexpr Message kMessages[] = {
      classMessage<&VTSharePoint::allSharePoints>("allSharePoints"),
  };
  defineClass<VTSharePoint>(module, "VTSharePoint", classNamed(module, "VTObject"), kMessages);
}

}  // namespace vt::ruby
