#include "metadata/types/ContentTypesParser.h"

#include <algorithm>
#include <limits>
#include <utility>

#include "foundation/AsciiCase.h"

namespace vt {
namespace {

constexpr std::string_view kHeader =
    "identifier\tconforms_to\textensions\tmime_types\tdescription\tother_form";
constexpr std::size_t kColumns = 6;
constexpr std::size_t kMostTypes = std::numeric_limits<ContentTypeId>::max();

/// The piece up to the next separator, which is taken off `text` together with it.
std::string_view takePiece(std::string_view& text, char separator) {
  const std::size_t end = std::min(text.find(separator), text.size());
  const std::string_view piece = text.substr(0, end);
  text.remove_prefix(std::min(end + 1, text.size()));
  return piece;
}

/// How often `c` is in the text; rarely, so that searching is quicker than comparing.
std::size_t countOf(char c, std::string_view text) {
  std::size_t count = 0;
  for (std::size_t at = text.find(c); at != std::string_view::npos; at = text.find(c, at + 1)) {
    ++count;
  }
  return count;
}

/// Calls `use` with each piece between commas; never for an empty text.
template <class Use>
void forEachListed(std::string_view text, const Use& use) {
  if (text.empty()) return;
  const bool hasEmptyLast = text.back() == ',';
  while (!text.empty()) use(takePiece(text, ','));
  if (hasEmptyLast) use(std::string_view());
}

}  // namespace

Result<ContentTypes, ContentTypesError> ContentTypes::parse(std::string_view tsv) {
  return ContentTypesParser().parse(tsv);
}

Result<ContentTypes, ContentTypesError> ContentTypesParser::parse(std::string_view tsv) {
  makeRoom(tsv);
  const bool isRight = readRows({table_.text_.data(), tsv.size()}) && resolveParents() &&
                       buildTrees() && findFallbacks() && assignExtensions();
  if (!isRight) return error_;
  return std::move(table_);
}

bool ContentTypesParser::fail(std::size_t line, std::string reason) {
  error_ = {line, std::move(reason)};
  return false;
}

void ContentTypesParser::makeRoom(std::string_view tsv) {
  const std::size_t rows = countOf('\n', tsv) + 1;
  // Each element of a list but the first has a comma before it, and a row has three lists.
  const std::size_t listed = countOf(',', tsv) + 3 * rows;
  table_.text_.assign(tsv.begin(), tsv.end());
  table_.lowerText_.resize(tsv.size());
  table_.names_.reserve(listed);
  table_.parents_.reserve(listed);
  table_.types_.reserve(rows);
  table_.byIdentifier_ = TypeByText(rows);
  rows_.reserve(rows);
}

std::string_view ContentTypesParser::lowercase(std::string_view piece) {
  char* const lower = table_.lowerText_.data() + (piece.data() - table_.text_.data());
  std::ranges::transform(piece, lower, asciiLower);
  return {lower, piece.size()};
}

bool ContentTypesParser::readRows(std::string_view tsv) {
  while (!tsv.empty()) {
    const std::string_view line = takePiece(tsv, '\n');
    ++line_;
    if (line_ == 1) {
      if (line != kHeader) return fail(line_, "its first line does not name the columns");
    } else if (!readRow(line)) {
      return false;
    }
  }
  return line_ > 0 || fail(1, "it is empty");
}

bool ContentTypesParser::readRow(std::string_view line) {
  if (countOf('\t', line) != kColumns - 1) {
    return fail(line_, "a row has not six columns");
  }
  const std::string_view identifier = takePiece(line, '\t');
  const std::string_view parents = takePiece(line, '\t');
  const std::string_view extensions = takePiece(line, '\t');
  const std::string_view mimeTypes = takePiece(line, '\t');
  const std::string_view description = takePiece(line, '\t');
  if (identifier.empty()) return fail(line_, "a row has no identifier");
  if (table_.types_.size() == kMostTypes) return fail(line_, "it has too many rows");

  const auto id = static_cast<ContentTypeId>(table_.types_.size());
  if (!table_.byIdentifier_.add(lowercase(identifier), id)) {
    return fail(line_, "\"" + std::string(identifier) + "\" is listed twice");
  }
  ContentType& type = table_.types_.emplace_back();
  type.identifier = identifier;
  type.description = description;
  bool isEachNamed = true;
  std::vector<std::string_view>& names = table_.names_;
  const std::size_t firstExtension = names.size();
  forEachListed(extensions, [&](std::string_view extension) {
    isEachNamed = isEachNamed && !extension.empty();
    names.push_back(lowercase(extension));
  });
  type.extensions = std::span(names).subspan(firstExtension);
  if (!isEachNamed) return fail(line_, "an extension is empty");
  const std::size_t firstMimeType = names.size();
  forEachListed(mimeTypes, [&](std::string_view mimeType) {
    // "text/*" says what conforms to the type, and is no type that a file could have.
    if (mimeType.find('*') == std::string_view::npos) names.push_back(mimeType);
  });
  type.mimeTypes = std::span(names).subspan(firstMimeType);
  rows_.push_back({line_, parents, line});
  return true;
}

std::optional<ContentTypeId> ContentTypesParser::need(std::string_view identifier,
                                                      std::size_t line) {
  const std::optional<ContentTypeId> type = table_.find(identifier);
  if (!type) fail(line, "there is no type \"" + std::string(identifier) + "\"");
  return type;
}

bool ContentTypesParser::resolveParents() {
  for (std::size_t id = 0; id < rows_.size(); ++id) {
    const std::size_t first = table_.parents_.size();
    bool isEachListed = true;
    forEachListed(rows_[id].parents, [&](std::string_view name) {
      const std::optional<ContentTypeId> parent =
          isEachListed ? need(name, rows_[id].line) : std::nullopt;
      isEachListed = parent.has_value();
      if (parent) table_.parents_.push_back(*parent);
    });
    if (!isEachListed) return false;
    table_.types_[id].parents = std::span(table_.parents_).subspan(first);
  }
  return true;
}

bool ContentTypesParser::buildTrees() {
  std::vector<ContentTypeId> tree;
  std::vector<ContentTypeId> ring;
  std::vector<ContentTypeId> next;
  std::vector<std::size_t> ends;  // of the trees
  ends.reserve(rows_.size());
  for (std::size_t id = 0; id < rows_.size(); ++id) {
    // Breadth first; a type that is met again further out moves there, so that it comes after
    // everything that conforms to it. A path longer than the table has types goes in a circle.
    tree.clear();
    ring.assign(1, static_cast<ContentTypeId>(id));
    for (std::size_t distance = 0; !ring.empty(); ++distance) {
      if (distance > rows_.size()) {
        return fail(
            rows_[id].line,
            "the parents of \"" + std::string(table_.types_[id].identifier) + "\" go in a circle");
      }
      next.clear();
      for (const ContentTypeId member : ring) {
        std::erase(tree, member);
        tree.push_back(member);
        for (const ContentTypeId parent : table_.types_[member].parents) {
          if (std::ranges::find(next, parent) == next.end()) next.push_back(parent);
        }
      }
      ring.swap(next);
    }
    table_.trees_.insert(table_.trees_.end(), tree.begin(), tree.end());
    ends.push_back(table_.trees_.size());
  }
  std::size_t begin = 0;
  for (std::size_t id = 0; id < rows_.size(); begin = ends[id++]) {
    table_.types_[id].tree = std::span(table_.trees_).subspan(begin, ends[id] - begin);
  }
  table_.treeIdentifiers_.resize(rows_.size());
  return true;
}

bool ContentTypesParser::findFallbacks() {
  const std::size_t end = line_ + 1;
  const struct {
    std::string_view identifier;
    ContentTypeId* place;
  } fallbacks[] = {{"public.data", &table_.data_},
                   {"public.folder", &table_.folder_},
                   {"public.symlink", &table_.link_},
                   {"public.item", &table_.item_}};
  for (const auto& fallback : fallbacks) {
    const std::optional<ContentTypeId> type = need(fallback.identifier, end);
    if (!type) return false;
    *fallback.place = *type;
  }
  return need("public.directory", end).has_value();
}

bool ContentTypesParser::assignExtensions() {
  const ContentTypeId directory = *table_.find("public.directory");
  std::size_t extensions = 0;
  for (const ContentType& type : table_.types_) extensions += type.extensions.size();
  table_.fileTypes_ = TypeByText(extensions);
  table_.folderTypes_ = TypeByText(extensions);
  TypeByText owners(extensions);  // for the check below
  for (std::size_t i = 0; i < rows_.size(); ++i) {
    const auto id = static_cast<ContentTypeId>(i);
    const bool isForFolders = table_.conforms(id, directory);
    std::optional<ContentTypeId> otherForm;
    if (!rows_[i].otherForm.empty()) {
      otherForm = need(rows_[i].otherForm, rows_[i].line);
      if (!otherForm) return false;
      if (table_.conforms(*otherForm, directory) == isForFolders) {
        return fail(rows_[i].line, "the other form of a package is a file and of a file a package");
      }
    }
    for (const std::string_view extension : table_.types_[i].extensions) {
      if (!owners.add(extension, id)) {
        return fail(rows_[i].line,
                    "the extension \"" + std::string(extension) + "\" is listed twice");
      }
      (isForFolders ? table_.folderTypes_ : table_.fileTypes_).add(extension, id);
      if (otherForm) {
        (isForFolders ? table_.fileTypes_ : table_.folderTypes_).add(extension, *otherForm);
      }
      table_.longestExtension_ = std::max(table_.longestExtension_, extension.size());
      table_.mostDots_ =
          std::max(table_.mostDots_, static_cast<std::size_t>(std::ranges::count(extension, '.')));
    }
  }
  return true;
}

}  // namespace vt
