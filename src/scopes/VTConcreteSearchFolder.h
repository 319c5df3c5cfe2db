#pragma once

#include <memory>
#include <optional>
#include <set>
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

  /// The first of the settings' share points whose path the folder's begins with, as text; nil when
  /// there is none. The first, not the longest: where shares lie in one another, the order decides.
  std::shared_ptr<Dictionary> sharePointData() const;
  /// The name of that record; nil without one.
  std::optional<std::string> sharePointName() const;

  /// The AFP and SMB base address of the folder: nil when it has none.
  ///
  /// As typed while userDefinedURLPaths(), else derived from the share point and the server's name,
  /// with nothing escaped. A derived address stays until the path is set, whatever becomes of the
  /// server's name or the share points.
  std::optional<std::string> afpURLPath() const;
  void setAfpURLPath(std::optional<std::string> address);
  std::optional<std::string> smbURLPath() const;
  void setSmbURLPath(std::optional<std::string> address);

  /// Whether clients may be sent there: a typed address is not empty, or the share point says "1".
  /// A derived address can be there all the same.
  bool afpAvailable() const;
  bool smbAvailable() const;

  /// `keyPathsForValuesAffectingAfpURLPath` and its like
  /// The keys whose changes are changes of these values too: "path".
  static std::set<std::string> keyPathsForValuesAffectingAfpURLPath();
  static std::set<std::string> keyPathsForValuesAffectingSmbURLPath();
  static std::set<std::string> keyPathsForValuesAffectingSharePointName();

  std::optional<std::string> afpURLforPath(const std::string& path) const override;
  std::optional<std::string> smbURLforPath(const std::string& path,
                                           bool windowsClient) const override;

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
  mutable AtomicString cachedAFPURLPath_;  // as derived
  mutable AtomicString cachedSMBURLPath_;
};

}  // namespace vt
