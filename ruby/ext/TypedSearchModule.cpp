// What somebody types into a search field.

#include "Classes.h"
#include "Message.h"
#include "foundation/Dictionary.h"
#include "search/TypedSearch.h"

namespace vt::ruby {
namespace {

// "query" and "asksForText"; or "rejection", "offset" in bytes and "text" of what makes no query.
std::shared_ptr<Dictionary> queryFor(const std::string& typed) {
  const auto query = queryForTypedSearch(typed, /*readsFiles=*/false);
  if (query) {
    return Dictionary::make({{"query", query->query}, {"asksForText", query->asksForText}});
  }
  const MDTypedRejection& why = query.error();
  return Dictionary::make({{"rejection", why.kind}, {"offset", why.offset}, {"text", why.text}});
}

}  // namespace

void defineTypedSearch(VALUE module) {
  static constexpr Message kMessages[] = {
      moduleMessage<queryFor>("queryFor:"),
  };
  defineMessages(rb_define_module_under(module, "TypedSearch"), kMessages);
}

}  // namespace vt::ruby
