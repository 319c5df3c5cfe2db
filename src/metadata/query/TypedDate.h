#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace vt::query {

/// A span of time as people type it, by times of the query language: its first instant and the
/// first after it.
struct TypedPeriod {
  std::string begin;
  std::string end;
};

/// The day, week, month or year that `typed` names, case ignored; see conditionForValue(). None
/// when it names none.
std::optional<TypedPeriod> periodNamed(std::string_view typed);

}  // namespace vt::query
