#include "platform/linux/Environment.h"

#include <fmt/format.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <unistd.h>

#include <optional>

#include "platform/linux/Languages.h"
#include "platform/linux/PosixFiles.h"

namespace vt {
namespace {

constexpr std::uint32_t kWritableByOthers = 022;

struct Variable {
  const char* name;
  bool mayBeMissing;  // the folder is made on first use
};

constexpr Variable kRoot{"VISTARO_ROOT", false};
constexpr Variable kIndex{"VISTARO_INDEX", true};
constexpr Variable kResources{"VISTARO_RESOURCES", false};

std::string withoutTrailingSlashes(std::string path) {
  while (path.ends_with('/')) path.pop_back();
  return path;
}

std::optional<EnvironmentError> refusalForRoot(const Variable& variable, const std::string& path) {
  const PosixFiles files;
  std::string judged = path.empty() ? "/" : path;
  std::optional<FileRights> status = files.status(judged);
  if (!status && variable.mayBeMissing) {
    judged = judged.substr(0, judged.rfind('/') + 1);
    status = files.status(judged);
  }
  if (!status) return EnvironmentError{fmt::format("{}: {} is missing", variable.name, judged)};
  if (status->ownerId != 0) {
    return EnvironmentError{fmt::format("{}: {} is not owned by root", variable.name, judged)};
  }
  if ((status->permissions & kWritableByOthers) != 0) {
    return EnvironmentError{
        fmt::format("{}: {} can be written by others than root", variable.name, judged)};
  }
  return std::nullopt;
}

// The folder that the variable names, without trailing slashes; nothing when it is unset.
Result<std::optional<std::string>, EnvironmentError> folderOf(const Variable& variable,
                                                              const EnvironmentLookup& lookup,
                                                              std::uint64_t effectiveUser) {
  const char* value = lookup(variable.name);
  if (!value || *value == '\0') return std::optional<std::string>();
  if (*value != '/') {
    return EnvironmentError{fmt::format("{}: {} is not an absolute path", variable.name, value)};
  }
  const std::string path = withoutTrailingSlashes(value);
  if (effectiveUser == 0) {
    if (std::optional<EnvironmentError> refusal = refusalForRoot(variable, path)) return *refusal;
  }
  return std::optional<std::string>(path);
}

}  // namespace

Result<Environment, EnvironmentError> readEnvironment(const EnvironmentLookup& lookup,
                                                      std::uint64_t effectiveUser) {
  const auto root = folderOf(kRoot, lookup, effectiveUser);
  if (!root) return root.error();
  const auto index = folderOf(kIndex, lookup, effectiveUser);
  if (!index) return index.error();
  const auto resources = folderOf(kResources, lookup, effectiveUser);
  if (!resources) return resources.error();
  Environment environment;
  environment.rootPrefix = root->value_or("");
  environment.indexFolder = index->value_or(environment.rootPrefix + "/var/lib/vistaro/index");
  environment.resourceFolder = resources->value_or(VT_DEFAULT_RESOURCE_FOLDER);
  environment.languages = preferredLanguages(lookup);
  return environment;
}

Result<Environment, EnvironmentError> readEnvironment() {
  return readEnvironment([](const char* variable) { return ::secure_getenv(variable); },
                         ::geteuid());
}

}  // namespace vt
