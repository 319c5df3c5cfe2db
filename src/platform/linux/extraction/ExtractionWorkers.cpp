#include "platform/linux/extraction/ExtractionWorkers.h"

#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <cassert>
#include <utility>

#include "extraction/ExtractionBytes.h"
#include "platform/linux/worker/AwaitDescriptors.h"
#include "worker/WriteAll.h"

namespace vt {
namespace {

using Clock = std::chrono::steady_clock;
using Kind = ExtractionFailure::Kind;

// More than any program's extractors take.
constexpr std::size_t kMostDescriptionBytes = std::size_t{1} << 20;

/// A file that lives in memory alone, and holds these bytes. No file when memory has run out.
FileDescriptor fileInMemory(const std::string& bytes) {
  FileDescriptor file(::memfd_create("types", MFD_CLOEXEC));
  if (file && !worker::writeAll(file.get(), bytes)) return FileDescriptor(-1);
  return file;
}

ExtractionFailure unavailable() {
  return {Kind::kUnavailable,
          "files of its sort are only looked into behind walls, which could not be raised"};
}

}  // namespace

ExtractionWorkers::ExtractionWorkers(std::vector<std::string> programs,
                                     const std::string& typeTable, std::size_t typeCount,
                                     std::shared_ptr<const query::AttributeSchema> schema)
    : programs_(std::move(programs)),
      typeTable_(fileInMemory(typeTable)),
      typeCount_(typeCount),
      schema_(std::move(schema)),
      slots_(programs_.size() * kAtOnce) {
  for (std::size_t i = 0; i < slots_.size(); ++i) slots_[i].program = i / kAtOnce;
}

std::unique_ptr<WorkerProcess> ExtractionWorkers::start(std::size_t program,
                                                        WorkerConfinement confinement) const {
  return WorkerProcess::start(programs_[program], confinement, typeTable_.get());
}

WorkerProcess* ExtractionWorkers::running(Slot& slot) const {
  return slot.worker.running(
      [&](WorkerConfinement confinement) { return start(slot.program, confinement); });
}

std::vector<ExtractionWorkers::Described> ExtractionWorkers::describe() {
  std::vector<Described> all;
  for (std::size_t program = 0; program < programs_.size(); ++program) {
    std::uint32_t extractor = 0;
    for (ExtractorDescription& description : describe(slots_[program * kAtOnce])) {
      all.push_back({{program, extractor++}, std::move(description)});
    }
  }
  return all;
}

std::vector<ExtractorDescription> ExtractionWorkers::describe(Slot& slot) const {
  std::unique_ptr<WorkerProcess> unconfined;
  WorkerProcess* worker = running(slot);
  if (!worker) {
    unconfined = start(slot.program, WorkerConfinement::kOwnFilesOnly);
    worker = unconfined.get();
  }
  if (!worker) return {};
  std::optional<FileDescriptor> pipe =
      worker->ask(typeTable_.get(), workerRequest({ExtractionJob::kDescribe}));
  if (!pipe) return {};
  IncomingBytes incoming(*std::move(pipe), kMostDescriptionBytes);
  incoming.readToEnd(Clock::now() + WorkerProcess::kAnswerLimit);
  if (!incoming.isWhole()) return {};
  return descriptionsIn(incoming.take(), typeCount_).value_or(std::vector<ExtractorDescription>());
}

std::optional<std::uint32_t> ExtractionWorkers::walls() {
  for (Slot& slot : slots_) {
    if (const WorkerProcess* worker = running(slot)) return worker->walls();
  }
  return std::nullopt;
}

std::optional<ExtractionWorkers::Ticket> ExtractionWorkers::begin(int file, const Place& place,
                                                                  ContentTypeId type) {
  const auto free = std::ranges::find_if(
      slots_, [&](const Slot& slot) { return slot.program == place.program && !slot.look; });
  if (free == slots_.end()) return std::nullopt;
  free->look.emplace(file, ExtractionRequest{ExtractionJob::kExtract, place.extractor, type});
  ask(*free);
  return static_cast<Ticket>(free - slots_.begin());
}

void ExtractionWorkers::ask(Slot& slot) const {
  Look& look = *slot.look;
  look.incoming.reset();
  WorkerProcess* worker = running(slot);
  if (!worker) return;
  std::optional<FileDescriptor> pipe = worker->ask(look.file, workerRequest(look.request));
  if (pipe) look.incoming.emplace(*std::move(pipe), kMostExtractionBytes);
  look.deadline = Clock::now() + WorkerProcess::kAnswerLimit;
}

void ExtractionWorkers::await(const Look& awaited, Clock::time_point deadline) {
  while (awaited.incoming && awaited.incoming->descriptor() >= 0) {
    // What others have found is taken, too: they must not wait, since their time runs.
    std::vector<pollfd> pipes;
    for (const Slot& slot : slots_) {
      const bool isAwaited = slot.look && slot.look->incoming;
      pipes.push_back({isAwaited ? slot.look->incoming->descriptor() : -1, POLLIN, 0});
    }
    if (!awaitDescriptors(pipes, deadline)) return;
    for (std::size_t i = 0; i < pipes.size(); ++i) {
      if (pipes[i].revents != 0) slots_[i].look->incoming->readSome();
    }
  }
}

bool ExtractionWorkers::isDone(Ticket ticket, std::chrono::milliseconds patience) {
  const Look& look = *slots_[ticket].look;
  await(look, std::min(look.deadline, Clock::now() + patience));
  return !look.incoming || look.incoming->descriptor() < 0 || Clock::now() >= look.deadline;
}

Result<Extraction, ExtractionFailure> ExtractionWorkers::finish(Ticket ticket) {
  Slot& slot = slots_[ticket];
  assert(slot.look);
  bool isToBeRepeated = false;
  await(*slot.look, slot.look->deadline);
  Result<Extraction, ExtractionFailure> found = answerOf(slot, isToBeRepeated);
  if (isToBeRepeated) {
    // A worker that has ended since it was last asked is no fault of the file: another is asked.
    ask(slot);
    await(*slot.look, slot.look->deadline);
    found = answerOf(slot, isToBeRepeated);
  }
  slot.look.reset();
  return found;
}

void ExtractionWorkers::drop(Ticket ticket) { slots_[ticket].look.reset(); }

Result<Extraction, ExtractionFailure> ExtractionWorkers::answerOf(Slot& slot,
                                                                  bool& isToBeRepeated) const {
  Look& look = *slot.look;
  isToBeRepeated = false;
  WorkerProcess* worker = running(slot);
  if (!worker) return unavailable();
  if (!look.incoming) {
    isToBeRepeated = true;
    return unavailable();
  }
  if (look.incoming->isWhole()) {
    // How the process ended is of no interest now, and is waited for when there is more to do.
    if (auto found = extractionIn(look.incoming->take(), *schema_)) return *std::move(found);
  }
  look.incoming.reset();  // a process that writes on meets a closed pipe
  switch (worker->awaitEnd(look.deadline)) {
    case worker::WorkerEnd::kMade:
      return ExtractionFailure{Kind::kMalformed, "what was found in it makes no sense"};
    case worker::WorkerEnd::kNone:
      return ExtractionFailure{Kind::kUnavailable, "nothing looks into files of its sort"};
    case worker::WorkerEnd::kCrashed:
      return ExtractionFailure{Kind::kCrashed,
                               "looking into it ended in a crash, or took more memory or more of a "
                               "processor than it may"};
    case worker::WorkerEnd::kTimedOut:
      return ExtractionFailure{Kind::kTimedOut, "looking into it took too long"};
    case worker::WorkerEnd::kNotTried:
      isToBeRepeated = true;
      break;
  }
  return unavailable();
}

}  // namespace vt
