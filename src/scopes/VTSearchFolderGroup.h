#pragma once

#include <memory>
#include <optional>
#include <string>

#include "scopes/VTSearchFolder.h"

namespace vt {

/// A named, ordered list of search folders, groups among them. No two direct members have the same
/// title.
class VTSearchFolderGroup final : public VTSearchFolder {
 public:
  /// `initWithTitle:`
  /// A group without members.
  static std::shared_ptr<VTSearchFolderGroup> initWithTitle(std::optional<std::string> title);

  /// `initWithDictionary:`
  /// Reads "title" and "children"; a member whose title repeats an earlier one's is dropped, and
  /// nothing else is read. A value other than an array for "children" gives no members. Throws as
  /// deserializeFolderWithData() does for a member, and InvalidArgumentError for one that is no
  /// dictionary.
  static std::shared_ptr<VTSearchFolderGroup> initWithDictionary(const Dictionary& data);

  /// The members' common value: 0 without members, -1 when a 0 and a 1 clash.
  std::int64_t download() const override;
  /// Passed on to every member; the group keeps nothing.
  void setDownload(std::int64_t download) override;

  /// `addFolder:`
  /// Appends `folder` unless a member has its title. Observable as "folders". Throws
  /// InvalidArgumentError for nullptr.
  void addFolder(const std::shared_ptr<VTSearchFolder>& folder);
  /// `removeFolder:`
  /// Removes every member with the title of `folder`. Announced even when nothing is removed.
  void removeFolder(std::shared_ptr<VTSearchFolder> folder);

  /// Whether any member answers YES.
  bool isDownloadable(const std::string& path) const override;
  /// The shortest address that a member gives; the earliest of equally short ones.
  std::optional<std::string> afpURLforPath(const std::string& path) const override;
  std::optional<std::string> smbURLforPath(const std::string& path,
                                           bool windowsClient) const override;
  /// The members' paths in order, depth first, repeated ones kept.
  std::shared_ptr<Array> paths() const override;
  /// "title" and "children"; empty when the title is nil.
  std::shared_ptr<Dictionary> serializedData() const override;
  /// The member array itself; nil until the first member was added.
  std::shared_ptr<ObjectArray<VTSearchFolder>> folders() const override { return folders_; }
  /// This group, else the first answer of its members in order, else nullptr.
  std::shared_ptr<VTSearchFolder> searchFolderForTitle(const std::string& title) override;

 private:
  VTSearchFolderGroup() = default;

  std::shared_ptr<ObjectArray<VTSearchFolder>> folders_;
};

}  // namespace vt
