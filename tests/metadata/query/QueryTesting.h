#pragma once

#include <cstdint>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "foundation/Array.h"
#include "metadata/query/AttributeSchema.h"
#include "metadata/query/ItemAttributes.h"
#include "metadata/query/NumberLiteral.h"
#include "metadata/query/QueryMatcher.h"
#include "metadata/query/QueryParser.h"
#include "metadata/query/TimeValue.h"
#include "support/Places.h"

namespace vt::query {

inline std::string readWhole(const std::filesystem::path& path) {
  std::ifstream file(path, std::ios::binary);
  if (!file) throw std::runtime_error("cannot read " + path.string());
  return {std::istreambuf_iterator<char>(file), {}};
}

/// The schema that ships.
inline const AttributeSchema& shippedSchema() {
  static const AttributeSchema kSchema =
      AttributeSchema::parse(readWhole(resourcePath("attributes.tsv"))).value();
  return kSchema;
}

inline std::vector<std::string> splitText(std::string_view text, std::string_view separator) {
  std::vector<std::string> parts;
  for (;;) {
    const std::size_t end = text.find(separator);
    parts.emplace_back(text.substr(0, end));
    if (end == std::string_view::npos) return parts;
    text.remove_prefix(end + separator.size());
  }
}

/// A file made of a table, which counts what it is asked.
class TableItem : public ItemAttributes {
 public:
  TableItem& set(const std::string& attribute, Value value) {
    values_.insert_or_assign(attribute, std::move(value));
    return *this;
  }
  TableItem& setText(std::string text) {
    text_ = std::move(text);
    return *this;
  }

  /// An item written as "attribute=value ; attribute=element|element"; the type of each value is
  /// that of its attribute, and "text" stands for the text content.
  static TableItem parse(std::string_view description) {
    TableItem item;
    for (const std::string& entry : splitText(description, " ; ")) {
      const std::size_t equals = entry.find('=');
      const std::string name = entry.substr(0, equals);
      const std::string text = entry.substr(equals + 1);
      if (name == "text") {
        item.setText(text);
        continue;
      }
      const Attribute* attribute = shippedSchema().find(name);
      if (attribute == nullptr) throw std::runtime_error("no such attribute: " + name);
      if (!attribute->isMultiValued) {
        item.set(name, valueOf(attribute->type, text));
        continue;
      }
      auto elements = Array::make();
      for (const std::string& element : splitText(text, "|")) {
        elements->append(valueOf(attribute->type, element));
      }
      item.set(name, Value(elements));
    }
    return item;
  }

  /// Whether the item satisfies the query.
  bool satisfies(const QueryMatcher& matcher) {
    slots_ = &matcher.attributes();
    return matcher.matches(*this);
  }

  const Value* valueOf(std::size_t slot) override {
    const std::string& name = slots_->at(slot);
    asked.push_back(name);
    const auto found = values_.find(name);
    return found == values_.end() ? nullptr : &found->second;
  }

  bool anySearchableText(FunctionRef<bool(const Value&)> predicate) override {
    asked.emplace_back("*");
    for (const auto& [name, value] : values_) {
      const Attribute* attribute = shippedSchema().find(name);
      if (attribute != nullptr && attribute->isSearchable && predicate(value)) return true;
    }
    return false;
  }

  const std::string* textContent() override {
    asked.emplace_back("text");
    return text_ ? &*text_ : nullptr;
  }

  std::vector<std::string> asked;  ///< what the matcher wanted to know, in order

 private:
  static Value valueOf(AttributeType type, const std::string& text) {
    switch (type) {
      case AttributeType::kString:
        return {text};
      case AttributeType::kNumber:
        return parseNumber(text).value();
      case AttributeType::kBoolean:
        return {text == "1"};
      case AttributeType::kDate:
        return {parseIsoTime(text, Calendar()).value()};
    }
    return {};
  }

  std::map<std::string, Value> values_;
  std::optional<std::string> text_;
  const std::vector<std::string>* slots_ = nullptr;
};

/// Thursday, 29 February 2024, 12:30 UTC.
inline EvaluationContext leapDayNoon() {
  return {Date{std::chrono::seconds{1709209800}}, Calendar()};
}

/// Parses a query that is known to be right.
inline Query parsed(std::string_view text) {
  Result<Query, QueryError> query = parseQuery(text, shippedSchema());
  if (!query)
    throw std::runtime_error(std::string(text) + ": " + describeQueryError(query.error()));
  return std::move(query).value();
}

inline bool matches(std::string_view query, TableItem& item) {
  return item.satisfies(QueryMatcher(parsed(query), shippedSchema(), leapDayNoon()));
}

/// The time zone of the process for as long as it lives.
class TimeZone {
 public:
  explicit TimeZone(const char* name) {
    if (const char* before = std::getenv("TZ")) before_ = before;
    setenv("TZ", name, 1);
    tzset();
  }
  TimeZone(const TimeZone&) = delete;
  TimeZone& operator=(const TimeZone&) = delete;
  ~TimeZone() {
    if (before_) {
      setenv("TZ", before_->c_str(), 1);
    } else {
      unsetenv("TZ");
    }
    tzset();
  }

 private:
  std::optional<std::string> before_;
};

}  // namespace vt::query
