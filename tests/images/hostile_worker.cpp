// An image worker whose decoder does what the file's first word says, to see that it cannot. It
// gives a picture of one red pixel when it got its way and of one green pixel when it was refused.

#include <chrono>
#include <optional>
#include <string>

#include "images/worker/ImageTask.h"
#include "support/Misdeeds.h"
#include "worker/WorkerMain.h"

namespace {

using vt::Image;
using vt::worker::DecodeJob;

Image pixel(const char* rgba) { return {1, 1, std::string(rgba, 4)}; }

Image verdict(bool gotItsWay) { return pixel(gotItsWay ? "\xff\0\0\xff" : "\0\xff\0\xff"); }

std::optional<Image> misbehave(const DecodeJob& job) {
  const vt::Misdeed misdeed = vt::misdeedIn(job.descriptor);
  const std::string& deed = misdeed.deed;
  if (deed == "nothing") return std::nullopt;
  if (deed == "short") return Image{4, 4, "abcd"};
  if (deed == "too-wide") return Image{job.width + 1, 1, std::string((job.width + 1) * 4, 'x')};
  if (deed == "too-much") {
    return Image{job.width * 2, job.height * 2, std::string(16UL * job.width * job.height, 'x')};
  }
  if (deed == "garbage") {
    vt::writeToPipe(job.descriptor, "garbage");
    return verdict(false);
  }
  const std::optional<bool> gotItsWay = vt::tryMisdeed(misdeed, job.descriptor);
  return gotItsWay ? std::optional(verdict(*gotItsWay)) : std::nullopt;
}

}  // namespace

int main(int argc, char** argv) {
#ifdef VT_FILE_LIMIT_MILLIS  // to see in less time what becomes of a file that takes too long
  constexpr std::chrono::milliseconds kLimit{VT_FILE_LIMIT_MILLIS};
#else
  constexpr std::chrono::milliseconds kLimit = vt::worker::kFileLimit;
#endif
  return vt::worker::runWorker(
      argc, argv, vt::worker::imageTasks([](vt::ImageFormat) { return misbehave; }), kLimit);
}
