#include "platform/memory/MemoryDirectoryServices.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <cstdlib>

namespace vt {

MemoryDirectoryServices::MemoryDirectoryServices(std::shared_ptr<const MemoryRecords> records,
                                                 Reporter reporter)
    : RecordDirectoryServices(std::move(records)), reporter_(std::move(reporter)) {}

MemoryDirectoryServices::~MemoryDirectoryServices() {
  const std::string complaint = leaks();
  if (complaint.empty()) return;
  if (!reporter_) std::abort();
  reporter_(complaint);
}

void MemoryDirectoryServices::refuse(std::string name, std::size_t nth) {
  refusedName_ = std::move(name);
  callsUntilRefusal_ = nth;
}

DirStatus MemoryDirectoryServices::entering(std::string_view call) {
  calls_.emplace_back(call);
  if (callsUntilRefusal_ == 0) return kDSNoErr;
  if (!refusedName_.empty() && refusedName_ != call) return kDSNoErr;
  return --callsUntilRefusal_ == 0 ? kRefused : kDSNoErr;
}

DirStatus MemoryDirectoryServices::dsFindDirNodes(DirReference session, DataBuffer* buffer,
                                                  const DataList* namePattern,
                                                  DirPatternMatch pattern, std::uint32_t* count,
                                                  DirContinueData* continueData) {
  const DirStatus status = RecordDirectoryServices::dsFindDirNodes(session, buffer, namePattern,
                                                                   pattern, count, continueData);
  if (leavesContinueData_ && continueData) *continueData = addContinuation();
  return status;
}

DirStatus MemoryDirectoryServices::dsDoDirNodeAuth(DirNodeReference node, const DataNode* method,
                                                   bool authenticationOnly, const DataBuffer* step,
                                                   DataBuffer* response,
                                                   DirContinueData* continueData) {
  const DirStatus status = RecordDirectoryServices::dsDoDirNodeAuth(
      node, method, authenticationOnly, step, response, continueData);
  if (leavesContinueData_ && continueData) *continueData = addContinuation();
  return status;
}

DataBuffer* MemoryDirectoryServices::dsDataBufferAllocate(DirReference session,
                                                          std::uint32_t size) {
  bufferSizes_.push_back(size);
  DataBuffer* const buffer = RecordDirectoryServices::dsDataBufferAllocate(session, size);
  if (buffer) heldBufferSizes_[buffer] = size;
  return buffer;
}

DirStatus MemoryDirectoryServices::dsDataBufferDeAllocate(DirReference session,
                                                          DataBuffer* buffer) {
  // The buffer itself may be gone already: a test may give it back twice.
  if (const auto held = heldBufferSizes_.extract(buffer)) {
    releasedBufferSizes_.push_back(held.mapped());
  }
  return RecordDirectoryServices::dsDataBufferDeAllocate(session, buffer);
}

std::string MemoryDirectoryServices::leaks() const {
  std::vector<std::string> complaints = outstanding();
  if (wrongReleases() > 0) complaints.push_back(fmt::format("{} wrong releases", wrongReleases()));
  return fmt::format("{}", fmt::join(complaints, ", "));
}

}  // namespace vt
