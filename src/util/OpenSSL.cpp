#include "util/OpenSSL.h"

namespace vt {

const OpenSSL& openssl() {
  static const OpenSSL library;
  return library;
}

}  // namespace vt
