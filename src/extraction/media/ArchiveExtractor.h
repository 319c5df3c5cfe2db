#pragma once

#include <locale.h>

#include <memory>
#include <type_traits>

#include "extraction/ConformingTypes.h"
#include "metadata/extract/Extractor.h"

namespace vt {

/// The names of what is in archives, one for each line of the text, in the order in which they
/// stand there. Looks at heads alone, and unfolds no more than it must to come to them; of an
/// archive that is too large for that the first names count.
class ArchiveExtractor final : public Extractor {
 public:
  /// Half of the time that the worker gives a file.
  static constexpr double kMostSeconds = 5;

  /// After `mostSeconds` of the processor it goes on with the names that it has come to.
  explicit ArchiveExtractor(const ContentTypes& types, double mostSeconds = kMostSeconds);

  std::string_view name() const override { return "archive"; }
  std::uint32_t version() const override { return 2; }
  bool takes(ContentTypeId type) const override { return types_.contains(type); }
  Result<Extraction, ExtractionFailure> extract(int file, ContentTypeId type) override;

 private:
  struct FreeLocale {
    void operator()(locale_t locale) const { ::freelocale(locale); }
  };

  double mostSeconds_;
  ConformingTypes types_;
  ConformingTypes filtered_;  // may hold a single file without a name
  // Names in archives are kept in UTF-16 and UTF-8; the library gives them in that of the locale.
  std::unique_ptr<std::remove_pointer_t<locale_t>, FreeLocale> unicode_;
};

}  // namespace vt
