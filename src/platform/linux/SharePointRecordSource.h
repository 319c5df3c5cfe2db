#pragma once

#include <memory>
#include <string>
#include <vector>

#include "platform/DirectoryRecord.h"

namespace vt {

class Tasks;

/// The folders that this machine shares, over SMB by Samba and over AFP by Netatalk, as directory
/// records.
///
/// One record per shared folder, Samba's shares first, each service's in its own order. A folder
/// that both share under the same text of its path has one record with both names. A service that
/// shares a folder twice has a record for each name; the other service's name is in the first.
/// The configurations are read anew each time, which takes about 20 ms where there is a Samba.
class SharePointRecordSource final : public RecordSource {
 public:
  /// The configurations are "/etc/samba/smb.conf" and "/etc/netatalk/afp.conf" behind `rootPrefix`,
  /// and so is Samba's own folder for users' shares. Paths inside of them are taken as they are.
  SharePointRecordSource(std::shared_ptr<Tasks> tasks, std::string rootPrefix);

  struct Listing {
    std::vector<DirectoryRecord> records;
    /// One line for each share, or for all shares of a service, that is left out, and why.
    std::vector<std::string> notes;
  };

  /// All records. A service whose configuration does not exist shares nothing; one whose
  /// configuration is broken shares nothing and has a note.
  Listing listing() const;

  std::vector<DirectoryRecord> records(std::string_view type,
                                       std::optional<std::string_view> name) const override;
  /// Share points have no passwords.
  bool verifyPassword(const std::string&, const std::string&) const override { return false; }

 private:
  std::shared_ptr<Tasks> tasks_;
  std::string rootPrefix_;
};

}  // namespace vt
