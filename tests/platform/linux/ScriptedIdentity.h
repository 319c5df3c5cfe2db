#pragma once

#include <cstdint>
#include <vector>

#include "platform/Identity.h"

namespace vt {

/// An identity that switches as it is told, so that one test can be several users. Nothing of the
/// process changes.
class ScriptedIdentity final : public Identity {
 public:
  std::uint32_t geteuid() const override { return uid; }
  std::uint32_t getegid() const override { return 0; }
  int seteuid(std::uint64_t wanted) override {
    switches.push_back(wanted);
    if (wanted == refused) return -1;
    uid = static_cast<std::uint32_t>(wanted);
    return 0;
  }
  int setegid(std::uint64_t /*gid*/) override { return 0; }
  bool actsAsWanted() const override { return isAsWanted; }
  int getgrouplist(const std::string& /*name*/, std::int32_t /*baseGroup*/,
                   std::int32_t* /*groups*/, int* count) const override {
    *count = 0;
    return 0;
  }

  std::uint32_t uid = 0;
  std::uint64_t refused = UINT64_MAX;
  bool isAsWanted = true;
  std::vector<std::uint64_t> switches;
};

}  // namespace vt
