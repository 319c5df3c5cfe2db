#include <fmt/format.h>

#include "foundation/Dictionary.h"
#include "platform/Attributes.h"
#include "vistaro/LocalTime.h"
#include "vistaro/SearchReport.h"

namespace vt::tool {
namespace {

/// "1.2 MB": three significant digits in powers of a thousand, as the people who buy disks count.
std::string humanSize(std::uint64_t bytes) {
  static constexpr const char* kUnits[] = {"B", "kB", "MB", "GB", "TB", "PB", "EB"};
  if (bytes < 1000) return fmt::format("{} B", bytes);
  auto size = static_cast<double>(bytes);
  std::size_t unit = 0;
  while (size >= 999.5 && unit + 1 < std::size(kUnits)) {
    size /= 1000;
    ++unit;
  }
  return size < 9.95 ? fmt::format("{:.1f} {}", size, kUnits[unit])
                     : fmt::format("{:.0f} {}", size, kUnits[unit]);
}

/// Local time to the minute.
std::string humanDate(Date date) {
  const std::optional<std::tm> local = localTime(date);
  if (!local) return "-";
  return fmt::format("{:04}-{:02}-{:02} {:02}:{:02}", local->tm_year + 1900, local->tm_mon + 1,
                     local->tm_mday, local->tm_hour, local->tm_min);
}

std::string itemLine(const Dictionary& record, const Terminal& terminal) {
  const Value* date = record.find(kMDItemContentModificationDate);
  const Value* size = record.find(kMDItemFSSize);
  const Value* path = record.find(kMDItemPath);
  const std::string shownPath = printable(path ? *path->get<std::string>() : "");
  const std::size_t nameAt = shownPath.rfind('/') + 1;
  return fmt::format("  {}  {:>8}  {}{}\n",
                     date ? humanDate(*date->get<Date>()) : std::string(16, ' '),
                     size ? humanSize(size->unsignedIntegerValue()) : "",
                     terminal.dim(shownPath.substr(0, nameAt)), shownPath.substr(nameAt));
}

std::string plural(std::size_t count, std::string_view noun) {
  return fmt::format("{} {}{}", count, noun, count == 1 ? "" : "s");
}

}  // namespace

std::string textReport(const SearchReport& report, const Terminal& terminal) {
  std::string text;
  for (const auto& group : *report.groups) {
    const auto [first, last] = report.shown(*group);
    text += fmt::format("{} ({})\n", terminal.bold(printable(group->title().value_or(""))),
                        group->count());
    for (std::size_t i = first; i < last; ++i) {
      text += itemLine(*group->results()->at(i), terminal);
    }
    if (last - first < group->count()) {
      text += terminal.dim(first == last
                               ? fmt::format("  nothing on page {}\n", report.page)
                               : fmt::format("  {}–{} of {}; --page and --per-page show others\n",
                                             first + 1, last, group->count()));
    }
    text += '\n';
  }
  text += terminal.dim(fmt::format("{} in {}, {:.3f} s\n", plural(report.count(), "file"),
                                   plural(report.groups->size(), "group"), report.seconds));
  return text;
}

}  // namespace vt::tool
