#pragma once

#include <memory>

#include "directory/DirectoryFunctions.h"
#include "foundation/Dictionary.h"
#include "foundation/VTObject.h"

namespace vt {

/// The door to the system's directory: looks up one record, and checks a password.
///
/// Holds a session and the search node open for its life. It must not outlive the platform on which
/// it was made. One thread at a time.
class DirServiceWrapper : public VTObject {
 public:
  /// `init`
  /// Opens the session and the search node; nullptr when the directory refuses either.
  static std::shared_ptr<DirServiceWrapper> init();

  ~DirServiceWrapper() override;

  /// Closes the node and the session. Harmless when they are closed.
  void cleanup();

  /// `attributeDataForNodeOfType:value:attr1:attr2:attr3:attr4:attr5:attr6:`
  /// The attributes attr1 up to the first null of the one record of type `type` called exactly
  /// `value`: a new dictionary, attribute type to array of texts in the directory's order. Never
  /// nil. An attribute without values has no key; a value that is not UTF-8 is left out. Empty when
  /// no record, or more than one, has the name, and when what was asked for needs a buffer of more
  /// than 2,048 bytes.
  std::shared_ptr<Dictionary> attributeDataForNodeOfType(const char* type, const char* value,
                                                         const char* attr1, const char* attr2,
                                                         const char* attr3, const char* attr4,
                                                         const char* attr5, const char* attr6);

  /// `authenticateUser:password:`
  /// Whether `password` is that of the user `user`: through OpenDirectory on a system newer than
  /// 949, else through Directory Services. Takes as long as the system's own check. NO without
  /// either text. Logs one line when OpenDirectory cannot be loaded.
  bool authenticateUser(const char* user, const char* password);

 protected:
  explicit DirServiceWrapper(DirectoryServices& services) : services_(services) {}

 private:
  bool authenticateThroughOpenDirectory(const char* user, const char* password) const;
  bool authenticateThroughDirectoryServices(const char* user, const char* password);
  void readRecord(const DataBuffer* buffer, Dictionary& result);
  void readAttribute(const DataBuffer* buffer, DirAttributeListReference attributes,
                     std::uint32_t index, Dictionary& result);

  DirectoryServices& services_;
  DirReference dsRef_ = 0;
  DirNodeReference dsSearchNodeRef_ = 0;
};

}  // namespace vt
