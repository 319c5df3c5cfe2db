#include "worker/ReceiveRequest.h"

#include <errno.h>
#include <sys/socket.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <utility>

namespace vt::worker {
namespace {

using Numbers = std::array<int, 2>;

/// The descriptors that came with the message, which are the caller's to close; -1 in the place of
/// those that did not.
Numbers descriptorsOf(msghdr& message) {
  Numbers numbers{-1, -1};
  const cmsghdr* first = CMSG_FIRSTHDR(&message);
  if (first && first->cmsg_level == SOL_SOCKET && first->cmsg_type == SCM_RIGHTS) {
    const std::size_t size = first->cmsg_len - CMSG_LEN(0);
    std::memcpy(numbers.data(), CMSG_DATA(first), std::min(size, sizeof numbers));
  }
  return numbers;
}

}  // namespace

std::optional<ReceivedRequest> receiveRequest(int socket) {
  WorkerRequest request;
  iovec part{&request, sizeof request};
  alignas(cmsghdr) std::array<char, CMSG_SPACE(sizeof(Numbers))> control{};
  msghdr message{};
  message.msg_iov = &part;
  message.msg_iovlen = 1;
  message.msg_control = control.data();
  message.msg_controllen = control.size();
  ssize_t count = 0;
  do {
    count = ::recvmsg(socket, &message, MSG_CMSG_CLOEXEC);
  } while (count < 0 && errno == EINTR);
  if (count < 0) return std::nullopt;
  const Numbers numbers = descriptorsOf(message);
  FileDescriptor input(numbers[0]);
  FileDescriptor output(numbers[1]);
  const bool isCutOff = (message.msg_flags & (MSG_TRUNC | MSG_CTRUNC)) != 0;
  if (count != sizeof request || isCutOff || !input || !output) return std::nullopt;
  return ReceivedRequest{request, std::move(input), std::move(output)};
}

}  // namespace vt::worker
