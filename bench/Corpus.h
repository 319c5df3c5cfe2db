#pragma once

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "ProgramRun.h"
#include "support/Places.h"
#include "support/TemporaryFolder.h"

namespace vt {

/// The tree that script/bench-corpus has made, an index of it, and databases of plocate.
class Corpus {
 public:
  /// `folder` is what that script prints; there must be a tree and "summary.json" in it.
  explicit Corpus(const std::filesystem::path& folder)
      : tree(std::filesystem::canonical(folder / "tree")),
        root(std::filesystem::canonical(folder / "root")),
        summary_(nlohmann::json::parse(std::ifstream(folder / "summary.json"))) {
    setenv("VISTARO_ROOT", root.c_str(), 1);
    setenv("VISTARO_INDEX", indexFolder().c_str(), 1);
    setenv("VISTARO_RESOURCES", resourceFolder().c_str(), 1);
  }

  /// A word of file names: "rare", "medium" or "common".
  std::string word(const char* frequency) const {
    return summary_.at("name_words").at(frequency).at(1).at("word");
  }

  /// A word of texts, likewise; the tree must be of files with content.
  std::string contentWord(const char* frequency) const {
    return summary_.at("content_words").at(frequency).at(1).at("word");
  }
  /// What several words of texts begin with: four letters or more.
  std::string contentPrefix() const { return summary_.at("content_prefixes").back().at("prefix"); }

  std::string indexFolder() const { return place_ / "index"; }
  /// Indexes the tree from the beginning, as a process of its own.
  ProgramRun index() const {
    std::filesystem::remove_all(indexFolder());
    return indexAgain();
  }
  /// The same with what there is remembered.
  ProgramRun indexAgain() const {
    return runMeasured({builtProgram("vistaro"), "index", "--once", tree});
  }
  /// Likewise, without a look into files.
  ProgramRun indexNames() const {
    std::filesystem::remove_all(indexFolder());
    return indexNamesAgain();
  }
  ProgramRun indexNamesAgain() const {
    return runMeasured({builtProgram("vistaro"), "index", "--once", "--names-only", tree});
  }

  std::string database() const { return place_ / "all.db"; }
  std::string guardedDatabase() const { return place_ / "guarded.db"; }
  /// Has updatedb make plocate's database from the beginning.
  ProgramRun updatedb() const {
    std::filesystem::remove(database());
    return updatedbAgain();
  }
  /// The same with what there is remembered.
  ProgramRun updatedbAgain() const { return runMeasured(updatedbCommand("0", database())); }
  /// One that asks for each file whether the user may see it.
  void makeGuardedDatabase() const {
    runMeasured(updatedbCommand("1", guardedDatabase()));
    std::filesystem::permissions(guardedDatabase(), std::filesystem::perms(0644));
  }

  std::string tree;
  std::string root;  ///< root prefix with the accounts of the tree's owners

 private:
  std::vector<std::string> updatedbCommand(const char* isGuarded, const std::string& to) const {
    return {"updatedb", "-l",           isGuarded, "-o",        to, "-U",
            tree,       "--prunepaths", "",        "--prunefs", "", "--prune-bind-mounts",
            "no"};
  }

  nlohmann::json summary_;
  TemporaryFolder place_;
};

}  // namespace vt
