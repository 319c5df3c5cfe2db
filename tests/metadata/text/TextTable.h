#pragma once

#include <cstdint>
#include <stdexcept>
#include <string_view>
#include <vector>

#include "metadata/store/Bitmap.h"
#include "metadata/text/ContentTokenizer.h"
#include "metadata/text/TextIndex.h"
#include "support/TemporaryFolder.h"

namespace vt {

/// A text index in a database of its own. Throws what goes wrong.
class TextTable {
 public:
  TextTable() : database_(made(folder_ / "texts")), index_(opened(database_)) {}

  /// Adds a document and gives its number, from 1 on.
  std::uint32_t add(std::string_view text) {
    refuse(index_.add(++documents_, text));
    refuse(index_.finishAdding());
    return documents_;
  }
  TextIndex& index() { return index_; }
  const Database& database() const { return database_; }

  /// The numbers of the documents that match.
  std::vector<std::size_t> find(const ContentQuery& question) {
    const Result<Bitmap, StoreError> found = index_.documents(question, documents_ + 1);
    if (!found) throw std::runtime_error(found.error().reason);
    std::vector<std::size_t> numbers;
    found->forEach([&](std::size_t number) { numbers.push_back(number); });
    return numbers;
  }

 private:
  static void refuse(const StoreFailure& failure) {
    if (failure) throw std::runtime_error(failure->reason);
  }
  static Database made(const std::string& path) {
    Result<Database, StoreError> database = Database::openForWriting(path);
    if (!database) throw std::runtime_error(database.error().reason);
    refuse(database->execute("PRAGMA synchronous = OFF"));  // nobody reads it again
    refuse(addContentTokenizer(*database));
    refuse(database->execute(TextIndex::schema().c_str()));
    return std::move(database).value();
  }
  static TextIndex opened(const Database& database) {
    Result<TextIndex, StoreError> index = TextIndex::of(database, kMostPlaces);
    if (!index) throw std::runtime_error(index.error().reason);
    return std::move(index).value();
  }

  // So few that phrases of patterns take several rounds.
  static constexpr std::size_t kMostPlaces = 20;

  TemporaryFolder folder_;
  Database database_;
  TextIndex index_;
  std::uint32_t documents_ = 0;
};

}  // namespace vt
