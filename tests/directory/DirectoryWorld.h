#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "foundation/NSLog.h"
#include "platform/Platform.h"
#include "platform/memory/MemoryDirectoryServices.h"
#include "platform/memory/MemoryIdentity.h"
#include "platform/memory/MemoryProcess.h"
#include "platform/memory/MemoryRuntimeBundles.h"

namespace vt {

/// A platform whose directory is a table, with one user, ann, and the log in a list. Anything that
/// the directory did not get back fails the test.
struct DirectoryWorld {
  std::shared_ptr<MemoryRecords> records = std::make_shared<MemoryRecords>();
  std::shared_ptr<MemoryDirectoryServices> services = std::make_shared<MemoryDirectoryServices>(
      records, [](const std::string& complaint) { ADD_FAILURE() << complaint; });
  std::shared_ptr<MemoryRuntimeBundles> bundles = std::make_shared<MemoryRuntimeBundles>(records);
  std::shared_ptr<MemoryIdentity> identity = std::make_shared<MemoryIdentity>();
  std::shared_ptr<MemoryProcess> process = std::make_shared<MemoryProcess>();
  std::vector<std::string> log;
  LogRedirection redirection{[this](std::string_view text) { log.emplace_back(text); }};
  PlatformScope scope;

  explicit DirectoryWorld(Platform::Services more = {}) : scope(platform(std::move(more))) {
    records->add(userRecord("ann", "501", "20", "Ann Example"));
    records->setPassword("ann", "secret");
  }

 private:
  std::shared_ptr<Platform> platform(Platform::Services all) const {
    all.directoryServices = services;
    all.runtimeBundles = bundles;
    all.identity = identity;
    all.process = process;
    return std::make_shared<Platform>(std::move(all));
  }
};

/// Runs `operation` in a fresh world once for each call that it makes of the directory, that call
/// refused, and expects the directory to have everything back afterwards.
inline void expectNothingKeptWhateverFails(const std::function<void(DirectoryWorld&)>& operation) {
  std::size_t calls = 0;
  {
    DirectoryWorld world;
    operation(world);
    calls = world.services->calls().size();
    ASSERT_EQ(world.services->leaks(), "");
  }
  ASSERT_GT(calls, 3U);
  for (std::size_t nth = 1; nth <= calls; ++nth) {
    DirectoryWorld world;
    world.services->refuse("", nth);
    operation(world);
    EXPECT_EQ(world.services->leaks(), "") << "call " << nth << " refused";
  }
}

}  // namespace vt
