#include "util/ICU.h"

namespace vt {

const ICU& icu() {
  static const ICU library;
  return library;
}

}  // namespace vt
