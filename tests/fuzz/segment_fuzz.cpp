// Any bytes for a segment, with checksums put right so that more than they are looked at: opening
// gives an error or something that can be read to its end, and verifying never reads outside.
#include <fcntl.h>
#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

#include "metadata/live/Descriptor.h"
#include "metadata/store/ResealedSegment.h"
#include "metadata/store/Segment.h"
#include "metadata/store/SegmentVerifier.h"
#include "metadata/store/TouchSegment.h"
#include "support/TemporaryFolder.h"

namespace {

/// A file that holds one input after the other.
class InputFile {
 public:
  InputFile()
      : folder_(::open(place_.path().c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC)),
        file_(::openat(folder_.get(), "segment", O_RDWR | O_CREAT | O_CLOEXEC, 0600)) {}

  void lookAt(const std::string& bytes) const {
    if (::pwrite(file_.get(), bytes.data(), bytes.size(), 0) !=
            static_cast<ssize_t>(bytes.size()) ||
        ::ftruncate(file_.get(), static_cast<off_t>(bytes.size())) != 0) {
      std::abort();
    }
    const auto segment = vt::Segment::open(folder_.get(), "segment", "segment");
    if (!segment) return;
    vt::touch(**segment);
    vt::verifySegment(**segment);
  }

 private:
  vt::TemporaryFolder place_;
  vt::Descriptor folder_;
  vt::Descriptor file_;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const InputFile file;
  const std::string bytes(reinterpret_cast<const char*>(data), size);
  file.lookAt(bytes);
  if (size < sizeof(vt::SegmentHead)) return 0;
  const auto asWritten = [&](std::string&, vt::SegmentHead& head) {
    head.magic = vt::kSegmentMagic;
    head.version = vt::kSegmentFormatVersion;
    head.fileBytes = size;
  };
  file.lookAt(vt::resealed(bytes, asWritten));
  return 0;
}
