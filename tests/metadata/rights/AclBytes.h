#pragma once

#include <cstdint>
#include <initializer_list>
#include <vector>

namespace vt {

struct AclEntryNumbers {
  std::uint32_t tag;
  std::uint32_t permissions;
  std::uint32_t id = 0xFFFFFFFF;  // what the kernel stores where no id is meant
};

/// An access control list as the kernel stores it.
inline std::vector<std::uint8_t> aclBytes(std::initializer_list<AclEntryNumbers> entries,
                                          std::uint32_t version = 2) {
  std::vector<std::uint8_t> bytes;
  const auto put = [&](std::uint32_t number, int size) {
    for (int i = 0; i < size; ++i) bytes.push_back(static_cast<std::uint8_t>(number >> 8 * i));
  };
  put(version, 4);
  for (const AclEntryNumbers& entry : entries) {
    put(entry.tag, 2);
    put(entry.permissions, 2);
    put(entry.id, 4);
  }
  return bytes;
}

}  // namespace vt
