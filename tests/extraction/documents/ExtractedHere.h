#pragma once

#include <fcntl.h>

#include <algorithm>
#include <iterator>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "extraction/documents/DocumentExtractors.h"
#include "extraction/documents/HtmlExtractor.h"
#include "extraction/documents/PdfExtractor.h"
#include "foundation/Array.h"
#include "metadata/live/Descriptor.h"
#include "metadata/types/ShippedTypes.h"
#include "support/ReadFile.h"
#include "support/TemporaryFolder.h"

namespace vt {

/// Looks into files in the process of the test.
class ExtractedHere {
 public:
  /// What is found in a file of that name and content. The name must be of a type that is looked
  /// into.
  Result<Extraction, ExtractionFailure> operator()(const std::string& name,
                                                   std::string_view bytes) const {
    const TemporaryFolder folder;
    writeFile(folder / name, std::string(bytes));
    const Descriptor file(::open((folder / name).c_str(), O_RDONLY | O_CLOEXEC));
    const ContentTypeId type = types_.typeOfFile(name);
    for (const auto& extractor : extractors_) {
      if (extractor->takes(type)) return extractor->extract(file.get(), type);
    }
    return ExtractionFailure{ExtractionFailure::Kind::kUnavailable, "nobody takes it"};
  }

 private:
  ContentTypes types_ = shippedTypes();
  std::vector<std::unique_ptr<Extractor>> extractors_ = [this] {
    std::vector<std::unique_ptr<Extractor>> all = htmlExtractors(types_);
    std::ranges::move(documentExtractors(types_), std::back_inserter(all));
    std::ranges::move(pdfExtractors(types_), std::back_inserter(all));
    return all;
  }();
};

/// One value of an attribute, or its values with " | " between them; "" when there is none.
inline std::string attributeText(const Extraction& extraction, const std::string& name) {
  const auto found = extraction.attributes.find(name);
  if (found == extraction.attributes.end()) return "";
  const auto print = [](const Value& value) {
    if (const auto* text = value.get<std::string>()) return *text;
    if (const auto* real = value.get<double>()) return std::to_string(static_cast<int>(*real));
    if (const auto* date = value.get<Date>()) {
      return std::to_string(date->time_since_epoch().count() / 1'000'000);
    }
    return std::to_string(value.integerValue());
  };
  const std::shared_ptr<Array> array = found->second.array();
  if (!array) return print(found->second);
  std::string joined;
  for (const Value& value : array->elements()) {
    joined += (joined.empty() ? "" : " | ") + print(value);
  }
  return joined;
}

}  // namespace vt
