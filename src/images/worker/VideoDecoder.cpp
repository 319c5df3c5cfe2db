#include "images/worker/VideoDecoder.h"

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
#include <libavutil/imgutils.h>
#include <libswscale/swscale.h>
}

#include <memory>

#include "av/AvInput.h"
#include "images/worker/DecoderModule.h"
#include "images/worker/FitSize.h"
#include "images/worker/ImageRequest.h"

namespace vt::worker {
namespace {

// Frames are given up on after this many packets: a damaged file yields none for ever.
constexpr int kMostPackets = 5000;

struct Free {
  void operator()(AVCodecContext* codec) const { avcodec_free_context(&codec); }
  void operator()(AVPacket* packet) const { av_packet_free(&packet); }
  void operator()(AVFrame* frame) const { av_frame_free(&frame); }
  void operator()(SwsContext* scaler) const { sws_freeContext(scaler); }
};
template <class T>
using Owned = std::unique_ptr<T, Free>;

Owned<AVCodecContext> decoderOf(const AVStream& stream) {
  const AVCodec* codec = avcodec_find_decoder(stream.codecpar->codec_id);
  Owned<AVCodecContext> context(codec ? avcodec_alloc_context3(codec) : nullptr);
  if (!context || avcodec_parameters_to_context(context.get(), stream.codecpar) < 0) return nullptr;
  context->thread_count = 1;
  context->max_pixels = static_cast<std::int64_t>(kMostSourcePixels);
  if (avcodec_open2(context.get(), codec, nullptr) != 0) return nullptr;
  return context;
}

/// The first frame from where the file stands.
Owned<AVFrame> nextFrame(AVFormatContext* format, AVCodecContext* codec, int stream) {
  const Owned<AVPacket> packet(av_packet_alloc());
  Owned<AVFrame> frame(av_frame_alloc());
  if (!packet || !frame) return nullptr;
  for (int i = 0; i < kMostPackets; ++i) {
    const bool atEnd = av_read_frame(format, packet.get()) < 0;
    if (!atEnd && packet->stream_index != stream) {
      av_packet_unref(packet.get());
      continue;
    }
    avcodec_send_packet(codec, atEnd ? nullptr : packet.get());
    av_packet_unref(packet.get());
    if (avcodec_receive_frame(codec, frame.get()) == 0) return frame;
    if (atEnd) return nullptr;
  }
  return nullptr;
}

std::optional<Image> scaled(const AVFrame& frame, PixelSize size) {
  const Owned<SwsContext> scaler(
      sws_getContext(frame.width, frame.height, static_cast<AVPixelFormat>(frame.format),
                     static_cast<int>(size.width), static_cast<int>(size.height), AV_PIX_FMT_RGBA,
                     SWS_AREA, nullptr, nullptr, nullptr));
  if (!scaler) return std::nullopt;
  // The scaler may write some bytes past the end of a row.
  constexpr std::size_t kSlack = 64;
  Image image{size.width, size.height};
  const std::size_t rowSize = size.width * Image::kBytesPerPixel;
  image.pixels.resize(rowSize * size.height + kSlack);
  std::uint8_t* const planes[4] = {reinterpret_cast<std::uint8_t*>(image.pixels.data())};
  const int strides[4] = {static_cast<int>(rowSize)};
  if (sws_scale(scaler.get(), frame.data, frame.linesize, 0, frame.height, planes, strides) !=
      static_cast<int>(size.height)) {
    return std::nullopt;
  }
  image.pixels.resize(rowSize * size.height);
  return image;
}

Image turned(const Image& image) {
  Image result{image.height, image.width};
  result.pixels.reserve(image.pixels.size());
  for (std::uint32_t x = 0; x < image.width; ++x) {
    for (std::uint32_t y = image.height; y-- > 0;) {
      result.pixels.append(image.pixels, (std::size_t{y} * image.width + x) * Image::kBytesPerPixel,
                           Image::kBytesPerPixel);
    }
  }
  return result;
}

}  // namespace

std::optional<Image> decodeVideo(const DecodeJob& job) {
  const std::unique_ptr<AvInput> input = AvInput::open(job.descriptor);
  if (!input) return std::nullopt;
  AVFormatContext* const format = input->format();
  const int index = av_find_best_stream(format, AVMEDIA_TYPE_VIDEO, -1, -1, nullptr, 0);
  if (index < 0) return std::nullopt;
  const AVStream& stream = *format->streams[index];
  const Owned<AVCodecContext> codec = decoderOf(stream);
  if (!codec) return std::nullopt;
  // Many begin in black.
  if (format->duration > 0) av_seek_frame(format, -1, format->duration / 10, AVSEEK_FLAG_BACKWARD);
  const Owned<AVFrame> frame = nextFrame(format, codec.get(), index);
  if (!frame || frame->width < 1 || frame->height < 1) return std::nullopt;
  const double aspect = stream.sample_aspect_ratio.num > 0 ? av_q2d(stream.sample_aspect_ratio) : 1;
  const int turns = AvInput::quarterTurns(stream);
  const PixelSize most =
      turns % 2 == 0 ? PixelSize{job.width, job.height} : PixelSize{job.height, job.width};
  PixelSize size = fitInto(most, frame->width * aspect, frame->height);
  if (size.width > static_cast<std::uint32_t>(frame->width) && aspect == 1) {
    size = {static_cast<std::uint32_t>(frame->width), static_cast<std::uint32_t>(frame->height)};
  }
  std::optional<Image> image = scaled(*frame, size);
  for (int i = 0; image && i < turns; ++i) image = turned(*image);
  return image;
}

}  // namespace vt::worker

vt::worker::Decode vtDecoderOf(vt::ImageFormat format) {
  return format == vt::ImageFormat::kVideo ? vt::worker::decodeVideo : nullptr;
}
