#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "foundation/FunctionRef.h"
#include "foundation/Result.h"
#include "metadata/query/AttributeSchema.h"
#include "metadata/query/PlainWords.h"

namespace vt::query {

/// Why what was typed makes no query.
struct TypedQueryError {
  enum class Kind {
    kNothing,  ///< there is no word in it
    kNumber,   ///< what stands after the name of a number is none
    kDate,     ///< the same of a date
    kBoolean,  ///< the same of yes or no
    kTooLong,  ///< the query would exceed the limits of the language
  };
  Kind kind;
  std::size_t offset = 0;  ///< where it stands, in bytes of what was typed
  std::string text;        ///< what stands there
};

/// What the names before colons mean; asked for names in any case.
struct TypedNames {
  /// The attributes that go by a short name; empty when none does.
  FunctionRef<std::vector<std::string>(const std::string& shortName)> attributes;
  /// The content types of the kinds that a word names; empty when it names none.
  FunctionRef<std::vector<std::string>(const std::string& word)> typesOfKind;
};

/// The query for what somebody typed into a search field.
///
/// A text that looksLikeQuery() is one already, right or wrong. Otherwise each word and phrase must
/// be found as queryFromWords() says, and each `name:value`, where `name` is a short name, in one
/// of the attributes that go by it (see conditionForValue()). A value of kMDItemKind may also be a
/// word that names kinds: their content types are then wanted as well. With any other name it is a
/// word like others, and so is a name and value that stand in double quotes together.
Result<std::string, TypedQueryError> queryFromTyped(std::string_view typed,
                                                    const AttributeSchema& schema,
                                                    const TypedNames& names, WordsIn in);

}  // namespace vt::query
