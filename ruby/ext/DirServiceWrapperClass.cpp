#include "Classes.h"
#include "Message.h"
#include "directory/DirServiceWrapper.h"

namespace vt::ruby {

void defineDirServiceWrapper(VALUE module) {
  using W = DirServiceWrapper;
  static constexpr Message kMessages[] = {
      initialiser<&W::init>("init"),
      message<&W::cleanup>("cleanup"),
      message<&W::attributeDataForNodeOfType>(
          "attributeDataForNodeOfType:value:attr1:attr2:attr3:attr4:attr5:attr6:"),
      message<&W::authenticateUser>("authenticateUser:password:"),
  };
  defineClass<W>(module, "DirServiceWrapper", classNamed(module, "VTObject"), kMessages);
}

}  // namespace vt::ruby
