#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "foundation/Array.h"
#include "foundation/Result.h"
#include "metadata/types/ContentType.h"
#include "metadata/types/TypeByText.h"

namespace vt {

/// Why a type table was rejected.
struct ContentTypesError {
  std::size_t line = 0;  ///< counted from 1; one past the last when something is missing
  std::string reason;    ///< as the end of the sentence "the table is wrong:"
};

/// The table of content types (docs/content-types.md) and what it says of a file name.
///
/// Immutable, so any number of threads may ask one table, but for treeIdentifiers(). Identifiers,
/// extensions and names are compared regardless of ASCII case.
class ContentTypes {
 public:
  ContentTypes(ContentTypes&&) = default;
  ContentTypes& operator=(ContentTypes&&) = default;

  /// Reads a table. Rejects one with a wrong number of columns, an identifier or extension listed
  /// twice, a parent or other form that is not listed, a type that conforms to itself, or without
  /// the types that unknown names fall back to.
  static Result<ContentTypes, ContentTypesError> parse(std::string_view tsv);

  /// The type of a plain file called `name` (bytes, no slash): by its longest suffix in the table,
  /// else "public.data". An extension of packages alone says nothing about a plain file.
  ContentTypeId typeOfFile(std::string_view name) const;
  /// The type of a folder called `name`: that of a package with this suffix, else "public.folder".
  ContentTypeId typeOfFolder(std::string_view name) const;
  /// "public.symlink", whatever the link is called: a link is an item of its own.
  ContentTypeId typeOfLink() const { return link_; }
  /// "public.item": a pipe, socket or device, which has no content.
  ContentTypeId typeOfSpecialFile() const { return item_; }

  /// Nothing when the table has no such type.
  std::optional<ContentTypeId> find(std::string_view identifier) const;
  /// The type with the place `id`, which this table must have given.
  const ContentType& operator[](ContentTypeId id) const { return types_[id]; }
  std::size_t size() const { return types_.size(); }

  /// Whether `type` is `ancestor` or conforms to it.
  bool conforms(ContentTypeId type, ContentTypeId ancestor) const;
  /// The identifiers of the type's tree: the one array that all items of the type share, made when
  /// it is first asked for. One thread at a time.
  const std::shared_ptr<Array>& treeIdentifiers(ContentTypeId type) const;
  /// The preferred MIME type; nothing for a type that the table does not know or gives none.
  std::optional<std::string> preferredMimeType(std::string_view identifier) const;

 private:
  friend class ContentTypesParser;

  ContentTypes() = default;

  std::optional<ContentTypeId> typeBySuffix(std::string_view name, const TypeByText& types) const;

  // What the types borrow. A vector keeps its place in memory when the table is moved.
  std::vector<char> text_;
  std::vector<char> lowerText_;  // identifiers and extensions at the same places, in lower case
  std::vector<std::string_view> names_;
  std::vector<ContentTypeId> parents_;
  std::vector<ContentTypeId> trees_;

  std::vector<ContentType> types_;
  mutable std::vector<std::shared_ptr<Array>> treeIdentifiers_;  // nullptr until asked for
  TypeByText byIdentifier_;
  TypeByText fileTypes_;    // by extension: what a plain file gets
  TypeByText folderTypes_;  // by extension: what a folder gets
  std::size_t longestExtension_ = 0;
  std::size_t mostDots_ = 0;  // in one extension: "tar.gz" has one
  ContentTypeId data_ = 0;
  ContentTypeId folder_ = 0;
  ContentTypeId link_ = 0;
  ContentTypeId item_ = 0;
};

}  // namespace vt
