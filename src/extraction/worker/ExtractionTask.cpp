#include "extraction/worker/ExtractionTask.h"

#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <optional>
#include <string>
#include <utility>

#include "extraction/ExtractionBytes.h"
#include "extraction/ExtractionRequest.h"
#include "extraction/ExtractorDescription.h"
#include "extraction/LookTime.h"
#include "platform/linux/FileDescriptor.h"
#include "worker/InheritedCode.h"
#include "worker/ReadInput.h"
#include "worker/ReceiveRequest.h"
#include "worker/WriteAll.h"

namespace vt::worker {
namespace {

constexpr std::uint64_t kMostTableBytes = std::uint64_t{16} << 20;

TaskEnd send(int output, const std::string& bytes) {
  return writeAll(output, bytes) ? TaskEnd::kMade : TaskEnd::kNotWritten;
}

/// The table of content types that comes as the first message; nullptr when none does.
std::unique_ptr<const ContentTypes> receiveTypes(int socket) {
  const std::optional<ReceivedRequest> first = receiveRequest(socket);
  const std::optional<std::string> table =
      first ? readInput(first->input.get(), kMostTableBytes) : std::nullopt;
  auto types = ContentTypes::parse(table.value_or(""));
  return types ? std::make_unique<const ContentTypes>(std::move(types).value()) : nullptr;
}

}  // namespace

TaskSource extractionTasks(const ContentTypes& types,
                           const std::vector<std::unique_ptr<Extractor>>& extractors) {
  return [&](const WorkerRequest& request, bool ownFilesOnly) -> Task {
    switch (static_cast<ExtractionJob>(request.job)) {
      case ExtractionJob::kDescribe:
        return [&](int /*input*/, int output) {
          return send(output, descriptionBytes(extractors, types.size()));
        };
      case ExtractionJob::kExtract:
        break;
      default:
        return {};
    }
    const auto [place, type, _] = request.arguments;
    if (ownFilesOnly || place >= extractors.size() || type >= types.size()) return {};
    Extractor& extractor = *extractors[place];
    const auto id = static_cast<ContentTypeId>(type);
    if (!extractor.takes(id)) return {};
    return [&extractor, id](int input, int output) {
      countTimeFromNow();
      return send(output, extractionBytes(extractor.extract(input, id)));
    };
  };
}

void rehearse(const ContentTypes& types, const std::vector<std::unique_ptr<Extractor>>& extractors,
              const std::vector<RehearsalFile>& files) {
  countTimeFromNow();
  for (const RehearsalFile& file : files) {
    const std::optional<ContentTypeId> type = types.find(file.type);
    if (!type) continue;
    const auto extractor =
        std::ranges::find_if(extractors, [&](const auto& each) { return each->takes(*type); });
    const FileDescriptor bytes(::memfd_create("rehearsal", MFD_CLOEXEC));
    if (extractor == extractors.end() || !bytes || !writeAll(bytes.get(), file.bytes) ||
        ::lseek(bytes.get(), 0, SEEK_SET) != 0) {
      continue;
    }
    static_cast<void>(extractionBytes((*extractor)->extract(bytes.get(), *type)));
  }
}

int runExtractionWorker(int argc, char** argv, const ExtractorSource& extractors,
                        const std::vector<RehearsalFile>& rehearsal,
                        std::chrono::milliseconds fileLimit) {
  const std::unique_ptr<const ContentTypes> types = receiveTypes(STDIN_FILENO);
  if (!types) return 1;
  const std::vector<std::unique_ptr<Extractor>> all = extractors(*types);
  inheritCodeOf([&] { rehearse(*types, all, rehearsal); });
  return runWorker(argc, argv, extractionTasks(*types, all), fileLimit);
}

}  // namespace vt::worker
