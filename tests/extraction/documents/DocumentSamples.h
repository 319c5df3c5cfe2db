#pragma once

#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace vt {

/// A small document of a format.
struct DocumentSample {
  std::string name;  ///< of the file
  std::string bytes;
};

// What each says, in one way or another.
inline constexpr std::string_view kSampleTitle = "Annual Report";
inline constexpr std::string_view kSampleText = "Budget of the northern lights";

/// One of each format that documents are looked into of.
std::vector<DocumentSample> documentSamples();
/// That of the file name.
std::string documentSample(std::string_view name);

using ZipEntries = std::vector<std::pair<std::string, std::string>>;

/// A ZIP archive of entries by name and content.
std::string zipOf(const ZipEntries& entries);

/// The same with one entry of so many blanks.
std::string zipOfBlanks(const std::string& name, std::size_t count);

/// A PDF document of one page of 300 by 200 points. `head` goes into its dictionary of
/// information, `trailer` into that of the whole.
std::string pdfOf(std::string_view text, std::string_view head = "", std::string_view trailer = "");

}  // namespace vt
