#include "images/worker/WorkerLoop.h"

#include <errno.h>
#include <poll.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <optional>
#include <utility>

#include "images/worker/ReceiveRequest.h"
#include "images/worker/Sandbox.h"
#include "images/worker/WorkerProtocol.h"

namespace vt::worker {
namespace {

enum Status : int { kMade = 0, kNoPicture = 1, kNotConfined = 2, kNotWritten = 3 };

bool writeAll(int descriptor, const void* bytes, std::size_t size) {
  const char* next = static_cast<const char*>(bytes);
  while (size > 0) {
    const ssize_t count = ::write(descriptor, next, size);
    if (count < 0 && errno == EINTR) continue;
    if (count <= 0) return false;
    next += count;
    size -= static_cast<std::size_t>(count);
  }
  return true;
}

int decodeInto(int output, Decode decode, const DecodeJob& job) {
  const std::optional<Image> image = decode(job);
  if (!image || !image->isWhole()) return kNoPicture;
  const PictureHeader header{image->width, image->height};
  const bool written = writeAll(output, &header, sizeof header) &&
                       writeAll(output, image->pixels.data(), image->pixels.size());
  return written ? kMade : kNotWritten;
}

/// What the child process does, and ends with.
[[noreturn]] void decodeAndExit(int socket, Decode decode, const ReceivedRequest& request,
                                const ChildRules& rules) {
  ::close(socket);
  if (::prctl(PR_SET_PDEATHSIG, SIGKILL) != 0 || !limitResources()) ::_exit(kNotConfined);
  if (!raiseSeccompForDecoder() && rules.mustBeConfined) ::_exit(kNotConfined);
  const DecodeJob job{request.input.get(), request.request.format, request.request.width,
                      request.request.height, request.request.iconMode != 0};
  const int status = decodeInto(request.output.get(), decode, job);
  // The reader need not wait until all that the process holds is given back.
  ::close(request.output.get());
  ::_exit(status);
}

/// Whether the process has ended by itself within the limit. No longer waits for it once nobody is
/// left at the other end of the socket.
bool endsInTime(pid_t child, std::chrono::milliseconds limit, int socket) {
  const int handle = static_cast<int>(::syscall(SYS_pidfd_open, child, 0));
  if (handle < 0) return false;
  // No events asked of the socket: its end is told all the same.
  std::array<pollfd, 2> awaited{{{handle, POLLIN, 0}, {socket, 0, 0}}};
  const int ready = ::poll(awaited.data(), awaited.size(), static_cast<int>(limit.count()));
  ::close(handle);
  return ready > 0 && awaited[0].revents != 0;
}

ImageEnd endOf(pid_t child, std::chrono::milliseconds limit, int socket) {
  const bool ended = endsInTime(child, limit, socket);
  if (!ended) ::kill(child, SIGKILL);
  int status = 0;
  while (::waitpid(child, &status, 0) < 0 && errno == EINTR) {
  }
  if (!ended) return ImageEnd::kTimedOut;
  if (!WIFEXITED(status)) return ImageEnd::kCrashed;
  switch (WEXITSTATUS(status)) {
    case kMade:
      return ImageEnd::kMade;
    case kNoPicture:
      return ImageEnd::kNone;
    case kNotConfined:
      return ImageEnd::kNotTried;
    default:
      return ImageEnd::kCrashed;
  }
}

ImageEnd answer(int socket, ReceivedRequest request, const ChildRules& rules,
                const std::function<Decode(ImageFormat)>& prepare) {
  const Decode decode = prepare(request.request.format);
  if (!decode) return ImageEnd::kNone;
  const pid_t child = ::fork();
  if (child < 0) return ImageEnd::kNotTried;
  if (child == 0) decodeAndExit(socket, decode, request, rules);
  {
    const FileDescriptor childs = std::move(request.output);
  }  // the pipe is to end with the child
  return endOf(child, rules.fileLimit, socket);
}

}  // namespace

void serveRequests(int socket, const ChildRules& rules,
                   const std::function<Decode(ImageFormat)>& prepare) {
  while (std::optional<ReceivedRequest> request = receiveRequest(socket)) {
    const ImageAnswer reply{answer(socket, *std::move(request), rules, prepare)};
    if (::send(socket, &reply, sizeof reply, MSG_NOSIGNAL) != sizeof reply) return;
  }
}

}  // namespace vt::worker
