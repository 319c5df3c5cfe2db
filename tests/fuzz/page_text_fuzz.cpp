#include <pango/pango.h>

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "foundation/UTF8.h"
#include "images/worker/PageText.h"

namespace {

void mustBeUTF8(std::string_view text) {
  if (vt::validUTF8Length(text) != text.size()) __builtin_trap();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  const std::string text = vt::worker::readableText({reinterpret_cast<const char*>(bytes), size});
  mustBeUTF8(text);
  mustBeUTF8(vt::worker::textOfHtml(text));
  const std::string markup = vt::worker::markupOfMarkdown(text);
  mustBeUTF8(markup);
  if (!pango_parse_markup(markup.data(), static_cast<int>(markup.size()), 0, nullptr, nullptr,
                          nullptr, nullptr)) {
    __builtin_trap();
  }
  return 0;
}
