#include "metadata/watch/WatchChoice.h"

#include <utility>

#include "metadata/watch/FanotifyWatch.h"
#include "metadata/watch/InotifyWatch.h"

namespace vt {

Result<WatchChoice, std::string> startWatch(const WatchScope& scope, WatchInstant now) {
  WatchChoice choice{std::make_unique<FanotifyWatch>(), {}};
  Result<bool, std::string> isStarted = choice.watch->start(scope, now);
  if (isStarted) return choice;
  choice = {std::make_unique<InotifyWatch>(), isStarted.error()};
  isStarted = choice.watch->start(scope, now);
  if (!isStarted) return choice.why + "; " + isStarted.error();
  return choice;
}

}  // namespace vt
