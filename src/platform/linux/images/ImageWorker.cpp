#include "platform/linux/images/ImageWorker.h"

#include <errno.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <chrono>
#include <cstring>
#include <utility>
#include <vector>

#include "platform/linux/Pipe.h"
#include "platform/linux/images/ReceivedPicture.h"

namespace vt {
namespace {

using Clock = std::chrono::steady_clock;

constexpr const char* kBubblewrapProgram = "/usr/bin/bwrap";
// Where bubblewrap shows the worker its own program.
constexpr const char* kInnerProgram = "/vistaro-images";
constexpr std::chrono::seconds kStartLimit{10};
// The worker ends a file by itself after its own limit.
constexpr std::chrono::seconds kAnswerLimit = worker::kFileLimit + std::chrono::seconds(5);

/// Waits until one of the descriptors has something to read, or was closed at its other end.
template <std::size_t N>
bool waitFor(std::array<pollfd, N>& awaited, Clock::time_point deadline) {
  for (;;) {
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(deadline - Clock::now());
    if (left.count() <= 0) return false;
    const int ready = ::poll(awaited.data(), awaited.size(), static_cast<int>(left.count()));
    if (ready > 0) return true;
    if (ready == 0 || errno != EINTR) return false;
  }
}

/// The next message of the worker; nothing when none of this size comes in time.
template <class Message>
std::optional<Message> receive(int socket, Clock::time_point deadline) {
  std::array<pollfd, 1> awaited{{{socket, POLLIN, 0}}};
  Message message;
  if (!waitFor(awaited, deadline) ||
      ::recv(socket, &message, sizeof message, MSG_DONTWAIT) != sizeof message) {
    return std::nullopt;
  }
  return message;
}

bool sendRequest(int socket, const worker::ImageRequest& request, int input, int output) {
  worker::ImageRequest copy = request;
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

/// What comes through the pipe until its end. Nothing when that is more than `limit` bytes, or it
/// does not end in time.
std::optional<std::string> readToEnd(int pipe, std::size_t limit, Clock::time_point deadline) {
  std::string bytes;
  std::array<char, 65536> block;
  for (;;) {
    std::array<pollfd, 1> awaited{{{pipe, POLLIN, 0}}};
    if (!waitFor(awaited, deadline)) return std::nullopt;
    const ssize_t count = ::read(pipe, block.data(), block.size());
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) return std::nullopt;
    if (count == 0) return bytes;
    if (bytes.size() + static_cast<std::size_t>(count) > limit) return std::nullopt;
    bytes.append(block.data(), static_cast<std::size_t>(count));
  }
}

/// Shows the worker a file or folder of the machine, when it is there, where it is.
void show(const std::string& place, std::vector<std::string>& arguments) {
  // Else bubblewrap makes the folders above it, open to root alone.
  for (std::size_t end = place.find('/', 1); end != place.npos; end = place.find('/', end + 1)) {
    arguments.insert(arguments.end(), {"--perms", "0755", "--dir", place.substr(0, end)});
  }
  arguments.insert(arguments.end(), {"--ro-bind-try", place, place});
}

std::vector<std::string> bubblewrapArguments(const std::string& program) {
  std::vector<std::string> arguments = {"bwrap",         "--unshare-net", "--unshare-pid",
                                        "--unshare-ipc", "--unshare-uts", "--unshare-cgroup-try",
                                        "--new-session", "--cap-drop",    "ALL"};
  // No --die-with-parent: it goes by the thread that started us, which may end before its process.
  // The end of the socket is what ends the worker.
  if (::geteuid() == 0) {
    // It gives up root itself: only then can it still open its program, wherever that lies.
    arguments.insert(arguments.end(), {"--cap-add", "CAP_SETUID", "--cap-add", "CAP_SETGID"});
  } else {
    arguments.emplace_back("--unshare-user");
  }
  for (const char* place : {"/usr/lib", "/usr/lib64", "/usr/share/fonts", "/usr/local/share/fonts",
                            "/usr/share/fontconfig", "/usr/share/poppler", "/etc/fonts",
                            "/etc/ld.so.cache", "/var/cache/fontconfig", VT_IMAGE_MODULES}) {
    show(place, arguments);
  }
  for (const char* library : {"lib", "lib64", "lib32"}) {
    arguments.insert(arguments.end(),
                     {"--symlink", std::string("usr/") + library, std::string("/") + library});
  }
  arguments.insert(arguments.end(),
                   {"--ro-bind-try", "/usr/lib64", "/usr/lib64", "--ro-bind", program,
                    kInnerProgram, "--dev", "/dev", "--remount-ro", "/", "--chdir", "/", "--",
                    kInnerProgram, worker::kInsideBubblewrap});
  return arguments;
}

}  // namespace

std::unique_ptr<ImageWorker> ImageWorker::start(const std::string& program,
                                                WorkerConfinement confinement) {
  int ends[2];
  if (::socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, ends) != 0) return nullptr;
  FileDescriptor ours(ends[0]);
  std::unique_ptr<ChildProcess> process;
  {
    const FileDescriptor theirs(ends[1]);
    const bool wrapped = confinement == WorkerConfinement::kBubblewrap;
    std::vector<std::string> arguments = {program};
    if (wrapped) arguments = bubblewrapArguments(program);
    if (confinement == WorkerConfinement::kIconsOnly) arguments.emplace_back(worker::kIconsOnly);
    process = std::make_unique<ChildProcess>(
        wrapped ? kBubblewrapProgram : program, std::move(arguments),
        std::vector<std::string>{"LC_ALL=C.UTF-8"},
        ChildProcess::Standard{.input = theirs.get(), .output = {}, .errors = {}});
  }
  if (process->startError() != 0) return nullptr;
  const auto greeting = receive<worker::WorkerGreeting>(ours.get(), Clock::now() + kStartLimit);
  if (!greeting) return nullptr;
  return std::unique_ptr<ImageWorker>(
      new ImageWorker(std::move(process), std::move(ours), greeting->walls));
}

MadePicture ImageWorker::make(int input, const worker::ImageRequest& request) {
  if (owesAnswer_) awaitAnswer(Clock::now() + kAnswerLimit);
  const Clock::time_point deadline = Clock::now() + kAnswerLimit;
  std::optional<Pipe> pipe = makePipe();
  // A decoder leaves the file wherever it stopped to read.
  const bool isAtStart = ::lseek(input, 0, SEEK_SET) == 0;
  if (!isUsable_ || !pipe || !isAtStart) return {std::nullopt, /*isFinal=*/false};
  const std::size_t limit = sizeof(worker::PictureHeader) +
                            std::size_t{request.width} * request.height * Image::kBytesPerPixel;
  {
    const FileDescriptor childs = std::move(pipe->write);  // only the worker may hold it open
    isUsable_ = sendRequest(socket_.get(), request, input, childs.get());
  }
  if (!isUsable_) return {std::nullopt, /*isFinal=*/false};
  owesAnswer_ = true;
  std::optional<std::string> bytes = readToEnd(pipe->read.get(), limit, deadline);
  pipe.reset();  // a decoder that writes on meets a closed pipe
  if (bytes) {
    // How the decoder ended is of no interest now, and is waited for when there is more to do.
    if (auto image = pictureIn(std::move(*bytes), request)) return {std::move(image)};
  }
  return {std::nullopt, awaitAnswer(deadline) != worker::ImageEnd::kNotTried};
}

worker::ImageEnd ImageWorker::awaitAnswer(std::chrono::steady_clock::time_point deadline) {
  owesAnswer_ = false;
  if (const auto answer = receive<worker::ImageAnswer>(socket_.get(), deadline)) return answer->end;
  isUsable_ = false;
  // A worker that ends does so for reasons of its own: only its children look at files.
  return Clock::now() < deadline ? worker::ImageEnd::kNotTried : worker::ImageEnd::kTimedOut;
}

}  // namespace vt
