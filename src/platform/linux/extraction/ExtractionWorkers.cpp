#include "platform/linux/extraction/ExtractionWorkers.h"

#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cassert>
#include <iterator>
#include <utility>

#include "extraction/ExtractionBytes.h"
#include "platform/linux/worker/AwaitDescriptors.h"
#include "worker/WriteAll.h"

namespace vt {
namespace {

using Kind = ExtractionFailure::Kind;

// More than any program's extractors take.
constexpr std::size_t kMostDescriptionBytes = std::size_t{1} << 20;

// More than files that nobody has made for the purpose hold.
constexpr std::size_t kMostHeldBytes = std::size_t{32} << 20;

// Nothing comes for so long of a file that takes a while.
constexpr std::chrono::milliseconds kMostSilence{500};

// Once for a worker that has ended, and once for others of the process.
constexpr int kMostRepetitions = 2;

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
  return slot.worker.running([&](WorkerConfinement confinement) {
    ++slot.workers;
    return start(slot.program, confinement);
  });
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
  auto asked = worker->ask(typeTable_.get(), workerRequest({ExtractionJob::kDescribe}));
  if (!asked) return {};
  IncomingBytes incoming(std::move(asked->pipe), kMostDescriptionBytes);
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
                                                                  ContentTypeId type,
                                                                  FileOrigin origin) {
  Slot* best = nullptr;
  std::ptrdiff_t fewest = kHandedAtOnce;
  for (Slot& slot : slots_) {
    // What has come of a file is kept until it is asked for; its worker need not wait for that.
    if (slot.program != place.program || slot.looks.size() >= WorkerProcess::kMostKept) continue;
    const std::ptrdiff_t open = std::ranges::count_if(slot.looks, &Look::isOpen);
    const bool goesOn = origin != kOwnOrigin && slot.lastOrigin == origin;
    if (goesOn && open < kHandedOfOneOrigin) {
      best = &slot;
      break;
    }
    if (open < fewest) {
      best = &slot;
      fewest = open;
    }
  }
  if (!best || heldBytes() > kMostHeldBytes) return std::nullopt;
  best->looks.emplace_back();
  Look& look = best->looks.back();
  look.ticket = ++lastTicket_;
  look.file = file;
  look.request = {ExtractionJob::kExtract, place.extractor, type, origin};
  ask(*best, std::prev(best->looks.end()));
  return look.ticket;
}

std::size_t ExtractionWorkers::heldBytes() const {
  std::size_t bytes = 0;
  for (const Slot& slot : slots_) {
    for (const Look& look : slot.looks) bytes += look.incoming ? look.incoming->size() : 0;
  }
  return bytes;
}

std::pair<ExtractionWorkers::Slot*, std::list<ExtractionWorkers::Look>::iterator>
ExtractionWorkers::find(Ticket ticket) {
  for (Slot& slot : slots_) {
    const auto found = std::ranges::find(slot.looks, ticket, &Look::ticket);
    if (found != slot.looks.end()) return {&slot, found};
  }
  assert(false);
  return {};
}

void ExtractionWorkers::ask(Slot& slot, std::list<Look>::iterator look) const {
  slot.looks.splice(slot.looks.end(), slot.looks, look);
  if (std::ranges::none_of(slot.looks, &Look::isOpen)) slot.since = Clock::now();
  look->incoming.reset();
  look->isGivenUp = false;
  WorkerProcess* worker = running(slot);
  look->worker = slot.workers;
  slot.lastOrigin = look->request.origin;
  if (!worker) return;
  auto asked = worker->ask(look->file, workerRequest(look->request));
  if (!asked) return;
  look->number = asked->number;
  look->incoming.emplace(std::move(asked->pipe), kMostExtractionBytes);
}

void ExtractionWorkers::await(const Look& awaited, Clock::time_point deadline) {
  while (awaited.isOpen()) {
    // What others have found is taken, too: they must not wait, since their time runs.
    std::vector<pollfd> pipes;
    std::vector<std::pair<Slot*, Look*>> looks;
    for (Slot& slot : slots_) {
      for (Look& look : slot.looks) {
        if (!look.isOpen()) continue;
        pipes.push_back({look.incoming->descriptor(), POLLIN, 0});
        looks.emplace_back(&slot, &look);
      }
    }
    const Clock::time_point now = Clock::now();
    if (!awaitDescriptors(pipes, std::min(deadline, now + kMostSilence))) {
      if (deadline > now) giveUpSilent();
      if (Clock::now() >= deadline) return;
      continue;
    }
    for (std::size_t i = 0; i < pipes.size(); ++i) {
      if (pipes[i].revents != 0 && !looks[i].second->incoming->readSome()) {
        looks[i].first->since = Clock::now();
      }
    }
  }
}

void ExtractionWorkers::giveUpSilent() {
  const Clock::time_point now = Clock::now();
  for (Slot& slot : slots_) {
    const auto first = std::ranges::find_if(slot.looks, &Look::isOpen);
    if (first == slot.looks.end()) continue;
    WorkerProcess* const worker = running(slot);
    const bool isAsked = worker && first->worker == slot.workers;
    // A process that holds the pipe open has more in mind than to answer.
    const bool hasEnded = isAsked && worker->hasEnded(first->number);
    std::array<pollfd, 1> pipe{{{first->incoming->descriptor(), POLLIN, 0}}};
    const bool isSilent = !awaitDescriptors(pipe, Clock::time_point::min());
    const bool isOverdue = now >= slot.since + WorkerProcess::kAnswerLimit;
    if (!isSilent || (!hasEnded && !isOverdue)) continue;
    first->incoming.reset();
    first->isGivenUp = true;
    slot.since = now;
    // A worker that does not answer is ended, and with it what it was asked for besides.
    if (isAsked && !hasEnded) {
      worker->awaitEnd(first->number, now);
      running(slot);
    }
  }
}

bool ExtractionWorkers::isDone(Ticket ticket, std::chrono::milliseconds patience) {
  const Look& look = *find(ticket).second;
  await(look, Clock::now() + patience);
  return !look.isOpen();
}

Result<Extraction, ExtractionFailure> ExtractionWorkers::finish(Ticket ticket) {
  const auto [slot, look] = find(ticket);
  for (;;) {
    await(*look, Clock::time_point::max());
    Found found = foundBy(*slot, *look);
    if (found.mayBeAnothersFault) look->request.origin = kOwnOrigin;
    const bool isRepeated = (found.isToBeRepeated || found.mayBeAnothersFault) &&
                            look->repetitions++ < kMostRepetitions;
    if (!isRepeated) {
      slot->looks.erase(look);
      return std::move(found.what);
    }
    ask(*slot, look);
  }
}

void ExtractionWorkers::drop(Ticket ticket) {
  const auto [slot, look] = find(ticket);
  slot->looks.erase(look);
}

ExtractionWorkers::Found ExtractionWorkers::foundBy(Slot& slot, Look& look) const {
  if (look.incoming && look.incoming->isWhole()) {
    // How the process ended is of no interest now, and is waited for when there is more to do.
    if (auto found = extractionIn(look.incoming->take(), *schema_)) return {*std::move(found)};
  }
  const bool wasAsked = look.incoming || look.isGivenUp;
  look.incoming.reset();  // a process that writes on meets a closed pipe
  WorkerProcess* const worker = running(slot);
  if (!worker) return {unavailable()};
  worker::WorkerAnswer answer{worker::WorkerEnd::kNotTried};
  if (wasAsked && look.worker == slot.workers) {
    answer = worker->awaitEnd(look.number, slot.since + WorkerProcess::kAnswerLimit);
  } else if (look.isGivenUp) {
    // It has cost the worker, which can't tell any more whether that had looked into others.
    answer = {worker::WorkerEnd::kTimedOut, look.request.origin != kOwnOrigin};
  }
  switch (answer.end) {
    case worker::WorkerEnd::kMade:
      return {ExtractionFailure{Kind::kMalformed, "what was found in it makes no sense"},
              /*isToBeRepeated=*/false, answer.wasShared};
    case worker::WorkerEnd::kNone:
      return {ExtractionFailure{Kind::kUnavailable, "nothing looks into files of its sort"}};
    case worker::WorkerEnd::kCrashed:
      return {ExtractionFailure{Kind::kCrashed,
                                "looking into it ended in a crash, or took more memory or more of "
                                "a processor than it may"},
              /*isToBeRepeated=*/false, answer.wasShared};
    case worker::WorkerEnd::kTimedOut:
      return {ExtractionFailure{Kind::kTimedOut, "looking into it took too long"},
              /*isToBeRepeated=*/false, answer.wasShared};
    case worker::WorkerEnd::kNotTried:
      break;
  }
  // A worker that has ended since it was asked is no fault of the file: another is asked.
  return {unavailable(), /*isToBeRepeated=*/true};
}

}  // namespace vt
