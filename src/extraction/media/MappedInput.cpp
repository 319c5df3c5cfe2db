#include "extraction/media/MappedInput.h"

#include <sys/mman.h>
#include <sys/stat.h>

#include <utility>

namespace vt {

std::optional<MappedInput> MappedInput::of(int file) {
  struct stat status{};
  if (::fstat(file, &status) != 0 || !S_ISREG(status.st_mode)) return std::nullopt;
  if (status.st_size == 0) return MappedInput({});
  const auto size = static_cast<std::size_t>(status.st_size);
  void* const bytes = ::mmap(nullptr, size, PROT_READ, MAP_PRIVATE, file, 0);
  if (bytes == MAP_FAILED) return std::nullopt;
  return MappedInput({static_cast<const char*>(bytes), size});
}

MappedInput::MappedInput(MappedInput&& other) noexcept
    : bytes_(std::exchange(other.bytes_, std::string_view())) {}

MappedInput::~MappedInput() {
  if (!bytes_.empty()) ::munmap(const_cast<char*>(bytes_.data()), bytes_.size());
}

}  // namespace vt
