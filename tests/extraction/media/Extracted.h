#pragma once

#include <string>
#include <vector>

#include "metadata/extract/Extractor.h"
#include "metadata/types/ContentTypes.h"

namespace vt {

/// What is found in the file by the extractor for the type of its name; a failure when none takes
/// that.
Result<Extraction, ExtractionFailure> extracted(const std::string& path);

/// A line for each attribute, by name: "kMDItemPixelWidth 200", "kMDItemTitle 'A title'",
/// "kMDItemKeywords ['one', 'two']"; dates as 2024-05-01T10:20:30.000000Z. A real number always has
/// a point. One line of the reason when nothing is found.
std::vector<std::string> attributesIn(const std::string& path);

/// The text; the reason in brackets when nothing is found, "(none)" when there is no text.
std::string textIn(const std::string& path);

/// The lines that begin with one of the names.
std::vector<std::string> only(const std::vector<std::string>& names,
                              const std::vector<std::string>& lines);

/// "" when the extractor comes to an end with each of many cut and changed versions of the file,
/// which is not so large: in a child process, since libraries may crash. `seed` makes them.
std::string outcomeOfMangled(const std::string& path, unsigned seed);

}  // namespace vt
