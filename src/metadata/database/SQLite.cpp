#include "metadata/database/SQLite.h"

namespace vt {

const SQLite& sqlite() {
  static const SQLite library;
  return library;
}

}  // namespace vt
