#include "platform/linux/SambaConfiguration.h"

#include <errno.h>
#include <fmt/format.h>

#include <algorithm>
#include <charconv>
#include <system_error>

#include "foundation/TextFolding.h"
#include "platform/Tasks.h"

namespace vt {
namespace {

constexpr std::string_view kShare = "Samba share";
constexpr const char* kProgram = "testparm";
// Sections that offer something else than a folder of their own.
constexpr const char* kNoFolders[] = {"homes", "printers", "print$", "ipc$"};

std::vector<ConfigurationSection> sectionsOf(std::string_view output) {
  std::vector<ConfigurationSection> sections;
  while (!output.empty()) {
    const std::string_view line = cutLine(output);
    if (line.starts_with('[') && line.ends_with(']')) {
      sections.push_back({std::string(line.substr(1, line.size() - 2)), {}});
      continue;
    }
    const std::size_t equals = line.find('=');
    if (!line.starts_with('\t') || equals == line.npos || sections.empty()) continue;
    sections.back().values.emplace_back(trimmed(line.substr(0, equals)),
                                        trimmed(line.substr(equals + 1)));
  }
  return sections;
}

bool isYes(const std::string* value, bool whenAbsent) {
  return value ? *value == "Yes" : whenAbsent;
}

std::size_t numberIn(const std::string* value) {
  std::size_t number = 0;
  if (value) std::from_chars(value->data(), value->data() + value->size(), number);
  return number;
}

/// What holds for every share that does not say otherwise.
struct Defaults {
  bool available = true;
  bool printable = false;
  std::string path;
};

/// Samba takes a pair of quotes around a path away, unless there are more inside.
std::string_view withoutQuotes(std::string_view path) {
  if (path.size() < 2 || !path.starts_with('"') || !path.ends_with('"')) return path;
  const std::string_view inner = path.substr(1, path.size() - 2);
  return inner.find('"') == inner.npos ? inner : path;
}

/// Whether Samba puts something into the path that depends on who asks or when: "%U", "%$(NAME)".
bool holdsVariable(std::string_view path) {
  constexpr std::string_view kVariables = "DGHIJLMNPRSTUVadghijmptuvw$";
  for (std::size_t at = 0; (at = path.find('%', at)) != path.npos; ++at) {
    if (at + 1 < path.size() && kVariables.find(path[at + 1]) != path.npos) return true;
  }
  return false;
}

void addShare(const ConfigurationSection& section, const Defaults& defaults,
              SharedFolders& shares) {
  if (isYes(section.find("printable"), defaults.printable)) return;
  const std::string* own = section.find("path");
  const std::string_view path = withoutQuotes(own ? *own : defaults.path);
  if (path.empty()) return shares.addNote(kShare, section.name, "it has no path");
  if (!isYes(section.find("available"), defaults.available)) {
    return shares.addNote(kShare, section.name, "it is not available");
  }
  if (holdsVariable(path)) {
    return shares.addNote(kShare, section.name,
                          fmt::format("its path \"{}\" depends on who asks", path));
  }
  shares.add(kShare, section.name, path);
}

/// What testparm complains of, in one line.
std::string complaintIn(std::string_view errors) {
  constexpr std::size_t kLongest = 500;
  std::string complaint;
  while (!errors.empty() && complaint.size() < kLongest) {
    const std::string_view line = trimmed(cutLine(errors));
    if (line.empty() || line.starts_with("Load smb config files from")) continue;
    if (!complaint.empty()) complaint += ' ';
    complaint += line;
  }
  return complaint.empty() ? "it says nothing" : complaint;
}

ConfigurationError errorOf(const TaskResult& result, const std::string& file) {
  const std::string task = fmt::format("{} could not read {}", kProgram, file);
  switch (result.end) {
    case TaskEnd::kNotStarted:
      if (result.status == ENOENT) {
        return {fmt::format("Samba's program {} is not installed, so {} could not be read",
                            kProgram, file)};
      }
      return {fmt::format("{}: {}", task, std::generic_category().message(result.status))};
    case TaskEnd::kTimedOut:
      return {fmt::format("{}: it took too long", task)};
    case TaskEnd::kTooMuchOutput:
      return {fmt::format("{}: its output is too long", task)};
    case TaskEnd::kSignalled:
      return {fmt::format("{}: signal {}", task, result.status)};
    case TaskEnd::kExited:
    case TaskEnd::kUnknown:
      break;
  }
  return {fmt::format("{}: {}", task, complaintIn(result.errors))};
}

}  // namespace

std::string sambaName(std::string_view name) { return foldText(name, Folding::kCase); }

SambaConfiguration parseSambaConfiguration(std::string_view testparmOutput) {
  SambaConfiguration configuration;
  Defaults defaults;
  const std::vector<ConfigurationSection> sections = sectionsOf(testparmOutput);
  for (const ConfigurationSection& section : sections) {
    const std::string name = sambaName(section.name);
    configuration.sectionNames.insert(name);
    if (name == "global") {
      defaults.available = isYes(section.find("available"), defaults.available);
      defaults.printable = isYes(section.find("printable"), defaults.printable);
      if (const std::string* path = section.find("path")) defaults.path = *path;
      const std::string* folder = section.find("usershare path");
      configuration.usershareFolder = folder ? withoutQuotes(*folder) : "";
      configuration.usershareLimit = numberIn(section.find("usershare max shares"));
      configuration.userSharesOwnOnly =
          isYes(section.find("usershare owner only"), configuration.userSharesOwnOnly);
    } else if (std::ranges::find(kNoFolders, name) == std::end(kNoFolders)) {
      addShare(section, defaults, configuration.shares);
    }
  }
  return configuration;
}

Result<SambaConfiguration, ConfigurationError> readSambaConfiguration(Tasks& tasks,
                                                                      const std::string& file) {
  // -v: with the defaults, which differ from one build of Samba to the next. -l: without checks of
  // what lies around, since a missing lock folder says nothing about the shares.
  const TaskResult result = tasks.run({.program = kProgram, .arguments = {"-s", "-l", "-v", file}});
  if (!result.succeeded()) return errorOf(result, file);
  return parseSambaConfiguration(result.output);
}

}  // namespace vt
