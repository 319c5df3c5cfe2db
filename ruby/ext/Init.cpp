#include "Classes.h"
#include "Library.h"
#include "Outcome.h"
#include "Ruby.h"
#include "World.h"
#include "Wrapper.h"
#include "platform/Platform.h"
#include "platform/ServiceDiscovery.h"

namespace vt::ruby {
namespace {

template <void (*Work)()>
VALUE callWork(VALUE) {
  Outcome outcome;
  if (waitForLibrary(outcome))
    contain(outcome, [](Outcome& result) {
      const RunningOutcome running(result);
      Work();
    });
  return outcome.finish();
}

void processEvents() {
  needWorld();
  Platform::current().serviceDiscovery().processEvents();
}

// Runs its block once no other thread is in the library, which keeps them out until it ends.
VALUE alone(VALUE) {
  Outcome outcome;
  if (waitForLibrary(outcome)) {
    contain(outcome, [](Outcome& result) {
      const LibraryHold hold;
      result.value = protect([] { return rb_yield(Qnil); });
    });
  }
  return outcome.finish();
}

void define() {
  prepareLibraryLock();
  prepareWrappers();
  const VALUE module = rb_define_module("VistaroRuby");
  defineErrors(module);
  rb_define_singleton_method(module, "processEvents", callWork<processEvents>, 0);
  rb_define_singleton_method(module, "alone", alone, 0);
  rb_define_singleton_method(module, "restart", callWork<restartWorld>, 0);

  defineVTObject(module);
  defineContainers(module);
  defineObserving(module);
  defineVTSettings(module);
  defineDirServiceWrapper(module);
  defineVTUser(module);
  defineVTSearchFolder(module);
  defineVTConcreteSearchFolder(module);
  defineVTSearchFolderGroup(module);
  defineVTSharePoint(module);
  defineVTSearchKind(module);
  defineVTSearchManager(module);
  defineVTSearchResult(module);
  defineVTSearchResultContainer(module);
  defineVTSavedSearch(module);
  defineSSCrypto(module);
  defineCocoaCryptoHashing(module);
  defineBase64(module);
  defineHexDump(module);
  defineNSFileManagerAdditions(module);
  defineTypedSearch(module);
}

}  // namespace
}  // namespace vt::ruby

// Visible, though the rest is hidden: Ruby calls it by this name once the extension is loaded.
// NOLINTNEXTLINE(readability-identifier-naming)
extern "C" __attribute__((visibility("default"))) void Init_VistaroRuby() { vt::ruby::define(); }
