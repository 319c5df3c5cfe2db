#include "scopes/VTSharePoint.h"

#include <utility>

#include "directory/DirectoryFunctions.h"
#include "directory/DirectoryHolders.h"
#include "platform/Platform.h"

namespace vt {
namespace {

/// The session in gDirRef, closed on every way out.
class ListingSession {
 public:
  explicit ListingSession(DirectoryServices& services) : services_(services) {
    isOpen_ = services_.dsOpenDirService(&gDirRef) == kDSNoErr;
  }
  ListingSession(const ListingSession&) = delete;
  ListingSession& operator=(const ListingSession&) = delete;
  ~ListingSession() {
    if (gDirRef != 0) services_.dsCloseDirService(std::exchange(gDirRef, 0));
  }

  bool isOpen() const { return isOpen_; }

 private:
  DirectoryServices& services_;
  bool isOpen_;
};

}  // namespace

std::shared_ptr<ObjectArray<Dictionary>> VTSharePoint::allSharePoints() {
  DirectoryServices& services = Platform::current().directoryServices();
  const ListingSession session(services);
  if (!session.isOpen()) return nullptr;
  // Declared after the session, so that it is closed before.
  NodeHolder node(services);
  if (MyOpenDirNode(node.out()) != kDSNoErr) return nullptr;
  const std::shared_ptr<Array> records = GetRecordList(node.get());
  auto sharePoints = ObjectArray<Dictionary>::make();
  for (const Value& record : *records) sharePoints->append(record.dictionary());
  return sharePoints;
}

}  // namespace vt
