#pragma once

#include <cstdint>
#include <memory>

struct AVFormatContext;
struct AVIOContext;
struct AVStream;

namespace vt {

/// A container of sound and pictures, read from an open file and from nothing else: whatever names
/// and addresses stand in it, none is opened, and it is no playlist.
class AvInput {
 public:
  /// Reads the head and looks at as many packets as tell what the streams are. Nothing when it is
  /// no container that is known. `file` is borrowed.
  static std::unique_ptr<AvInput> open(int file);
  AvInput(const AvInput&) = delete;
  AvInput& operator=(const AvInput&) = delete;
  ~AvInput();

  AVFormatContext* format() const { return format_; }

  /// How far the camera was turned: 0 to 3 quarter turns, clockwise.
  static int quarterTurns(const AVStream& stream);

 private:
  explicit AvInput(int file) : file_(file) {}
  static int readPacket(void* self, std::uint8_t* buffer, int size);
  static std::int64_t seek(void* self, std::int64_t offset, int whence);
  bool openFormat();

  int file_;
  AVIOContext* io_ = nullptr;
  AVFormatContext* format_ = nullptr;
};

}  // namespace vt
