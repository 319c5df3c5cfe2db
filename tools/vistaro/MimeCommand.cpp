#include <fmt/format.h>

#include <algorithm>
#include <nlohmann/json.hpp>
#include <vector>

#include "foundation/UTF8.h"
#include "platform/Attributes.h"
#include "platform/MetadataIndex.h"
#include "platform/Platform.h"
#include "util/NSFileManagerAdditions.h"
#include "vistaro/CommandError.h"
#include "vistaro/Commands.h"
#include "vistaro/Terminal.h"
#include "vistaro/TypedFiles.h"

namespace vt::tool {
namespace {

using Json = nlohmann::ordered_json;

struct MimeOptions {
  std::vector<std::string> files;
  bool json = false;
};

struct TypedFile {
  std::string typed;
  std::string path;
  std::optional<std::string> contentType;  // nothing for a file that may not be read
  std::optional<std::string> mimeType;
};

std::optional<std::string> contentTypeAtPath(const std::string& path) {
  MetadataIndex& index = Platform::current().metadataIndex();
  const std::shared_ptr<MDItem> item = index.MDItemCreate(path);
  const std::optional<Value> type =
      item ? index.MDItemCopyAttribute(*item, kMDItemContentType) : std::nullopt;
  const std::string* identifier = type ? type->get<std::string>() : nullptr;
  return identifier ? std::optional(*identifier) : std::nullopt;
}

std::string jsonOf(const std::vector<TypedFile>& files) {
  const auto textOrNull = [](const std::optional<std::string>& text) {
    return text ? Json(*text) : Json(nullptr);
  };
  Json list = Json::array();
  for (const TypedFile& file : files) {
    Json entry = Json::object();
    entry["path"] = displayText(file.path);
    entry["contentType"] = textOrNull(file.contentType);
    entry["mimeType"] = textOrNull(file.mimeType);
    list.push_back(std::move(entry));
  }
  return list.dump(2) + '\n';
}

std::string textOf(const std::vector<TypedFile>& files) {
  std::size_t mimeColumns = 1;
  std::size_t typeColumns = 1;
  for (const TypedFile& file : files) {
    mimeColumns = std::max(mimeColumns, file.mimeType.value_or("").size());
    typeColumns = std::max(typeColumns, file.contentType.value_or("").size());
  }
  std::string text;
  for (const TypedFile& file : files) {
    if (!file.contentType) continue;
    text += fmt::format("{}  {}  {}\n", padded(file.mimeType.value_or("-"), mimeColumns),
                        padded(*file.contentType, typeColumns), printable(file.typed));
  }
  return text;
}

int runMime(const MimeOptions& options) {
  if (!Platform::current().hasMetadataIndex()) {
    throw CommandError{kFailure,
                       "the tables of types and attributes cannot be read; "
                       "`vistaro doctor` tells more"};
  }
  std::vector<TypedFile> files;
  for (const std::string& typed : options.files) {
    const std::string path = absolutePathOf(typed);
    files.push_back({typed, path, contentTypeAtPath(path), mimeTypeAtPath(path)});
    if (!files.back().contentType) printError(describeUnreadable(typed));
  }
  fmt::print("{}", options.json ? jsonOf(files) : textOf(files));
  return std::ranges::any_of(files, [](const TypedFile& file) { return file.mimeType.has_value(); })
             ? kFound
             : kNothingFound;
}

}  // namespace

void addMimeCommand(CLI::App& app, int& status) {
  auto options = std::make_shared<MimeOptions>();
  CLI::App* command = app.add_subcommand("mime", "Tell the MIME type and the type of files");
  addFileArguments(*command, options->files);
  command->add_flag("--json", options->json, "Print JSON");
  command->callback(
      [options, &status] { status = reportingErrors([&] { return runMime(*options); }); });
}

}  // namespace vt::tool
