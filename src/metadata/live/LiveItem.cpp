#include "metadata/live/LiveItem.h"

#include <algorithm>

#include "metadata/live/EntryCount.h"
#include "metadata/live/PlainTextReader.h"

namespace vt {

LiveItem::LiveItem(const query::QueryMatcher& matcher, const query::AttributeSchema& schema,
                   const TypeTables& tables, const AccessJudge& judge)
    : tables_(tables),
      judge_(judge),
      textType_(tables.types.find("public.text")),
      searchable_(searchableLiveAttributes(schema)) {
  for (const std::string& name : matcher.attributes()) {
    attributes_.push_back(liveAttributeNamed(name));
  }
  values_.resize(attributes_.size());
}

void LiveItem::moveTo(const WalkedEntry& entry) {
  entry_ = &entry;
  type_.reset();
  status_.reset();
  isStatusAsked_ = false;
  isReadable_.reset();
  text_.reset();
  isTextAsked_ = false;
}

ContentTypeId LiveItem::type() {
  if (!type_) type_ = typeOfEntry(tables_.types, entry_->name, entry_->kind);
  return *type_;
}

const std::optional<FileStatus>& LiveItem::status() {
  if (!isStatusAsked_) status_ = statusOf(entry_->folder, entry_->name);
  isStatusAsked_ = true;
  return status_;
}

bool LiveItem::isReadable() {
  if (!isReadable_) {
    isReadable_ = status() && judge_.allows(status_->ownership, kMayRead,
                                            [&] { return readAcl(entry_->folder, entry_->name); });
  }
  return *isReadable_;
}

bool LiveItem::tell(LiveAttribute attribute, Value& value) {
  if (attribute == LiveAttribute::kEntryCount) {
    if (entry_->kind != EntryKind::kFolder) return false;
    const auto entries = countEntries(entry_->folder, entry_->name, judge_);
    if (entries) value = *entries;
    return entries.has_value();
  }
  if (needsStatus(attribute) && !status()) return false;
  const LiveFile file{entry_->folderPath, entry_->name, type(), status_ ? &*status_ : nullptr};
  return tellAttribute(attribute, file, tables_, value);
}

const Value* LiveItem::valueOf(std::size_t slot) {
  const std::optional<LiveAttribute> attribute = attributes_[slot];
  return attribute && tell(*attribute, values_[slot]) ? &values_[slot] : nullptr;
}

bool LiveItem::anySearchableText(FunctionRef<bool(const Value&)> predicate) {
  return std::ranges::any_of(searchable_, [&](LiveAttribute attribute) {
    return tell(attribute, searchedValue_) && predicate(searchedValue_);
  });
}

const std::string* LiveItem::textContent() {
  if (!isTextAsked_) {
    isTextAsked_ = true;
    if (entry_->kind == EntryKind::kFile && textType_ &&
        tables_.types.conforms(type(), *textType_) && isReadable()) {
      text_ = readPlainText(entry_->folder, entry_->name, judge_);
    }
  }
  return text_ ? &*text_ : nullptr;
}

}  // namespace vt
