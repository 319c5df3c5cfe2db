#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <list>
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
  /// Files that each of them has at once: it looks into one, and need not wait for the next.
  static constexpr int kHandedAtOnce = 4;
  /// As many when they are of one origin: another worker would need another process for some.
  static constexpr int kHandedOfOneOrigin = 8;

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

  /// A file that is being looked into.
  using Ticket = std::uint64_t;

  /// Begins to look into the open file, which must stay open until the ticket is handed back.
  /// Nothing when all processes of the program have their files, or much was found that nobody has
  /// asked for.
  std::optional<Ticket> begin(int file, const Place& place, ContentTypeId type, FileOrigin origin);
  /// Waits no longer than `patience`. Whether finish() need not wait.
  bool isDone(Ticket ticket, std::chrono::milliseconds patience);
  /// Waits for what was found. Meanwhile the other processes go on. When a file ends a process that
  /// had looked into others, those may be to blame: it is looked into again, by a process of its
  /// own.
  Result<Extraction, ExtractionFailure> finish(Ticket ticket);
  /// Gives a file up. Its worker is at work until its process has ended.
  void drop(Ticket ticket);

 private:
  using Clock = std::chrono::steady_clock;

  struct Look {
    Ticket ticket = 0;
    int file = -1;
    ExtractionRequest request;
    // Of the last time that a worker was asked.
    std::optional<IncomingBytes> incoming;  // unless it could not be, or was given up
    std::uint64_t number = 0;               // of the request
    std::uint64_t worker = 0;               // as Slot::workers
    bool isGivenUp = false;                 // it took too long
    int repetitions = 0;

    bool isOpen() const { return incoming && incoming->descriptor() >= 0; }
  };
  struct Slot {
    std::size_t program = 0;
    SettledWorker<WorkerProcess> worker;
    std::uint64_t workers = 0;  // that were started
    FileOrigin lastOrigin = kOwnOrigin;
    std::list<Look> looks;    // in the order in which they were asked for
    Clock::time_point since;  // when the first that is open could begin
  };
  struct Found {
    Result<Extraction, ExtractionFailure> what;
    bool isToBeRepeated = false;  // once
    bool mayBeAnothersFault = false;
  };

  std::unique_ptr<WorkerProcess> start(std::size_t program, WorkerConfinement confinement) const;
  WorkerProcess* running(Slot& slot) const;
  std::vector<ExtractorDescription> describe(Slot& slot) const;
  std::pair<Slot*, std::list<Look>::iterator> find(Ticket ticket);
  std::size_t heldBytes() const;
  /// Asks for the look, which comes behind all others of the slot.
  void ask(Slot& slot, std::list<Look>::iterator look) const;
  /// Takes what comes, until all that was found in the file has, or `deadline`.
  void await(const Look& awaited, Clock::time_point deadline);
  /// Gives up the files that nothing comes of, though the worker has done with them or should have.
  void giveUpSilent();
  Found foundBy(Slot& slot, Look& look) const;

  std::vector<std::string> programs_;
  FileDescriptor typeTable_;  // a file in memory
  std::size_t typeCount_;
  std::shared_ptr<const query::AttributeSchema> schema_;
  std::vector<Slot> slots_;  // kAtOnce of each program
  Ticket lastTicket_ = 0;
};

}  // namespace vt
