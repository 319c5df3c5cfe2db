#pragma once

#include <unicode/ucasemap.h>
#include <unicode/ucol.h>
#include <unicode/uloc.h>
#include <unicode/ustring.h>
#include <unicode/uvernum.h>

#include "foundation/SharedLibrary.h"

// The functions of ICU that are used. Each is a macro that puts ICU's version behind the name.
#define VT_ICU_FUNCTIONS(X) \
  X(u_strFromUTF8WithSub)   \
  X(ucasemap_close)         \
  X(ucasemap_open)          \
  X(ucasemap_utf8ToLower)   \
  X(ucasemap_utf8ToUpper)   \
  X(ucol_close)             \
  X(ucol_getSortKey)        \
  X(ucol_open)              \
  X(ucol_setStrength)       \
  X(uloc_getDefault)        \
  X(uloc_getVariant)

namespace vt {

/// ICU, loaded at its first use: it orders texts by language and changes their case, which a search
/// rarely needs. Its members are the functions of their names.
struct ICU {
  /// The library of collation, which brings the one of case along.
  const SharedLibrary library{"libicui18n.so." U_ICU_VERSION_SHORT};
  VT_ICU_FUNCTIONS(VT_LIBRARY_FUNCTION)
};

/// Throws std::runtime_error when ICU is not installed.
const ICU& icu();

}  // namespace vt
