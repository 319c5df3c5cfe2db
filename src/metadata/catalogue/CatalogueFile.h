#pragma once

#include <string>

#include "metadata/database/Database.h"

namespace vt {

/// What the file of a catalogue is called in the folder of the index.
inline constexpr const char* kCatalogueName = "catalogue";

/// Opens the catalogue of the index at `indexFolder` for its one writer, who holds the lock of the
/// index. Makes it where it is missing, and brings one of an earlier version up to this one.
/// kOtherKind: it is of a later version, or another program's. kDamaged: only making it anew helps.
Result<Database, StoreError> openCatalogueForWriting(const std::string& indexFolder);

/// Opens it to be read, as many as like to. kOtherKind also for an earlier version.
Result<Database, StoreError> openCatalogueForReading(const std::string& indexFolder);

/// Reads every page of the catalogue's file. kDamaged when one is not what was written.
StoreFailure checkCataloguePages(const std::string& indexFolder);

/// Takes the catalogue away, so that the next writer makes it anew. Who reads it goes on with what
/// there was.
StoreFailure removeCatalogue(const std::string& indexFolder);

/// The version that this program writes.
int newestCatalogueVersion();

}  // namespace vt
