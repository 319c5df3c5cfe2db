#pragma once

#include <sys/socket.h>

#include <array>
#include <cstring>

#include "worker/WorkerProtocol.h"

namespace vt::worker {

/// Sends a request with its two descriptors, which stay the caller's. False when nobody takes it.
inline bool sendRequest(int socket, const WorkerRequest& request, int input, int output) {
  WorkerRequest copy = request;
  const std::array<int, 2> descriptors{input, output};
  iovec part{&copy, sizeof copy};
  alignas(cmsghdr) std::array<char, CMSG_SPACE(sizeof descriptors)> control{};
  msghdr message{};
  message.msg_iov = &part;
  message.msg_iovlen = 1;
  message.msg_control = control.data();
  message.msg_controllen = control.size();
  cmsghdr* first = CMSG_FIRSTHDR(&message);
  first->cmsg_level = SOL_SOCKET;
  first->cmsg_type = SCM_RIGHTS;
  first->cmsg_len = CMSG_LEN(sizeof descriptors);
  std::memcpy(CMSG_DATA(first), descriptors.data(), sizeof descriptors);
  return ::sendmsg(socket, &message, MSG_NOSIGNAL) == sizeof copy;
}

}  // namespace vt::worker
