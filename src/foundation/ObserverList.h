#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "foundation/VTObject.h"

namespace vt {

/// The observers of one object, in the order in which they were added.
class ObserverList {
 public:
  std::uint64_t add(std::string_view key, ChangeCallback callback);
  void remove(std::uint64_t id);
  /// Calls the observers of `key` that are registered when the call begins and still are when
  /// their turn comes.
  void notify(std::string_view key, ChangePhase phase) const;

 private:
  struct Observer {
    std::uint64_t id;
    std::string key;
    ChangeCallback callback;
  };

  bool isRegistered(std::uint64_t id) const;

  // Shared, so that an observer may cancel itself while its callback runs.
  std::vector<std::shared_ptr<const Observer>> observers_;
  std::uint64_t lastId_ = 0;
};

}  // namespace vt
