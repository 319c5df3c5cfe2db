#pragma once

#include <functional>
#include <string>
#include <string_view>

#include "extraction/ConformingTypes.h"
#include "metadata/extract/Extractor.h"

namespace vt {

/// The text of a page in HTML, UTF-8 on both sides.
using HtmlText = std::function<std::string(std::string_view html)>;

/// Who wrote a message to whom, when and about what; its words, those of messages in it, and what
/// its attachments are called. What is attached is not looked into. Of a mailbox the same as text,
/// one message behind the other.
class MailExtractor final : public Extractor {
 public:
  /// Without `htmlText`, messages that are written in HTML alone have no words.
  MailExtractor(const ContentTypes& types, HtmlText htmlText);

  std::string_view name() const override { return "mail"; }
  std::uint32_t version() const override { return 2; }
  bool takes(ContentTypeId type) const override { return types_.contains(type); }
  Result<Extraction, ExtractionFailure> extract(int file, ContentTypeId type) override;

 private:
  ConformingTypes types_;
  ConformingTypes mailboxes_;
  ConformingTypes counted_;  // begin with a line that tells how long the message is
  HtmlText htmlText_;
};

}  // namespace vt
