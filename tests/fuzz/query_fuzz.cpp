// Any bytes: parsing gives a query or an error inside the text, a query survives being printed, and
// of it and its negation exactly one holds.
#include <cstdint>
#include <cstdlib>
#include <string_view>

#include "metadata/query/PlainWords.h"
#include "metadata/query/QueryPrinter.h"
#include "metadata/query/QueryTesting.h"

namespace {

using namespace vt::query;  // the target is all about it

void require(bool holds) {
  if (!holds) std::abort();
}

TableItem someFile(std::string_view text) {
  TableItem item = TableItem::parse(
      "kMDItemFSName=Report-07 Größe.PDF ; kMDItemFSSize=4096 ; kMDItemKeywords=alpha|beta ; "
      "kMDItemFSContentChangeDate=2024-02-29T08:00:00Z ; kMDItemFSInvisible=0");
  // The query itself as title and text, so that patterns meet texts like them.
  item.set("kMDItemTitle", vt::Value(text)).setText(std::string(text));
  return item;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view text(reinterpret_cast<const char*>(data), size);
  const AttributeSchema& schema = shippedSchema();

  if (const auto words = queryFromWords(text)) require(parseQuery(*words, schema).hasValue());
  looksLikeQuery(text);

  const auto query = parseQuery(text, schema);
  if (!query) {
    require(query.error().offset <= size);
    renderQueryError(text, query.error());
    describeQueryError(query.error());
    return 0;
  }
  const auto again = parseQuery(printQuery(*query), schema);
  require(again.hasValue() && *again == *query);

  TableItem item = someFile(text);
  const bool matches = item.satisfies(QueryMatcher(*query, schema, leapDayNoon()));
  require(item.satisfies(QueryMatcher(*again, schema, leapDayNoon())) == matches);
  const auto negation = parseQuery("!(" + std::string(text) + ")", schema);
  if (negation) require(item.satisfies(QueryMatcher(*negation, schema, leapDayNoon())) != matches);
  const auto narrowed = parseQuery("(" + std::string(text) + ")&&kMDItemTitle=\"a*\"", schema);
  if (narrowed && !matches) {
    require(!item.satisfies(QueryMatcher(*narrowed, schema, leapDayNoon())));
  }
  return 0;
}
