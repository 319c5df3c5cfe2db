#pragma once

#include <linux/filter.h>

#include <optional>
#include <utility>
#include <vector>

namespace vt::worker {

/// The list of system calls that a child may make, as the kernel takes it. Made once, since that
/// takes longer than most files.
class DecoderFilter {
 public:
  /// To be called before walls are raised. Nothing when the list can't be made.
  static std::optional<DecoderFilter> make();

  /// Takes away what the calling process, a child of a worker, needs besides decoding: child
  /// processes, messages, signals to others. Any other system call kills it, or fails where
  /// libraries are known to try it. Answers whether this now holds; it can't be taken back.
  bool putInForce() const;

 private:
  explicit DecoderFilter(std::vector<sock_filter> program) : program_(std::move(program)) {}

  std::vector<sock_filter> program_;
};

}  // namespace vt::worker
