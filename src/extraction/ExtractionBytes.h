#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

#include "extraction/BoundedText.h"
#include "foundation/Result.h"
#include "metadata/extract/Extractor.h"
#include "metadata/query/AttributeSchema.h"

namespace vt {

/// No answer is longer.
inline constexpr std::size_t kMostExtractionBytes = kMostExtractedText + (std::size_t{8} << 20);

/// What a worker answers of a file, as bytes; docs/worker.md has the form. Text beyond
/// kMostExtractedText is left out.
std::string extractionBytes(const Result<Extraction, ExtractionFailure>& found);

/// What the bytes stand for, of anyone's making. Attributes that the schema does not have, or has
/// as of another type or shape, and those that a file's name and status tell are left out. Nothing
/// for what is no answer.
std::optional<Result<Extraction, ExtractionFailure>> extractionIn(
    std::string_view bytes, const query::AttributeSchema& schema);

}  // namespace vt
