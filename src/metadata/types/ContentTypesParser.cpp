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

/// The piece up to the next separator, which is taken off `text` together with it.
std::string_view takePiece(std::string_view& text, char separator) {
  const std::size_t end = std::min(text.find(separator), text.size());
  const std::string_view piece = text.substr(0, end);
  text.remove_prefix(std::min(end + 1, text.size()));
  return piece;
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
  if (std::ranges::count(line, '\t') != kColumns - 1) {
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
  if (!table_.byIdentifier_.emplace(asciiLowercase(identifier), id).second) {
    return fail(line_, "\"" + std::string(identifier) + "\" is listed twice");
  }
  ContentType& type = table_.types_.emplace_back();
  type.identifier = identifier;
  type.description = description;
  bool isEachNamed = true;
  forEachListed(extensions, [&](std::string_view extension) {
    isEachNamed = isEachNamed && !extension.empty();
    type.extensions.push_back(asciiLowercase(extension));
  });
  if (!isEachNamed) return fail(line_, "an extension is empty");
  forEachListed(mimeTypes, [&](std::string_view mimeType) {
    // "text/*" says what conforms to the type, and is no type that a file could have.
    if (mimeType.find('*') == std::string_view::npos) type.mimeTypes.emplace_back(mimeType);
  });
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
    bool isEachListed = true;
    forEachListed(rows_[id].parents, [&](std::string_view name) {
      const std::optional<ContentTypeId> parent =
          isEachListed ? need(name, rows_[id].line) : std::nullopt;
      isEachListed = parent.has_value();
      if (parent) table_.types_[id].parents.push_back(*parent);
    });
    if (!isEachListed) return false;
  }
  return true;
}

bool ContentTypesParser::buildTrees() {
  std::vector<ContentTypeId> tree;
  std::vector<ContentTypeId> ring;
  std::vector<ContentTypeId> next;
  for (std::size_t id = 0; id < rows_.size(); ++id) {
    ContentType& type = table_.types_[id];
    // Breadth first; a type that is met again further out moves there, so that it comes after
    // everything that conforms to it. A path longer than the table has types goes in a circle.
    tree.clear();
    ring.assign(1, static_cast<ContentTypeId>(id));
    for (std::size_t distance = 0; !ring.empty(); ++distance) {
      if (distance > rows_.size()) {
        return fail(rows_[id].line, "the parents of \"" + type.identifier + "\" go in a circle");
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
    type.tree = tree;
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
