#include "av/AvInput.h"

extern "C" {
#include <libavformat/avformat.h>
#include <libavutil/display.h>
}

#include <errno.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cmath>

namespace vt {
namespace {

// None that names other files, as playlists do.
constexpr const char* kContainers =
    "mov,mp4,m4a,3gp,3g2,mj2,matroska,webm,avi,mpeg,mpegts,mpegvideo,ogg,flv,asf,m4v,dv,gif,"
    "mxf,rm,aac,ac3,eac3,dts,amr,caf,au,w64";
constexpr int kBufferSize = 65536;

}  // namespace

int AvInput::readPacket(void* self, std::uint8_t* buffer, int size) {
  const ssize_t count =
      ::read(static_cast<AvInput*>(self)->file_, buffer, static_cast<std::size_t>(size));
  if (count < 0) return AVERROR(errno);
  return count == 0 ? AVERROR_EOF : static_cast<int>(count);
}

std::int64_t AvInput::seek(void* self, std::int64_t offset, int whence) {
  const int file = static_cast<AvInput*>(self)->file_;
  if (whence == AVSEEK_SIZE) {
    struct stat status{};
    return ::fstat(file, &status) == 0 ? status.st_size : AVERROR(errno);
  }
  return ::lseek(file, offset, whence & ~AVSEEK_FORCE);
}

std::unique_ptr<AvInput> AvInput::open(int file) {
  av_log_set_level(AV_LOG_QUIET);
  std::unique_ptr<AvInput> input(new AvInput(file));
  auto* const buffer = static_cast<unsigned char*>(av_malloc(kBufferSize));
  if (buffer == nullptr) return nullptr;
  input->io_ = avio_alloc_context(buffer, kBufferSize, 0, input.get(), readPacket, nullptr, seek);
  if (input->io_ == nullptr) {
    av_free(buffer);
    return nullptr;
  }
  if (!input->openFormat() || avformat_find_stream_info(input->format_, nullptr) < 0) {
    return nullptr;
  }
  return input;
}

bool AvInput::openFormat() {
  format_ = avformat_alloc_context();
  if (format_ == nullptr) return false;
  format_->pb = io_;
  AVDictionary* options = nullptr;
  av_dict_set(&options, "format_whitelist", kContainers, 0);
  // No address, no file name, is ever opened, whatever the container says.
  av_dict_set(&options, "protocol_whitelist", "", 0);
  av_dict_set(&options, "protocol_blacklist", "file,http,https,tcp,udp,rtp,concat,subfile,data", 0);
  // Which lets go of the context, and forgets it, when it fails.
  const int result = avformat_open_input(&format_, "", nullptr, &options);
  av_dict_free(&options);
  return result == 0;
}

AvInput::~AvInput() {
  avformat_close_input(&format_);
  if (io_ != nullptr) av_freep(static_cast<void*>(&io_->buffer));
  avio_context_free(&io_);
}

int AvInput::quarterTurns(const AVStream& stream) {
  const std::uint8_t* matrix = av_stream_get_side_data(&stream, AV_PKT_DATA_DISPLAYMATRIX, nullptr);
  if (!matrix) return 0;
  const double angle = av_display_rotation_get(reinterpret_cast<const std::int32_t*>(matrix));
  if (std::isnan(angle)) return 0;
  return static_cast<int>(std::lround(-angle / 90) % 4 + 4) % 4;
}

}  // namespace vt
