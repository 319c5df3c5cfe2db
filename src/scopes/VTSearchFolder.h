#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "foundation/Array.h"
#include "foundation/AtomicString.h"
#include "foundation/Dictionary.h"
#include "foundation/ObjectArray.h"
#include "foundation/VTObject.h"

namespace vt {

/// A named search scope: one directory tree, or a group of other scopes.
///
/// Abstract in use: the operations that need a directory or members answer with their empty value
/// here. The title is a folder's identity; stored data refers to folders by it.
class VTSearchFolder : public VTObject, public std::enable_shared_from_this<VTSearchFolder> {
 public:
  /// `initWithTitle:`
  /// A folder that covers nothing. `title` is UTF-8 and may be nil.
  static std::shared_ptr<VTSearchFolder> initWithTitle(std::optional<std::string> title);

  /// `initWithDictionary:`
  /// A folder without title; what `data` holds is for the subclasses to read.
  static std::shared_ptr<VTSearchFolder> initWithDictionary(const Dictionary& data);

  /// `serializedDataFromFolderArray:`
  /// Each folder's serializedData(), in order. Throws InvalidArgumentError for a folder that has
  /// none.
  static std::shared_ptr<Array> serializedDataFromFolderArray(
      const ObjectArray<VTSearchFolder>& folders);

  /// `deserializedFoldersFromStorage:`
  /// Each element of `storage` read back, in order; empty for nullptr. An element that cannot be
  /// read back (it is no dictionary, or names a key that no folder has) is logged and left out.
  static std::shared_ptr<ObjectArray<VTSearchFolder>> deserializedFoldersFromStorage(
      const std::shared_ptr<Array>& storage);

  /// `deserializeFolderWithData:`
  /// A group when `data` has a value for "children", whatever it is, else a concrete folder.
  /// Throws UndefinedKeyError or InvalidArgumentError for a key or value that the folder, or a
  /// member at any depth, does not take.
  static std::shared_ptr<VTSearchFolder> deserializeFolderWithData(const Dictionary& data);

  /// `isEqual:`
  /// Whether `other` is a search folder of any class with the same title, character for character.
  /// A folder without title equals nothing, itself included.
  bool isEqual(const VTObject* other) const;

  /// Observable as "title".
  std::optional<std::string> title() const { return title_.load(); }
  virtual void setTitle(std::optional<std::string> title);

  /// 1: users may download the files found here; 0: they may not; -1 only from a group whose
  /// members disagree. Observable as "download".
  virtual std::int64_t download() const { return download_; }
  virtual void setDownload(std::int64_t download);

  /// `isDownloadable:`
  /// Whether the file at the absolute path `path` may be downloaded through this folder.
  virtual bool isDownloadable(const std::string& path) const;

  /// `afpURLforPath:`
  /// The AFP address of the file at the absolute path `path`, with nothing escaped; nil in the
  /// base, for a path that the folder does not cover, and without an address of the folder.
  virtual std::optional<std::string> afpURLforPath(const std::string& path) const;
  /// `smbURLforPath:windowsClient:`
  /// The same for SMB; for a Windows client each "smb://" is "file://///".
  virtual std::optional<std::string> smbURLforPath(const std::string& path,
                                                   bool windowsClient) const;

  /// The absolute directory paths that the folder covers; nil in the base.
  virtual std::shared_ptr<Array> paths() const;

  /// The folder as property-list data; nil in the base.
  virtual std::shared_ptr<Dictionary> serializedData() const;

  /// The members of a group; nil for anything else and for a group that never had one.
  virtual std::shared_ptr<ObjectArray<VTSearchFolder>> folders() const;

  /// `searchFolderForTitle:`
  /// This folder when its title is `title`, exactly; else nullptr.
  virtual std::shared_ptr<VTSearchFolder> searchFolderForTitle(const std::string& title);

 protected:
  VTSearchFolder() = default;
  const Property* propertyNamed(std::string_view key) const override;

 private:
  AtomicString title_;
  std::int64_t download_ = 0;
};

}  // namespace vt
