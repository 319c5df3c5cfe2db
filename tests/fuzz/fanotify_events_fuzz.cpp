// What the kernel tells of changed files.

#include <cstddef>
#include <cstdint>
#include <span>

#include "metadata/watch/FanotifyEvents.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  const std::span given(reinterpret_cast<const char*>(bytes), size);
  vt::readFanotifyEvents(given, [](const vt::FanotifyEvent& event) {
    for (const auto& name : {event.name, event.newName}) {
      if (!name) continue;
      if (name->name.find('\0') != std::string_view::npos) __builtin_trap();
      const vt::FanotifyFolder parts = vt::partsOf(name->folder);
      if (parts.fileSystem.size() != 8 || parts.handle.size() < 8) __builtin_trap();
    }
  });
  return 0;
}
