#include "Classes.h"
#include "Message.h"
#include "scopes/VTConcreteSearchFolder.h"

namespace vt::ruby {

void defineVTConcreteSearchFolder(VALUE module) {
  using F = VTConcreteSearchFolder;
  static constexpr Message kMessages[] = {
      initialiser<&F::initWithTitle>("initWithTitle:"),
      initialiser<&F::initWithPath>("initWithPath:title:"),
      initialiser<&F::initWithDictionary>("initWithDictionary:"),
      message<&F::path>("path"),
      message<&F::setPath>("setPath:"),
      message<&F::sharePointData, Trait::kReadOnly>("sharePointData"),
      message<&F::sharePointName>("sharePointName"),
      message<&F::userDefinedURLPaths>("userDefinedURLPaths"),
      message<&F::setUserDefinedURLPaths>("setUserDefinedURLPaths:"),
      message<&F::afpURLPath>("afpURLPath"),
      message<&F::setAfpURLPath>("setAfpURLPath:"),
      message<&F::smbURLPath>("smbURLPath"),
      message<&F::setSmbURLPath>("setSmbURLPath:"),
      message<&F::afpAvailable>("afpAvailable"),
      message<&F::smbAvailable>("smbAvailable"),
      classMessage<&F::keyPathsForValuesAffectingAfpURLPath>(
          "keyPathsForValuesAffectingAfpURLPath"),
      classMessage<&F::keyPathsForValuesAffectingSmbURLPath>(
          "keyPathsForValuesAffectingSmbURLPath"),
      classMessage<&F::keyPathsForValuesAffectingSharePointName>(
          "keyPathsForValuesAffectingSharePointName"),
  };
  defineClass<F>(module, "VTConcreteSearchFolder", classNamed(module, "VTSearchFolder"), kMessages);
}

}  // namespace vt::ruby
