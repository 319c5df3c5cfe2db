#include <fmt/format.h>
#include <fmt/ranges.h>

#include <optional>
#include <string_view>
#include <vector>

#include "platform/Platform.h"
#include "platform/linux/ContentTypeTable.h"
#include "platform/linux/extraction/ConfinedExtractor.h"
#include "platform/linux/extraction/LinuxExtractors.h"
#include "vistaro/Checkup.h"
#include "vistaro/WallNames.h"

namespace vt::tool {
namespace {

struct Format {
  std::string_view files;  // for people
  std::string_view name;   // of one
};

// What can be looked into where no library is missing.
constexpr Format kFormats[] = {
    {"HTML", "a.html"},
    {"XML", "a.xml"},
    {"Rich Text", "a.rtf"},
    {"PDF", "a.pdf"},
    {"Office Open XML", "a.docx"},
    {"OpenDocument", "a.odt"},
    {"books (EPUB)", "a.epub"},
    {"Internet locations", "a.webloc"},
    {"e-mail", "a.eml"},
    {"pictures", "a.jpg"},
    {"sound", "a.mp3"},
    {"video", "a.mp4"},
    {"archives", "a.zip"},
};

std::vector<std::string_view> lackingFormats(const ContentTypes& types,
                                             const Extractors& extractors) {
  std::vector<std::string_view> lacking;
  for (const Format& format : kFormats) {
    const Extractor* const extractor = extractors.forType(types.typeOfFile(format.name));
    if (!dynamic_cast<const ConfinedExtractor*>(extractor)) lacking.push_back(format.files);
  }
  return lacking;
}

}  // namespace

std::vector<Diagnosis> checkExtraction() {
  const Resources& resources = Platform::current().resources();
  const std::shared_ptr<const ContentTypes> types = contentTypesIn(resources);
  const auto workers = types ? extractionWorkers(resources, *types) : nullptr;
  if (!workers) return {};  // the check of resources tells why
  const std::vector<std::string_view> lacking =
      lackingFormats(*types, linuxExtractors(*types, workers));
  if (lacking.size() == std::size(kFormats)) {
    return {{Finding::kNote,
             "documents: none of the programs vistaro-extract-… can be started: only the words of "
             "plain "
             "text are indexed"}};
  }
  std::vector<Diagnosis> found;
  if (const std::optional<std::uint32_t> walls = workers->walls()) {
    found.push_back(
        {Finding::kOk, fmt::format("documents are looked into behind {}", wallNames(*walls))});
  } else {
    found.push_back({Finding::kNote,
                     "documents: files cannot be looked into behind walls here: only the words of "
                     "plain text are indexed"});
  }
  if (!lacking.empty()) {
    found.push_back(
        {Finding::kNote, fmt::format("documents: not built for {}, whose libraries were missing",
                                     fmt::join(lacking, ", "))});
  }
  return found;
}

}  // namespace vt::tool
