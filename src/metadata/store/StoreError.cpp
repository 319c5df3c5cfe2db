#include "metadata/store/StoreError.h"

#include <fmt/format.h>

#include <cerrno>
#include <system_error>

namespace vt {
namespace {

StoreError::Kind kindOf(int number) {
  switch (number) {
    case ENOENT:
      return StoreError::Kind::kMissing;
    case ENOSPC:
    case EDQUOT:
      return StoreError::Kind::kNoSpace;
    case EROFS:
    case EACCES:
    case EPERM:
      return StoreError::Kind::kReadOnly;
    case EFBIG:
      return StoreError::Kind::kTooLarge;
    default:
      return StoreError::Kind::kFailed;
  }
}

}  // namespace

StoreError systemError(int number, std::string_view what, std::string_view path) {
  return {kindOf(number),
          fmt::format("cannot {} {}: {}", what, path, std::generic_category().message(number))};
}

StoreError damageError(std::string_view path, std::string_view how) {
  return {StoreError::Kind::kDamaged, fmt::format("{} is damaged: {}", path, how)};
}

}  // namespace vt
