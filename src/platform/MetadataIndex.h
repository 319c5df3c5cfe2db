#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "foundation/Dictionary.h"
#include "foundation/FunctionRef.h"
#include "foundation/Key.h"
#include "foundation/Result.h"
#include "foundation/Value.h"

namespace vt {

/// One item of the index. Opaque to callers; each index has its own.
class MDItem {
 public:
  virtual ~MDItem() = default;
};

/// One query and, once executed, its hits in order. Opaque to callers; each index has its own.
class MDQuery {
 public:
  virtual ~MDQuery() = default;
};

/// Why a query was rejected.
struct MDQueryRejection {
  std::size_t offset = 0;  ///< byte in the query text; its length when the text ends too early
  std::string expected;    ///< what was expected there, as the end of a sentence
  std::string text;        ///< one line for people that says all of it
};

/// Compares two hits by the values of the query's sorting attributes, in their order; nullptr for
/// an absent value. Negative, 0 or positive, as the first goes before, with or after the second.
using MDQuerySortComparatorFunction = int (*)(const Value* const a[], const Value* const b[],
                                              const void* context);

/// The ordering that a comparator function stands for: by one attribute, absent values last.
/// An index that can deliver it outright need only check it.
struct MDQueryDeclaredOrder {
  std::string attribute;
  bool descending = false;
};

/// What a step of answering a query left of the files that it looked at.
struct MDQueryStep {
  std::string text;  ///< what they must be, such as a term of the query
  std::uint64_t asked = 0;
  std::uint64_t left = 0;
};

/// What a searcher should know of an executed query beside its hits. It tells no more of files than
/// the hits do: a folder that is missing and one that the effective user may not search look alike.
struct MDQueryNotes {
  std::vector<std::string> unknownAttributes;  ///< named in the query; no item has a value for them
  /// Folders of the scope, as they were given, that are missing, no folders, or not to be searched.
  std::vector<std::string> unusableScopes;
  /// The effective user is not known here, or not the wanted one: nothing was searched.
  bool hasNoAccount = false;
  /// Why the files had to be walked, as the end of a sentence: "there is no index". "" when they
  /// had not.
  std::string walkedBecause{};
  /// The walk took longer than it may, see MDQuerySetLongestWalk: nothing is known of hits.
  bool walkWasGivenUp = false;
  /// How many files of the scope that the effective user may read have not been looked into yet:
  /// what stands in them was not found. 0 when the query does not ask for that.
  std::uint64_t filesNotLookedInto = 0;
  /// How the query was answered, if kMDQueryCountsSteps was asked for. The counts tell of files
  /// that the effective user may not read: they are for whoever runs the process.
  std::vector<MDQueryStep> steps{};
};

/// What somebody typed into a search field, as the index's query language has it.
struct MDTypedQuery {
  std::string query;
  /// Else its words are looked for in names alone. Always of a query that was typed as such.
  bool asksForText = true;
};

/// Why what was typed makes no query.
struct MDTypedRejection {
  /// "nothing" (there is no word), "number", "date", "truth" (what stands after a name is none) or
  /// "length" (it is too long).
  std::string kind;
  std::uint64_t offset = 0;  ///< where it stands, in bytes of what was typed
  std::string text;          ///< what stands there
};

/// What the names before colons in a search field mean.
struct MDTypedNames {
  FunctionRef<std::vector<std::string>(const std::string& shortName)> attributes;
  /// The content types of the kinds that a word names.
  FunctionRef<std::vector<std::string>(const std::string& word)> typesOfKind;
};

/// Is told, now and then within an execution, how much has been looked at since it began. The
/// counts are of what the index came upon, whoever may read it: they are for whoever runs the
/// process, not for the user on whose behalf it searches. Must not throw.
using MDQueryProgress = std::function<void(std::uint64_t folders, std::uint64_t entries)>;

/// Options of MDQueryExecute.
inline constexpr std::uint32_t kMDQuerySynchronous = 1;
/// Ours: count what each step leaves, for the notes.
inline constexpr std::uint32_t kMDQueryCountsSteps = 2;

/// The metadata index: finds files by a query, with the rights of the effective user.
class MetadataIndex {
 public:
  virtual ~MetadataIndex() = default;

  /// Opens what the index itself reads, which a searching user need not be able to open: to be
  /// called before the identity is switched. Harmless when repeated.
  virtual void prepare() {}

  /// Makes a query from text in the metadata query language. `valueListAttributes` are the
  /// attributes that MDQueryGetAttributeValueOfResultAtIndex can give. Nullptr when the text is
  /// rejected; `rejection`, when given, then says why.
  virtual std::shared_ptr<MDQuery> MDQueryCreate(
      const std::string& queryString, const std::vector<std::string>& valueListAttributes,
      const std::vector<std::string>& sortingAttributes, MDQueryRejection* rejection = nullptr) = 0;

  /// `context` is borrowed and must outlive the execution.
  virtual void MDQuerySetSortComparator(MDQuery& query, MDQuerySortComparatorFunction comparator,
                                        const void* context,
                                        const std::optional<MDQueryDeclaredOrder>& declared) = 0;

  /// The query for what somebody typed into a search field: words, `name:value`, or a query, which
  /// stays as it is. Words are looked for in the text of files as well as in names if the index
  /// holds it, or `readsFiles` is set, and the files may be read for it. An index that knows no
  /// better takes everything for a query.
  virtual Result<MDTypedQuery, MDTypedRejection> MDQueryStringFromTyped(
      const std::string& typed, const MDTypedNames& /*names*/, bool /*readsFiles*/) {
    return MDTypedQuery{typed};
  }

  /// The folders to search below, absolute paths; none finds nothing. `options` is 0.
  virtual void MDQuerySetSearchScope(MDQuery& query, const std::vector<std::string>& directories,
                                     std::uint32_t options) = 0;

  /// Gives the executions to come up when they have walked the files for so long. An index that
  /// never walks may ignore it.
  virtual void MDQuerySetLongestWalk(MDQuery& /*query*/, std::chrono::milliseconds /*limit*/) {}

  /// Runs the query. False when it could not be run, or its walk was given up, as the notes then
  /// say; there are then no results.
  virtual bool MDQueryExecute(MDQuery& query, std::uint32_t options) = 0;

  /// What to say about the query once it is executed.
  virtual MDQueryNotes MDQueryCopyNotes(const MDQuery& /*query*/) { return {}; }

  /// Reports on the executions to come; an empty function ends that. An index that never takes long
  /// may ignore it.
  // NOLINTNEXTLINE(performance-unnecessary-value-param): indexes that report keep it
  virtual void setProgress(MDQueryProgress /*progress*/) {}

  virtual void MDQueryDisableUpdates(MDQuery& query) = 0;

  virtual std::int32_t MDQueryGetResultCount(const MDQuery& query) = 0;

  /// Whether every hit of every query has a path, and what is told of it stays the same, so that
  /// nobody need ask before they have to.
  virtual bool hitsAreFiles() const { return false; }

  /// The item of the hit at `index` (below the count), never null.
  virtual std::shared_ptr<MDItem> MDQueryGetResultAtIndex(MDQuery& query, std::int32_t index) = 0;

  /// The value of one of the value-list attributes for the hit at `index`; nothing when the hit
  /// lacks it or the attribute is not in the list.
  virtual std::optional<Value> MDQueryGetAttributeValueOfResultAtIndex(MDQuery& query,
                                                                       std::string_view attribute,
                                                                       std::int32_t index) = 0;

  /// The item of the file at `path`; nullptr when there is none that the effective user may read.
  virtual std::shared_ptr<MDItem> MDItemCreate(const std::string& path) = 0;

  /// A value of the item; nothing when it lacks the attribute.
  virtual std::optional<Value> MDItemCopyAttribute(MDItem& item, std::string_view attribute) = 0;

  /// The names of the attributes of which the item has a value, none twice.
  virtual std::vector<std::string> MDItemCopyAttributeNames(MDItem& item) = 0;

  /// The item's values by attribute name, in the order of `names`, without those that it lacks.
  /// Never nullptr.
  virtual std::shared_ptr<Dictionary> MDItemCopyAttributes(MDItem& item,
                                                           const std::vector<std::string>& names);

  /// The names of all attributes that files can have, in the order of the index's table.
  virtual std::vector<std::string> MDSchemaCopyAllAttributes() = 0;

  /// What people call the attribute, in the language of this process; nothing when it has no such
  /// name or is not known.
  virtual std::optional<std::string> MDSchemaCopyDisplayNameForAttribute(
      std::string_view attribute) = 0;
};

}  // namespace vt
