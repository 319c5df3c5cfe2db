#include <fmt/format.h>

#include <nlohmann/json.hpp>
#include <vector>

#include "foundation/UTF8.h"
#include "platform/Attributes.h"
#include "platform/Files.h"
#include "platform/Platform.h"
#include "scopes/VTConcreteSearchFolder.h"
#include "search/VTSearchResult.h"
#include "vistaro/CanonicalFolder.h"
#include "vistaro/CommandError.h"
#include "vistaro/Commands.h"
#include "vistaro/SettingsChange.h"
#include "vistaro/Terminal.h"
#include "vistaro/TypedFiles.h"

namespace vt::tool {
namespace {

using Json = nlohmann::ordered_json;

struct LinksOptions {
  std::vector<std::string> files;
  std::vector<std::string> paths;
  bool json = false;
};

/// How one file is reached.
struct FileLinks {
  std::string typed;
  std::string path;
  std::optional<std::string> afp;
  std::optional<std::string> smb;
  std::optional<std::string> windows;
  std::optional<std::string> local;

  bool isShared() const { return afp || smb; }
};

std::shared_ptr<ObjectArray<VTSearchFolder>> foldersFor(const LinksOptions& options) {
  if (options.paths.empty()) return readableSettings()->searchFolders();
  auto folders = ObjectArray<VTSearchFolder>::make();
  for (const std::string& path : options.paths) {
    folders->append(VTConcreteSearchFolder::initWithPath(canonicalFolder(path).string(), path));
  }
  return folders;
}

/// The files as one group of hits, for the operations that a page asks.
std::shared_ptr<VTSearchResult> groupOf(const std::vector<FileLinks>& files,
                                        std::shared_ptr<ObjectArray<VTSearchFolder>> folders) {
  auto records = ObjectArray<Dictionary>::make();
  for (const FileLinks& file : files) records->append(Dictionary::make({{kMDItemPath, file.path}}));
  return VTSearchResult::initWithGroupKind(/*groupKind=*/nullptr, std::move(records),
                                           std::move(folders), /*attributeKeys=*/{},
                                           /*user=*/nullptr);
}

std::vector<FileLinks> linksOf(const LinksOptions& options) {
  std::vector<FileLinks> files;
  for (const std::string& typed : options.files) {
    const std::string path = absolutePathOf(typed);
    if (Platform::current().files().exists(path)) {
      files.push_back({.typed = typed, .path = path, .afp{}, .smb{}, .windows{}, .local{}});
    } else {
      printError(describeUnreadable(typed));
    }
  }
  const auto group = groupOf(files, foldersFor(options));
  for (std::size_t i = 0; i < files.size(); ++i) {
    files[i].afp = group->afpURLPathForItemAtIndex(i);
    files[i].smb = group->smbURLPathForItemAtIndex(i, /*windowsClient=*/false);
    files[i].windows = group->smbURLPathForItemAtIndex(i, /*windowsClient=*/true);
    files[i].local =
        group->openURLPathForItemAtIndex(i, /*windowsClient=*/false, /*localClient=*/true);
  }
  return files;
}

void printJson(const std::vector<FileLinks>& files) {
  const auto textOrNull = [](const std::optional<std::string>& link) {
    return link ? Json(displayText(*link)) : Json(nullptr);
  };
  Json list = Json::array();
  for (const FileLinks& file : files) {
    list.push_back({{"path", displayText(file.path)},
                    {"afp", textOrNull(file.afp)},
                    {"smb", textOrNull(file.smb)},
                    {"windows", textOrNull(file.windows)},
                    {"local", textOrNull(file.local)}});
  }
  fmt::print("{}\n", list.dump(2));
}

void printText(const std::vector<FileLinks>& files) {
  const Terminal terminal = Terminal::standardOutput();
  const auto show = [](std::string_view label, const std::optional<std::string>& link) {
    if (link) fmt::print("    {:<8} {}\n", label, printable(*link));
  };
  for (const FileLinks& file : files) {
    if (!file.isShared()) continue;
    fmt::print("{}\n", terminal.bold(printable(file.typed)));
    show("AFP", file.afp);
    show("SMB", file.smb);
    show("Windows", file.windows);
    show("local", file.local);
  }
}

int runLinks(const LinksOptions& options) {
  const std::vector<FileLinks> files = linksOf(options);
  bool isAnyShared = false;
  for (const FileLinks& file : files) {
    isAnyShared = isAnyShared || file.isShared();
    if (!file.isShared()) {
      printError(fmt::format("{}: in no search folder that is shared", printable(file.typed)));
    }
  }
  if (options.json) {
    printJson(files);
  } else {
    printText(files);
  }
  return isAnyShared ? kFound : kNothingFound;
}

}  // namespace

void addLinksCommand(CLI::App& app, int& status) {
  auto options = std::make_shared<LinksOptions>();
  CLI::App* command =
      app.add_subcommand("links", "Tell the links that open files over the network");
  addFileArguments(*command, options->files);
  command
      ->add_option("--path", options->paths,
                   "Take this for a search folder; repeat for several.\n"
                   "Without it, the search folders of the settings")
      ->type_name("DIR")
      ->allow_extra_args(false);
  command->add_flag("--json", options->json, "Print JSON");
  command->callback(
      [options, &status] { status = reportingErrors([&] { return runLinks(*options); }); });
}

}  // namespace vt::tool
