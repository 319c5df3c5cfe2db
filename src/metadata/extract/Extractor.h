#pragma once

#include <chrono>
#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "foundation/Result.h"
#include "foundation/Value.h"
#include "metadata/types/ContentType.h"

namespace vt {

/// What is in a file.
struct Extraction {
  /// UTF-8; nothing when files of this sort have none. "" is a text without words.
  std::optional<std::string> text;
  /// By names of the schema ("kMDItemTitle"). Each value is text (UTF-8), a boolean, a number, a
  /// Date or an Array of these. What a file's name and status tell is not among them, unless it may
  /// replace that (maySomethingInFilesReplace()), nor what extended attributes tell.
  std::map<std::string, Value> attributes;
};

/// Why nothing was extracted.
struct ExtractionFailure {
  enum class Kind : std::uint8_t {
    kUnreadable,   ///< its disk or file system failed
    kMalformed,    ///< it is not what its type says
    kTooLarge,     ///< it, or what it unfolds to, exceeds a bound
    kTimedOut,     ///< it took more than its time
    kCrashed,      ///< it ended the process that looked into it
    kUnavailable,  ///< the extractor itself can't work now, whatever the file
  };

  Kind kind = Kind::kMalformed;
  std::string reason;  ///< for people, as the end of a sentence: "it ends within an object"

  /// Whether the same file would fail again: it is then not tried before it has changed.
  bool isLasting() const { return kind != Kind::kUnreadable && kind != Kind::kUnavailable; }
};

/// Files with the same number may be looked into by one process, one after the other: whoever could
/// have made one of them could have changed the other, and both may be read by the same people.
using FileOrigin = std::uint64_t;

/// Of a file that is to have a process of its own.
inline constexpr FileOrigin kOwnOrigin = 0;

/// Looks into files of certain types. Used by the indexer alone, one thread at a time.
class Extractor {
 public:
  virtual ~Extractor() = default;

  /// What the catalogue calls it: a word, the same for ever.
  virtual std::string_view name() const = 0;
  /// Goes up whenever it finds other things in the same bytes: all its files are then read again.
  virtual std::uint32_t version() const = 0;

  /// Whether it looks into regular files of the type, a number of the table that it was made with.
  virtual bool takes(ContentTypeId type) const = 0;

  /// What is in the open regular file, which is of a type that it takes. The descriptor is at the
  /// beginning, for reading alone, and stays the caller's. The bytes may be of anyone's making:
  /// time and memory must be bounded whatever they are. The file may change meanwhile.
  virtual Result<Extraction, ExtractionFailure> extract(int file, ContentTypeId type) = 0;

  /// A file that is being looked into while its caller does something else. Given up with this
  /// object.
  class Look {
   public:
    virtual ~Look() = default;
    /// Waits no longer than `patience`. Whether finish() need not wait.
    virtual bool isDone(std::chrono::milliseconds patience) = 0;
    /// Waits for what is found. To be called once.
    virtual Result<Extraction, ExtractionFailure> finish() = 0;
  };

  /// Begins what extract() does, or does it; the file must stay open until it is finished or given
  /// up. Nullptr when others must be finished first; never so when none is under way.
  virtual std::unique_ptr<Look> begin(int file, ContentTypeId type, FileOrigin origin);

  /// Whether it takes less when files of one origin come one after the other, and looks into them
  /// while its caller does something else.
  virtual bool isOtherProcess() const { return false; }

 protected:
  /// One that has found that.
  static std::unique_ptr<Look> doneLook(Result<Extraction, ExtractionFailure> found);
};

}  // namespace vt
