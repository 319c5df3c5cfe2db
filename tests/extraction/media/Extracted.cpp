#include "extraction/media/Extracted.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <time.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <iterator>
#include <memory>
#include <random>

#include "extraction/media/MediaExtractors.h"
#include "foundation/Array.h"
#include "metadata/live/Descriptor.h"
#include "metadata/types/ShippedTypes.h"
#include "support/InChildProcess.h"
#include "support/ReadFile.h"

namespace vt {
namespace {

const ContentTypes& types() {
  static const ContentTypes table = shippedTypes();
  return table;
}

std::string shown(const Value& value) {
  if (const auto array = value.array()) {
    std::string text;
    for (const Value& element : *array) text += (text.empty() ? "" : ", ") + shown(element);
    return "[" + text + "]";
  }
  if (const auto* text = value.get<std::string>()) return "'" + *text + "'";
  if (const auto* boolean = value.get<bool>()) return *boolean ? "yes" : "no";
  if (const auto* integer = value.get<std::int64_t>()) return fmt::format("{}", *integer);
  if (const auto* number = value.get<std::uint64_t>()) return fmt::format("{}u", *number);
  if (const auto* real = value.get<double>()) return fmt::format("{:.7}", *real);
  if (const auto* date = value.get<Date>()) {
    const auto micros = date->time_since_epoch().count();
    const std::time_t seconds =
        std::chrono::floor<std::chrono::seconds>(*date).time_since_epoch().count();
    std::tm fields{};
    ::gmtime_r(&seconds, &fields);
    return fmt::format("{}-{:02}-{:02}T{:02}:{:02}:{:02}.{:06}Z", fields.tm_year + 1900,
                       fields.tm_mon + 1, fields.tm_mday, fields.tm_hour, fields.tm_min,
                       fields.tm_sec, micros - seconds * 1'000'000);
  }
  return "?";
}

}  // namespace

Result<Extraction, ExtractionFailure> extracted(const std::string& path) {
  static const auto extractors = [] {
    auto all = mailExtractors(types(),
                              [](std::string_view html) { return "<" + std::string(html) + ">"; });
    for (const auto more : {pictureExtractors, mediaExtractors, videoExtractors}) {
      std::ranges::move(more(types()), std::back_inserter(all));
    }
    return all;
  }();
  const ContentTypeId type = types().typeOfFile(path.substr(path.rfind('/') + 1));
  const Descriptor file(::open(path.c_str(), O_RDONLY | O_CLOEXEC));
  if (!file.isOpen()) return ExtractionFailure{ExtractionFailure::Kind::kUnreadable, "no file"};
  for (const auto& extractor : extractors) {
    if (extractor->takes(type)) return extractor->extract(file.get(), type);
  }
  return ExtractionFailure{ExtractionFailure::Kind::kUnavailable, "nobody takes it"};
}

std::vector<std::string> attributesIn(const std::string& path) {
  const auto found = extracted(path);
  if (!found) return {found.error().reason};
  std::vector<std::string> lines;
  for (const auto& [name, value] : found->attributes) lines.push_back(name + " " + shown(value));
  return lines;
}

std::string textIn(const std::string& path) {
  const auto found = extracted(path);
  if (!found) return "(" + found.error().reason + ")";
  return found->text.value_or("(none)");
}

std::vector<std::string> only(const std::vector<std::string>& names,
                              const std::vector<std::string>& lines) {
  std::vector<std::string> left;
  for (const std::string& line : lines) {
    const std::string name = line.substr(0, line.find(' '));
    if (std::ranges::find(names, name) != names.end()) left.push_back(line);
  }
  return left;
}

std::string outcomeOfMangled(const std::string& path, unsigned seed) {
  const std::string whole = readFile(path);
  const std::string damaged =
      path.substr(0, path.rfind('/') + 1) + "damaged" + path.substr(path.rfind('.'));
  const std::string outcome = inChildProcess([&] {
    constexpr unsigned kMostSeconds = 60;
    ::alarm(kMostSeconds);
    std::mt19937 random(seed);
    constexpr int kVersions = 24;
    for (int i = 0; i < kVersions; ++i) {
      std::string bytes = whole;
      if (i % 2 == 0) {
        bytes.resize(bytes.size() * static_cast<std::size_t>(i) / kVersions);
      } else {
        // Heads are what extractors look at.
        const std::size_t end =
            i % 4 == 1 ? std::min<std::size_t>(bytes.size(), 2048) : bytes.size();
        for (int change = 0; change < 1 << i % 7; ++change) {
          bytes[random() % end] = static_cast<char>(random());
        }
      }
      writeFile(damaged, bytes);
      const auto found = extracted(damaged);
      if (!found && found.error().reason.empty()) return std::string("a failure without a reason");
    }
    return std::string();
  });
  ::unlink(damaged.c_str());
  return outcome;
}

}  // namespace vt
