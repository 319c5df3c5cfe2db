#pragma once

namespace vt::worker {

// The walls around the process that calls. Each answers whether it now stands, cannot be taken down
// again, and holds for every process that the caller starts.

/// Gives up root for an account that owns nothing, for good. True also for a process that was not
/// root's to begin with.
bool dropRoot();

/// Lets files be opened for reading only, and only those below the folders of libraries and fonts.
bool raiseLandlock();

/// Allows the system calls that decoding takes, and to start and end child processes. Any other
/// kills the process, or fails where libraries are known to try it.
bool raiseSeccompForWorker();

/// The only descriptor that messages can be received through once DecoderFilter is in force.
inline constexpr int kChildSocket = 0;

/// Limits what one decoding may take of memory, processor and threads. Nothing can be written to
/// any file.
bool limitResources();

}  // namespace vt::worker
