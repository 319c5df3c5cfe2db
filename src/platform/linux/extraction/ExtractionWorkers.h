#pragma once

#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "extraction/ExtractionRequest.h"
#include "extraction/ExtractorDescription.h"
#include "metadata/extract/Extractor.h"
#include "metadata/query/AttributeSchema.h"
#include "platform/linux/worker/IncomingBytes.h"
#include "platform/linux/worker/SettledWorker.h"

namespace vt {

/// The processes that look into files, two of each program at once. One thread at a time.
///
/// There are several programs since each has other libraries loaded, and a process that has many
/// takes long to fork, which it does for each file.
///
/// They are started when they are first asked, and again once one has ended. Behind which walls is
/// settled then: in bubblewrap's namespaces when they can be had, else behind Landlock and seccomp,
/// else no file is ever looked into.
class ExtractionWorkers {
 public:
  /// Processes of each program.
  static constexpr std::size_t kAtOnce = 2;

  /// An extractor of one of the programs.
  struct Place {
    std::size_t program = 0;      ///< among the programs
    std::uint32_t extractor = 0;  ///< among those of the program
  };
  struct Described {
    Place place;
    ExtractorDescription description;
  };

  /// `programs` are absolute paths of worker programs, `typeTable` the bytes of the table of
  /// content types.
  ExtractionWorkers(std::vector<std::string> programs, const std::string& typeTable,
                    std::size_t typeCount, std::shared_ptr<const query::AttributeSchema> schema);

  /// The extractors of the programs, in their order. None of a program that can't be started at
  /// all; where it can't be confined it describes them all the same. Starts a worker of each.
  std::vector<Described> describe();
  /// Behind which walls files are looked into, as of worker::Wall; nothing when none are. Starts a
  /// worker.
  std::optional<std::uint32_t> walls();

  /// A file that is being looked into, by the process of that number.
  using Ticket = std::size_t;

  /// Begins to look into the open file, which must stay open until the ticket is handed back.
  /// Nothing when all processes of the program are at work.
  std::optional<Ticket> begin(int file, const Place& place, ContentTypeId type);
  /// Waits no longer than `patience`. Whether finish() need not wait.
  bool isDone(Ticket ticket, std::chrono::milliseconds patience);
  /// Waits for what was found. Meanwhile the other processes go on.
  Result<Extraction, ExtractionFailure> finish(Ticket ticket);
  /// Gives a file up. Its worker is at work until its process has ended.
  void drop(Ticket ticket);

 private:
  struct Look {
    Look(int looked, const ExtractionRequest& asked) : file(looked), request(asked) {}

    int file;
    ExtractionRequest request;
    std::optional<IncomingBytes> incoming;  // unless it could not be begun
    std::chrono::steady_clock::time_point deadline;
  };
  struct Slot {
    std::size_t program = 0;
    SettledWorker<WorkerProcess> worker;
    std::optional<Look> look;
  };

  std::unique_ptr<WorkerProcess> start(std::size_t program, WorkerConfinement confinement) const;
  WorkerProcess* running(Slot& slot) const;
  std::vector<ExtractorDescription> describe(Slot& slot) const;
  void ask(Slot& slot) const;
  /// Takes what comes, until all that was found in the file has, or `deadline`.
  void await(const Look& awaited, std::chrono::steady_clock::time_point deadline);
  Result<Extraction, ExtractionFailure> answerOf(Slot& slot, bool& isToBeRepeated) const;

  std::vector<std::string> programs_;
  FileDescriptor typeTable_;  // a file in memory
  std::size_t typeCount_;
  std::shared_ptr<const query::AttributeSchema> schema_;
  std::vector<Slot> slots_;  // kAtOnce of each program
};

}  // namespace vt
