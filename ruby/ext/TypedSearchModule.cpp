// What somebody types into a search field.

#include "Classes.h"
#include "Message.h"
#include "metadata/query/PlainWords.h"

namespace vt::ruby {
namespace {

std::optional<std::string> queryFromWords(const std::string& words) {
  return query::queryFromWords(words);
}

std::optional<std::string> namesQueryFromWords(const std::string& words) {
  return query::queryFromWords(words, query::WordsIn::kNames);
}

bool looksLikeQuery(const std::string& text) { return query::looksLikeQuery(text); }

}  // namespace

void definePlainWords(VALUE module) {
  static constexpr Message kMessages[] = {
      moduleMessage<queryFromWords>("queryFromWords:"),
      moduleMessage<namesQueryFromWords>("namesQueryFromWords:"),
      moduleMessage<looksLikeQuery>("looksLikeQuery:"),
  };
  defineMessages(rb_define_module_under(module, "PlainWords"), kMessages);
}

}  // namespace vt::ruby
