#include <memory>

#include "platform/linux/Environment.h"
#include "vistaro/CommandError.h"
#include "vistaro/Commands.h"
#include "vistaro/IndexOptions.h"
#include "vistaro/IndexReport.h"
#include "vistaro/IndexRun.h"

namespace vt::tool {
namespace {

int runIndex(const IndexOptions& options) {
  const Result<Environment, EnvironmentError> environment = readEnvironment();
  if (!environment) throw CommandError{kFailure, environment.error().text};
  const std::string& folder = environment->indexFolder;
  if (options.status) return reportIndex(folder, options.json);
  return options.verify ? verifyIndex(folder) : runIndexer(options, folder);
}

}  // namespace

void addIndexCommand(CLI::App& app, int& status) {
  auto options = std::make_shared<IndexOptions>();
  CLI::App* command = app.add_subcommand(
      "index", "Make the index that searches are answered from, and keep it fresh until stopped");
  CLI::Option* folders =
      command
          ->add_option("folders", options->folders,
                       "Index what is below these folders, and nothing else. Without them, the\n"
                       "search folders of the settings as they are before each crawl")
          ->type_name("DIR");
  CLI::Option* once = command->add_flag("--once", options->once, "Crawl once and end");
  CLI::Option* watch =
      command
          ->add_flag("--watch", options->watch,
                     "Publish what changes as soon as it does, instead of crawling every some\n"
                     "minutes")
          ->excludes(once);
  CLI::Option* every =
      command
          ->add_option("--every", options->minutes,
                       "Begin a crawl every so many minutes, 1 to 10 (5). SIGUSR1 begins one at\n"
                       "once. With --watch only of what can't be watched")
          ->type_name("MINUTES")
          ->check(CLI::Range(1, 10))
          ->excludes(once);
  CLI::Option* crawlEvery = command
                                ->add_option("--crawl-every", options->crawlHours,
                                             "With --watch: crawl everything every so many hours,\n"
                                             "1 to 168 (24), for what a watch can't see")
                                ->type_name("HOURS")
                                ->check(CLI::Range(1, 168))
                                ->needs(watch);
  CLI::Option* namesOnly = command->add_flag(
      "--names-only", options->namesOnly, "Look into no file: only names and the like are found");
  CLI::Option* report =
      command
          ->add_flag("--status", options->status, "Tell what the index holds and how fresh it is")
          ->excludes(folders)
          ->excludes(once)
          ->excludes(watch)
          ->excludes(every)
          ->excludes(crawlEvery)
          ->excludes(namesOnly);
  command->add_flag("--verify", options->verify, "Check every byte of the index")
      ->excludes(folders)
      ->excludes(once)
      ->excludes(watch)
      ->excludes(every)
      ->excludes(crawlEvery)
      ->excludes(namesOnly)
      ->excludes(report);
  command->add_flag("--json", options->json, "With --status: print JSON")->needs(report);
  command->callback(
      [options, &status] { status = reportingErrors([&] { return runIndex(*options); }); });
}

}  // namespace vt::tool
