#pragma once

#include "Ruby.h"

namespace vt::ruby {

// Each defines one class or module below `module`. Parents come first: see Init.cpp.

void defineVTObject(VALUE module);
void defineContainers(VALUE module);
void defineObserving(VALUE module);

void defineVTSettings(VALUE module);
void defineDirServiceWrapper(VALUE module);
void defineVTUser(VALUE module);
void defineVTSearchFolder(VALUE module);
void defineVTConcreteSearchFolder(VALUE module);
void defineVTSearchFolderGroup(VALUE module);
void defineVTSharePoint(VALUE module);
void defineVTSearchKind(VALUE module);
void defineVTSearchManager(VALUE module);
void defineVTSearchResult(VALUE module);
void defineVTSearchResultContainer(VALUE module);
void defineVTSavedSearch(VALUE module);
void defineSSCrypto(VALUE module);

void defineCocoaCryptoHashing(VALUE module);
void defineBase64(VALUE module);
void defineHexDump(VALUE module);
void defineNSFileManagerAdditions(VALUE module);
void defineTypedSearch(VALUE module);

/// A class that is defined already.
inline VALUE classNamed(VALUE module, const char* name) {
  return rb_const_get(module, rb_intern(name));
}

}  // namespace vt::ruby
