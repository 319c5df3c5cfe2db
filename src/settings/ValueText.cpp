#include "settings/ValueText.h"

#include <fmt/format.h>

namespace vt {

std::optional<std::string> textOf(const std::optional<Value>& value) {
  if (!value) return std::nullopt;
  if (const std::string* text = value->get<std::string>()) return *text;
  if (!value->isNumber()) return std::nullopt;
  if (const double* real = value->get<double>()) return fmt::format("{}", *real);
  if (const std::uint64_t* large = value->get<std::uint64_t>()) return fmt::format("{}", *large);
  return fmt::format("{}", value->integerValue());
}

}  // namespace vt
