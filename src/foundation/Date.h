#pragma once

#include <chrono>
#include <ctime>

namespace vt {

/// An instant. Microseconds, because the nanoseconds of `system_clock` end in 2262 and property
/// lists and queries name years up to 9999.
using Date = std::chrono::sys_time<std::chrono::microseconds>;

/// The reference date of numeric dates: 2001-01-01T00:00:00Z.
inline constexpr Date kReferenceDate{std::chrono::seconds{978307200}};

/// Seconds since the reference date, fractions kept to the microsecond.
double secondsSinceReferenceDate(Date date);

/// The instant `seconds` after the reference date, rounded to the nearest microsecond and clamped
/// to what a Date holds. NaN gives the reference date.
Date dateFromReferenceSeconds(double seconds);

/// The instant of a file time stamp; nanoseconds are cut towards the past.
inline Date dateFromTimespec(const timespec& time) {
  return Date{std::chrono::seconds{time.tv_sec} + std::chrono::microseconds{time.tv_nsec / 1000}};
}

}  // namespace vt
