// What comes over the worker's socket and out of its decoders' pipes. The first byte of an input
// says how many descriptors come with the message, the rest is the message, and then a picture's
// bytes.

#include <fcntl.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>

#include "platform/linux/FileDescriptor.h"
#include "platform/linux/images/ReceivedPicture.h"
#include "worker/ReceiveRequest.h"

namespace {

constexpr std::size_t kMostDescriptors = 3;

bool sendMessage(int socket, std::string message, std::size_t descriptors) {
  iovec part{message.data(), message.size()};
  alignas(cmsghdr) std::array<char, CMSG_SPACE(kMostDescriptors * sizeof(int))> control{};
  msghdr header{};
  header.msg_iov = &part;
  header.msg_iovlen = 1;
  const vt::FileDescriptor sent(open("/dev/null", O_RDONLY | O_CLOEXEC));
  if (descriptors > 0) {
    header.msg_control = control.data();
    header.msg_controllen = CMSG_SPACE(descriptors * sizeof(int));
    cmsghdr* first = CMSG_FIRSTHDR(&header);
    first->cmsg_level = SOL_SOCKET;
    first->cmsg_type = SCM_RIGHTS;
    first->cmsg_len = CMSG_LEN(descriptors * sizeof(int));
    for (std::size_t i = 0; i < descriptors; ++i) {
      const int number = sent.get();
      std::memcpy(CMSG_DATA(first) + i * sizeof number, &number, sizeof number);
    }
  }
  return sendmsg(socket, &header, MSG_NOSIGNAL) == static_cast<ssize_t>(message.size());
}

void receive(const std::string& message, std::size_t descriptors) {
  int ends[2];
  if (socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, ends) != 0) __builtin_trap();
  const vt::FileDescriptor ours(ends[0]);
  const vt::FileDescriptor theirs(ends[1]);
  if (!sendMessage(ours.get(), message, descriptors)) return;
  const auto received = vt::worker::receiveRequest(theirs.get());
  if (!received) return;
  const bool isWhole = message.size() == sizeof received->request && descriptors == 2 &&
                       received->input && received->output;
  if (!isWhole) __builtin_trap();
}

void readPicture(std::string bytes) {
  const vt::worker::ImageRequest request{vt::ImageFormat::kPixels, 64, 32, 0};
  const auto image = vt::pictureIn(std::move(bytes), request);
  if (image && (!image->isWhole() || image->width > 64 || image->height > 32)) __builtin_trap();
}

/// No descriptor may stay open, whatever came.
int lowestFree() {
  const vt::FileDescriptor probe(open("/dev/null", O_RDONLY | O_CLOEXEC));
  return probe.get();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  if (size < 2) return 0;
  const int free = lowestFree();
  const std::string message(reinterpret_cast<const char*>(bytes + 1), size - 1);
  receive(message, bytes[0] % (kMostDescriptors + 1));
  readPicture(message);
  if (lowestFree() != free) __builtin_trap();
  return 0;
}
