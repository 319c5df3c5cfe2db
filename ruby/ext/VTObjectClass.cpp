#include "Classes.h"
#include "Message.h"

namespace vt::ruby {

void defineVTObject(VALUE module) {
  static constexpr Message kMessages[] = {
      message<&VTObject::valueForKey>("valueForKey:"),
      message<&VTObject::setValue>("setValue:forKey:"),
  };
  defineClass<VTObject>(module, "VTObject", rb_cObject, kMessages);
}

}  // namespace vt::ruby
