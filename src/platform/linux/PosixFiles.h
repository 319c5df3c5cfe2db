#pragma once

#include <sys/types.h>

#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "platform/Files.h"

namespace vt {

class Accounts;

/// The file manager on the file system of this machine.
///
/// A process killed while it writes can leave a temporary file ".NAME.tmp-XXXXXX" beside NAME.
/// Nobody reads it; a later write of NAME removes it once it is an hour old, so that the temporary
/// file of another process that is writing just now is left alone.
class PosixFiles : public Files {
 public:
  /// Knows the groups of the name service switch.
  PosixFiles();
  /// Knows the groups of `accounts`, which is not nullptr.
  explicit PosixFiles(std::shared_ptr<const Accounts> accounts);

  bool exists(const std::string& path) const override;
  bool isDirectory(const std::string& path) const override;
  bool createDirectory(const std::string& path) override;
  bool createPrivateDirectory(const std::string& path) override;
  /// `groupOwner` is found by groupOrItsStandIn().
  bool changeAttributes(const std::string& path, const std::string& groupOwner,
                        std::uint32_t permissions) override;
  Result<std::string, FileError> read(const std::string& path, std::uint64_t limit) const override;
  Result<std::string, FileError> readContent(const std::string& path,
                                             std::uint64_t limit) const override;
  Result<int, FileError> openContent(const std::string& path) const override;
  [[nodiscard]] std::optional<FileError> writeAtomically(const std::string& path,
                                                         std::string_view bytes) override;
  [[nodiscard]] std::optional<FileError> keepAs(const std::string& path,
                                                const std::string& keptPath) override;
  std::optional<FileRights> status(const std::string& path) const override;
  std::optional<Date> modificationDate(const std::string& path) const override;
  bool removeFile(const std::string& path) override;
  bool moveFile(const std::string& from, const std::string& to) override;

 protected:
  // The system calls by which a file is replaced, each as the system's own: -1 and errno on error.
  // Apart, so that each can be made to fail.
  virtual int makeTemporary(std::string& pathPattern);
  virtual ssize_t writeBytes(int descriptor, const char* bytes, std::size_t count);
  virtual int sync(int descriptor);
  virtual int rename(const char* from, const char* to);
  virtual int link(const char* from, const char* to);

 private:
  std::optional<FileError> fill(int descriptor, const std::string& path, std::string_view bytes);
  std::optional<FileError> syncFolder(const std::string& folder);

  std::shared_ptr<const Accounts> accounts_;
};

}  // namespace vt
