#include "images/worker/ReceiveRequest.h"

#include <errno.h>
#include <sys/socket.h>

#include <array>
#include <cstring>

namespace vt::worker {

std::optional<ReceivedRequest> receiveRequest(int socket) {
  ImageRequest request;
  std::array<int, 2> descriptors{-1, -1};
  iovec part{&request, sizeof request};
  alignas(cmsghdr) std::array<char, CMSG_SPACE(sizeof descriptors)> control{};
  msghdr message{};
  message.msg_iov = &part;
  message.msg_iovlen = 1;
  message.msg_control = control.data();
  message.msg_controllen = control.size();
  ssize_t count = 0;
  do {
    count = ::recvmsg(socket, &message, MSG_CMSG_CLOEXEC);
  } while (count < 0 && errno == EINTR);
  if (count != sizeof request) return std::nullopt;
  const cmsghdr* first = CMSG_FIRSTHDR(&message);
  if (!first || first->cmsg_type != SCM_RIGHTS || first->cmsg_len != CMSG_LEN(sizeof descriptors)) {
    return std::nullopt;
  }
  std::memcpy(descriptors.data(), CMSG_DATA(first), sizeof descriptors);
  ReceivedRequest received{request, FileDescriptor(descriptors[0]), FileDescriptor(descriptors[1])};
  if (static_cast<std::uint32_t>(request.format) >= kImageFormats) return std::nullopt;
  return received;
}

}  // namespace vt::worker
