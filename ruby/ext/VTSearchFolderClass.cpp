#include "Classes.h"
#include "Message.h"
#include "scopes/VTSearchFolder.h"

namespace vt::ruby {

void defineVTSearchFolder(VALUE module) {
  using F = VTSearchFolder;
  static constexpr Message kMessages[] = {
      initialiser<&F::initWithTitle>("initWithTitle:"),
      initialiser<&F::initWithDictionary>("initWithDictionary:"),
      classMessage<&F::serializedDataFromFolderArray>("serializedDataFromFolderArray:"),
      classMessage<&F::deserializedFoldersFromStorage>("deserializedFoldersFromStorage:"),
      classMessage<&F::deserializeFolderWithData>("deserializeFolderWithData:"),
      message<&F::isEqual>("isEqual:"),
      message<&F::title>("title"),
      message<&F::setTitle>("setTitle:"),
      message<&F::download>("download"),
      message<&F::setDownload>("setDownload:"),
      message<&F::isDownloadable>("isDownloadable:"),
      message<&F::afpURLforPath>("afpURLforPath:"),
      message<&F::smbURLforPath>("smbURLforPath:windowsClient:"),
      message<&F::paths>("paths"),
      message<&F::serializedData>("serializedData"),
      message<&F::folders>("folders"),
      message<&F::searchFolderForTitle>("searchFolderForTitle:"),
  };
  defineClass<F>(module, "VTSearchFolder", classNamed(module, "VTObject"), kMessages);
}

}  // namespace vt::ruby
