#include "World.h"

#include <memory>
#include <stdexcept>
#include <utility>
#include <vector>

#include "platform/linux/ServerPlatform.h"

namespace vt::ruby {
namespace {

bool isOpen = false;

void open() {
  const auto environment = readEnvironment();
  if (!environment) throw std::runtime_error(environment.error().text);
  std::shared_ptr<Platform> platform = serverPlatform(*environment);
  if (!platform->hasMetadataIndex()) {
    throw std::runtime_error("the tables of types and attributes in " +
                             environment->resourceFolder + " cannot be read");
  }
  // Never taken down: Ruby lets go of its last objects, which may need it, at the very end.
  static auto* worlds = new std::vector<std::unique_ptr<PlatformScope>>;
  worlds->push_back(std::make_unique<PlatformScope>(std::move(platform)));
  isOpen = true;
}

}  // namespace

void needWorld() {
  if (!isOpen) open();
}

void restartWorld() {
  isOpen = false;
  open();
}

}  // namespace vt::ruby
