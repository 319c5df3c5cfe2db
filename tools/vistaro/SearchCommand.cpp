#include <memory>

#include "vistaro/Commands.h"
#include "vistaro/SearchExplanation.h"
#include "vistaro/SearchOptions.h"
#include "vistaro/SearchRun.h"
#include "vistaro/UsageError.h"

namespace vt::tool {

void addSearchCommand(CLI::App& app, int& status) {
  auto options = std::make_shared<SearchOptions>();
  CLI::App* command = app.add_subcommand(
      "search", "Find files by words, or by a query in the metadata query language");
  command
      ->add_option("words", options->words,
                   "Words that the name, text, tags or comment must hold, or a query such as\n"
                   "'kMDItemFSName == \"*.pdf\"c && kMDItemFSSize > 1000000'")
      ->required();
  command->add_option("--user", options->user, "Search on behalf of this user (root only)")
      ->type_name("USER");
  command
      ->add_option("--path", options->paths,
                   "Search below this folder; repeat for several.\n"
                   "Without it, the search folders of the settings")
      ->type_name("DIR")
      ->allow_extra_args(false);  // one folder for each --path: what follows are words
  command
      ->add_option("--folder", options->folder,
                   "Search this search folder or group of the settings; `vistaro folders list`\n"
                   "names them")
      ->excludes("--path");
  command->add_option("--kind", options->kind, "Show only this kind; `vistaro kinds` lists them");
  command->add_option("--sort", options->sort,
                      "Sort each group by name, path, date, size or used (or the attribute's\n"
                      "name), ascending. Without it, newest first");
  command->add_flag("--descending", options->descending, "With --sort: descending")
      ->needs("--sort");
  command->add_option("--page", options->page, "Show this page of each group, from 1")
      ->transform(countingNumber());
  command->add_option("--per-page", options->perPage, "Files of each group on a page (25)")
      ->transform(countingNumber());
  command->add_flag("--json", options->json, "Print JSON, all pages unless one is asked for");
  command->add_flag("--raw", options->raw, "Take the words as a query, whatever they look like");
  command->add_flag(
      "--explain", options->explain,
      "Tell how the query was understood and answered, and why the user is not shown\n"
      "what was dropped (root only)");
  command->add_flag("--verbose", options->verbose, "Show the log of the search");
  command->callback([options, &status] {
    status = options->explain ? explainSearch(*options) : runSearch(*options);
  });
}

}  // namespace vt::tool
