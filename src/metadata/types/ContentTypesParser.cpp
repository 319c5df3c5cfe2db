#include "metadata/types/ContentTypesParser.h"

#include <algorithm>
#include <limits>
#include <utility>

#include "foundation/Array.h"
#include "metadata/types/AsciiCase.h"

namespace vt {
namespace {

constexpr std::string_view kHeader =
    "identifier\tconforms_to\textensions\tmime_types\tdescription\tother_form";
constexpr std::size_t kColumns = 6;
constexpr std::size_t kMostTypes = std::numeric_limits<ContentTypeId>::max();

/// The pieces between separators; none for an empty text.
std::vector<std::string_view> split(std::string_view text, char separator) {
  std::vector<std::string_view> pieces;
  if (text.empty()) return pieces;
  for (;;) {
    const std::size_t end = text.find(separator);
    pieces.push_back(text.substr(0, end));
    if (end == std::string_view::npos) return pieces;
    text.remove_prefix(end + 1);
  }
}

}  // namespace

Result<ContentTypes, ContentTypesError> ContentTypes::parse(std::string_view tsv) {
  return ContentTypesParser().parse(tsv);
}

Result<ContentTypes, ContentTypesError> ContentTypesParser::parse(std::string_view tsv) {
  const bool isRight =
      readRows(tsv) && resolveParents() && buildTrees() && findFallbacks() && assignExtensions();
  if (!isRight) return error_;
  return std::move(table_);
}

bool ContentTypesParser::fail(std::size_t line, std::string reason) {
  error_ = {line, std::move(reason)};
  return false;
}

bool ContentTypesParser::readRows(std::string_view tsv) {
  const auto lines = static_cast<std::size_t>(std::ranges::count(tsv, '\n'));
  table_.types_.reserve(lines);
  table_.byIdentifier_.reserve(lines);
  rows_.reserve(lines);
  while (!tsv.empty()) {
    const std::size_t end = std::min(tsv.find('\n'), tsv.size());
    const std::string_view line = tsv.substr(0, end);
    tsv.remove_prefix(std::min(end + 1, tsv.size()));
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
  const std::vector<std::string_view> fields = split(line, '\t');
  if (fields.size() != kColumns) return fail(line_, "a row has not six columns");
  if (fields[0].empty()) return fail(line_, "a row has no identifier");
  if (table_.types_.size() == kMostTypes) return fail(line_, "it has too many rows");

  const auto id = static_cast<ContentTypeId>(table_.types_.size());
  if (!table_.byIdentifier_.emplace(asciiLowercase(fields[0]), id).second) {
    return fail(line_, "\"" + std::string(fields[0]) + "\" is listed twice");
  }
  ContentType type;
  type.identifier = fields[0];
  type.description = fields[4];
  for (const std::string_view extension : split(fields[2], ',')) {
    if (extension.empty()) return fail(line_, "an extension is empty");
    type.extensions.push_back(asciiLowercase(extension));
  }
  for (const std::string_view mimeType : split(fields[3], ',')) {
    // "text/*" says what conforms to the type, and is no type that a file could have.
    if (mimeType.find('*') == std::string_view::npos) type.mimeTypes.emplace_back(mimeType);
  }
  table_.types_.push_back(std::move(type));
  rows_.push_back({line_, split(fields[1], ','), fields[5]});
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
    for (const std::string_view name : rows_[id].parents) {
      const std::optional<ContentTypeId> parent = need(name, rows_[id].line);
      if (!parent) return false;
      table_.types_[id].parents.push_back(*parent);
    }
  }
  return true;
}

bool ContentTypesParser::buildTrees() {
  for (std::size_t id = 0; id < rows_.size(); ++id) {
    ContentType& type = table_.types_[id];
    // Breadth first; a type that is met again further out moves there, so that it comes after
    // everything that conforms to it. A path longer than the table has types goes in a circle.
    std::vector<ContentTypeId> tree;
    std::vector<ContentTypeId> ring = {static_cast<ContentTypeId>(id)};
    for (std::size_t distance = 0; !ring.empty(); ++distance) {
      if (distance > rows_.size()) {
        return fail(rows_[id].line, "the parents of \"" + type.identifier + "\" go in a circle");
      }
      std::vector<ContentTypeId> next;
      for (const ContentTypeId member : ring) {
        std::erase(tree, member);
        tree.push_back(member);
        for (const ContentTypeId parent : table_.types_[member].parents) {
          if (std::ranges::find(next, parent) == next.end()) next.push_back(parent);
        }
      }
      ring = std::move(next);
    }
    type.tree = std::move(tree);
    type.treeIdentifiers = Array::make();
    type.treeIdentifiers->elements().reserve(type.tree.size());
    for (const ContentTypeId member : type.tree) {
      type.treeIdentifiers->append(table_.types_[member].identifier);
    }
  }
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
  ContentTypes::IdByText lines;  // extension to the type that has it, for the check below
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
    for (const std::string& extension : table_.types_[i].extensions) {
      if (!lines.emplace(extension, id).second) {
        return fail(rows_[i].line, "the extension \"" + extension + "\" is listed twice");
      }
      (isForFolders ? table_.folderTypes_ : table_.fileTypes_)[extension] = id;
      if (otherForm)
        (isForFolders ? table_.fileTypes_ : table_.folderTypes_)[extension] = *otherForm;
      table_.longestExtension_ = std::max(table_.longestExtension_, extension.size());
      table_.mostDots_ =
          std::max(table_.mostDots_, static_cast<std::size_t>(std::ranges::count(extension, '.')));
    }
  }
  return true;
}

}  // namespace vt
