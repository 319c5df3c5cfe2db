#include <fmt/format.h>

#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/Attributes.h"
#include "platform/Files.h"
#include "platform/Identity.h"
#include "platform/Platform.h"
#include "platform/linux/AccountRecords.h"
#include "search/ImageMaker.h"
#include "search/VTSearchResult.h"
#include "settings/VTSettings.h"
#include "vistaro/CanonicalFolder.h"
#include "vistaro/CommandError.h"
#include "vistaro/Commands.h"
#include "vistaro/OnBehalf.h"
#include "vistaro/ProgressLine.h"
#include "vistaro/Terminal.h"
#include "vistaro/TypedFiles.h"

namespace vt::tool {
namespace {

struct ThumbnailOptions {
  std::vector<std::string> files;
  std::optional<std::string> user;
  std::optional<std::string> folder;
  std::optional<unsigned> size;
  bool isSmall = false;
};

struct PreviewOptions {
  std::string file;
  std::optional<std::string> user;
};

std::shared_ptr<VTSearchResult> groupOf(const std::string& path, std::shared_ptr<VTUser> user) {
  const auto records =
      VTSearchResult::Records::make({Dictionary::make({{kMDItemPath, Value(path)}})});
  return VTSearchResult::initWithGroupKind(/*groupKind=*/nullptr, records,
                                           /*searchFolders=*/nullptr, /*attributeKeys=*/{},
                                           std::move(user));
}

/// Tells on a terminal how many files are done; gone when it ends.
class Progress {
 public:
  explicit Progress(std::size_t count)
      : count_(count), isShown_(count > 1 && Terminal::obeysEscapes(STDERR_FILENO)) {}
  Progress(const Progress&) = delete;
  Progress& operator=(const Progress&) = delete;
  ~Progress() { clear(); }

  void show(std::size_t done) {
    if (!isShown_) return;
    showOnTerminal(line_.update(ProgressLine::Clock::now(),
                                [&] { return fmt::format("{} of {} thumbnails", done, count_); }));
  }
  void clear() { showOnTerminal(line_.remove()); }

 private:
  std::size_t count_;
  bool isShown_;
  ProgressLine line_{ProgressLine::Clock::now()};
};

/// The thumbnail of the file, made when need be; nothing when the user may not read the file, or
/// none can be made.
std::optional<std::string> thumbnailOf(const std::string& path, const ThumbnailOptions& options,
                                       const std::shared_ptr<VTUser>& user) {
  if (!mayReadSource(path, user.get())) return std::nullopt;
  const auto group = groupOf(path, user);
  if (options.size) {
    const std::string name = path.substr(path.rfind('/') + 1);
    std::string target = canonicalFolder(*options.folder).string() + "/" + name + ".png";
    const double side = *options.size;
    if (!group->buildThumbnailForFile(path, target, /*iconMode=*/false, side, side)) {
      return std::nullopt;
    }
    return target;
  }
  group->buildThumbnailsForFiles({path}, options.isSmall);
  return VTSearchResult::validThumbnailForFile(
      path, VTSettings::sharedInstance()->thumbnailCacheDirectory(), options.isSmall);
}

int runThumbnail(const ThumbnailOptions& options) {
  if (options.size.has_value() != options.folder.has_value()) {
    throw CommandError{kUsage, "--size and --output go together"};
  }
  const std::shared_ptr<VTUser> user = userOnBehalf(options.user, "look at files");
  std::size_t made = 0;
  std::size_t done = 0;
  Progress progress(options.files.size());
  for (const std::string& typed : options.files) {
    progress.show(done++);
    const std::optional<std::string> thumbnail = thumbnailOf(absolutePathOf(typed), options, user);
    progress.clear();
    if (thumbnail) {
      fmt::print("{}\n", *thumbnail);
      ++made;
    } else {
      printError(fmt::format("{}: no thumbnail can be made", printable(typed)));
    }
  }
  return made > 0 ? kFound : kNothingFound;
}

/// The account of whoever runs the command.
std::shared_ptr<VTUser> self() {
  const Platform& platform = Platform::current();
  const auto account =
      accountsUnder(platform.systemPath(""))->accountWithId(platform.identity().geteuid());
  std::shared_ptr<VTUser> user = account ? VTUser::userWithName(account->name) : nullptr;
  if (!user) throw CommandError{kFailure, "you have no account here; name one with --user"};
  return user;
}

int runPreview(const PreviewOptions& options) {
  std::shared_ptr<VTUser> user = userOnBehalf(options.user, "look at files");
  if (!user) user = self();
  const std::string path = absolutePathOf(options.file);
  const std::optional<std::string> preview =
      mayReadSource(path, user.get()) ? groupOf(path, user)->buildPreviewForItemAtIndex(0)
                                      : std::nullopt;
  if (!preview) {
    printError(fmt::format("{}: no preview can be made", printable(options.file)));
    return kNothingFound;
  }
  fmt::print("{}\n", *preview);
  return kFound;
}

}  // namespace

void addThumbnailCommand(CLI::App& app, int& status) {
  auto options = std::make_shared<ThumbnailOptions>();
  CLI::App* command = app.add_subcommand(
      "thumbnail", "Make the thumbnails of files where they are missing or old, and tell where");
  addFileArguments(*command, options->files);
  CLI::Option* small = command->add_flag("--small", options->isSmall, "65 pixels instead of 128");
  command
      ->add_option("--size", options->size,
                   "Fit into so many pixels, into a folder of yours instead of the cache")
      ->type_name("N")
      ->check(CLI::Range(1U, static_cast<unsigned>(Images::kMostPixels)))
      ->excludes(small);
  command->add_option("--output", options->folder, "The folder that --size writes NAME.png to")
      ->type_name("DIR");
  command->add_option("--user", options->user, "With the rights of this user (root only)")
      ->type_name("USER");
  command->callback(
      [options, &status] { status = reportingErrors([&] { return runThumbnail(*options); }); });
}

void addPreviewCommand(CLI::App& app, int& status) {
  auto options = std::make_shared<PreviewOptions>();
  CLI::App* command =
      app.add_subcommand("preview", "Make a large picture of a file, and tell where");
  command->add_option("file", options->file, "The file")->required()->type_name("FILE");
  command->add_option("--user", options->user, "For this user, with their rights (root only)")
      ->type_name("USER");
  command->callback(
      [options, &status] { status = reportingErrors([&] { return runPreview(*options); }); });
}

}  // namespace vt::tool
