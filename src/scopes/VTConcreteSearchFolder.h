#pragma once

#include <memory>
#include <optional>
#include <string>

#include "scopes/VTSearchFolder.h"

namespace vt {

/// One directory tree that may be searched.
class VTConcreteSearchFolder final : public VTSearchFolder {
 public:
  /// `initWithTitle:`
  /// A folder without path.
  static std::shared_ptr<VTConcreteSearchFolder> initWithTitle(std::optional<std::string> title);

  /// `initWithPath:title:`
  /// `path` is absolute, with or without a trailing slash. Downloads start as not allowed and the
  /// network addresses as derived.
  static std::shared_ptr<VTConcreteSearchFolder> initWithPath(std::optional<std::string> path,
                                                              std::optional<std::string> title);

  /// `initWithDictionary:`
  /// Sets every key of `data` by access by key. Throws UndefinedKeyError for a key that names no
  /// settable property and InvalidArgumentError for a value that it cannot take; no folder is made.
  static std::shared_ptr<VTConcreteSearchFolder> initWithDictionary(const Dictionary& data);

  /// Observable as "path"; a change is one of "afpURLPath", "smbURLPath" and "sharePointName" too.
  std::optional<std::string> path() const { return path_.load(); }
  /// `setPath:`
  /// Also forgets the addresses derived from the share points; typed ones are kept.
  void setPath(std::optional<std::string> path);

  /// Whether the administrator typed the network addresses; else the share points give them.
  bool userDefinedURLPaths() const { return userDefinedURLPaths_; }
  void setUserDefinedURLPaths(bool userDefined);

  /// The AFP and SMB base address of the folder: nil when it has none.
  std::optional<std::string> afpURLPath() const;
  void setAfpURLPath(std::optional<std::string> address);
  std::optional<std::string> smbURLPath() const;
  void setSmbURLPath(std::optional<std::string> address);

  /// YES when `path` begins with the folder's path, as text (a folder /Data also covers
  /// /Data2/report.pdf), and download() is exactly 1.
  bool isDownloadable(const std::string& path) const override;

  /// One element: path(), or the null object when there is none.
  std::shared_ptr<Array> paths() const override;

  /// "title", "download", "path" and "userDefinedURLPaths", the null object for nil; then
  /// "afpURLPath" and "smbURLPath" as far as they have a value.
  std::shared_ptr<Dictionary> serializedData() const override;

 protected:
  const Property* propertyNamed(std::string_view key) const override;
  std::span<const DependentKey> dependentKeys() const override;

 private:
  VTConcreteSearchFolder() = default;

  bool userDefinedURLPaths_ = false;
  AtomicString path_;
  AtomicString afpURLPath_;  // as typed
  AtomicString smbURLPath_;
};

}  // namespace vt
