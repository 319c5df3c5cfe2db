#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "foundation/Date.h"

namespace vt {

/// What a process-id file says of the server that wrote it, and whether that still runs.
struct RunningServer {
  enum class State {
    kNoFile,      ///< there is no file: no server was started
    kUnreadable,  ///< whoever asks may not read it
    kGarbage,     ///< no regular file, or it holds no process id
    kStale,       ///< the process ended, or its number now belongs to another one
    kRunning,
  };

  State state = State::kNoFile;
  std::int32_t processId = 0;  ///< of kStale and kRunning
  std::optional<Date> since;   ///< when the file was written: the end of the server's startup
};

/// Looks at the process-id file `path`, absolute, which may lie in a folder that everybody can
/// write to. The server counts as running when the process is alive, belongs to the owner of the
/// file, was there when the file was written, and is a Vistaro: its program, an argument or a
/// library that it has loaded is called so. A link in the place of the file is not followed.
RunningServer runningServer(const std::string& path);

}  // namespace vt
