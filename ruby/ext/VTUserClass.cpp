#include "Classes.h"
#include "Message.h"
#include "directory/DirServiceWrapper.h"
#include "directory/VTUser.h"
#include "kinds/VTSearchKind.h"
#include "platform/Platform.h"
#include "platform/linux/AccountRecords.h"
#include "saved/VTSavedSearch.h"
#include "scopes/VTSearchFolder.h"
#include "search/ItemContent.h"

namespace vt::ruby {
namespace {

using U = VTUser;
using ByName = std::shared_ptr<U> (*)(const std::string&);
using ByPassword = std::shared_ptr<U> (*)(const std::string&, const std::string&);

// The number of an open file, which the caller makes an IO of; nil when there is nothing to read.
std::optional<std::int64_t> contentDescriptorForPath(const U& user, const std::string& path) {
  return openItemContent(&user, path);
}

// Whether the account may still log in, as far as the system tells without its password.
bool accountIsOpen(const U& user) {
  return passwordsUnder(Platform::current().systemPath(""))->isOpen(user.username());
}

// Whether `password` is that of the account called `name` and the account may be used now: what
// userWithName:password: asks. That may take long, and others call into the library meanwhile: the
// check is an object of its own, and looks at files or starts a program.
bool passwordIsRight(const std::string& password, const std::string& name) {
  const std::shared_ptr<const PasswordCheck> check =
      passwordsUnder(Platform::current().systemPath(""));
  auto verify = [&] { return check->verify(name, password); };
  return callWithoutInterpreterLock<LibraryMeanwhile::kIsFree>(verify);
}

}  // namespace

void defineVTUser(VALUE module) {
  static constexpr Message kMessages[] = {
      classMessage<static_cast<ByName>(&U::userWithName)>("userWithName:"),
      classMessage<static_cast<ByPassword>(&U::userWithName), Trait::kReleasesLock>(
          "userWithName:password:"),
      classMessage<passwordIsRight>("passwordIsRight:forName:"),
      initialiser<&U::initWithUsername>("initWithUsername:fromDirectoryService:"),
      message<&U::uid>("uid"),
      message<&U::gid>("gid"),
      message<&U::username>("username"),
      message<&U::fullname>("fullname"),
      message<&U::administrator>("administrator"),
      message<&U::login>("login"),
      message<&U::logout>("logout"),
      message<&U::userStorage>("userStorage"),
      message<&U::resultsPerPage>("resultsPerPage"),
      message<&U::setResultsPerPage>("setResultsPerPage:"),
      message<&U::defaultSearchFolder>("defaultSearchFolder"),
      message<&U::setDefaultSearchFolder>("setDefaultSearchFolder:"),
      message<&U::defaultSearchKind>("defaultSearchKind"),
      message<&U::setDefaultSearchKind>("setDefaultSearchKind:"),
      message<&U::defaultAction>("defaultAction"),
      message<&U::setDefaultAction>("setDefaultAction:"),
      message<&U::addSavedSearch>("addSavedSearch:"),
      message<&U::removeSavedSearch>("removeSavedSearch:"),
      message<&U::savedSearches>("savedSearches"),
      message<accountIsOpen>("accountIsOpen"),
      message<contentDescriptorForPath>("contentDescriptorForPath:"),
      message<&U::accessAllowedToPath>("accessAllowedToPath:"),
      message<&U::accessAllowedToFileIntern>("accessAllowedToFileIntern:"),
  };
  defineClass<U>(module, "VTUser", classNamed(module, "VTObject"), kMessages);
}

}  // namespace vt::ruby
