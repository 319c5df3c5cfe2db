#pragma once

#include <cstdint>
#include <memory>

#include "foundation/Array.h"
#include "platform/DirectoryServices.h"

namespace vt {

/// The session of a listing of share points; 0 outside it. One listing at a time.
extern DirReference gDirRef;

/// Opens the node that answers for every place where users may be found, into `*node`.
/// kDSNullParameter without a session or without `node`; kDSMemoryError without a buffer; else what
/// the directory answers. `*node` is untouched on a failure.
DirStatus OpenSearchNode(DirReference session, DirNodeReference* node);

/// Checks `password` for the record called `recordName` in `node`; all three texts are
/// zero-terminated UTF-8. 0 when it is right. kDSNullParameter without a reference, name or
/// password; kDSAuthMethodNotSupported for a `method` that is none of the four of
/// DirectoryConstants.h; kDSMemoryError without a buffer; else what the directory answers.
DirStatus DoPasswordAuth(DirReference session, DirNodeReference node, const char* method,
                         const char* recordName, const char* password);

/// Puts `length`, as 4 bytes in host byte order, and that many of `bytes` behind what `buffer`
/// holds. kDSNullParameter without either; kDSNoRoomInBuffer, and the buffer as it was, when they
/// do not fit.
DirStatus AppendStringToBuffer(DataBuffer* buffer, const char* bytes, std::uint32_t length);

/// Opens the node of this machine's own records on gDirRef, into `*node`. What the directory
/// answers, logged unless it is 0; 0 as well, and `*node` untouched, when the path of the node
/// could not be built.
DirStatus MyOpenDirNode(DirNodeReference* node);

/// Every share-point record of `node`, read on gDirRef: a new array of dictionaries, attribute type
/// to text, of the attributes that have exactly one value and that in UTF-8. Never nil. A record
/// that could not be read is an empty dictionary; one too large for a buffer of 2,048 bytes is left
/// out.
std::shared_ptr<Array> GetRecordList(DirNodeReference node);

}  // namespace vt
