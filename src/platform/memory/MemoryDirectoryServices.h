#pragma once

#include <cstddef>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/RecordDirectoryServices.h"
#include "platform/memory/MemoryRecords.h"

namespace vt {

/// The directory over a table, which writes down each call and can refuse any of them.
///
/// When it goes it hands the reporter one text if something is still handed out or was given back
/// wrongly; without a reporter it aborts the process.
class MemoryDirectoryServices final : public RecordDirectoryServices {
 public:
  using Reporter = std::function<void(const std::string& complaint)>;

  /// The status of a call that was refused on demand.
  static constexpr DirStatus kRefused = -14999;

  explicit MemoryDirectoryServices(std::shared_ptr<const MemoryRecords> records,
                                   Reporter reporter = nullptr);
  MemoryDirectoryServices(const MemoryDirectoryServices&) = delete;
  MemoryDirectoryServices& operator=(const MemoryDirectoryServices&) = delete;
  ~MemoryDirectoryServices() override;

  /// Refuses the `nth` call from now on of the operation `name`, or of any when `name` is "".
  void refuse(std::string name, std::size_t nth = 1);
  /// Makes dsDoDirNodeAuth() and dsFindDirNodes() leave continuation data behind.
  void leaveContinueData() { leavesContinueData_ = true; }

  DirStatus dsFindDirNodes(DirReference session, DataBuffer* buffer, const DataList* namePattern,
                           DirPatternMatch pattern, std::uint32_t* count,
                           DirContinueData* continueData) override;
  DirStatus dsDoDirNodeAuth(DirNodeReference node, const DataNode* method, bool authenticationOnly,
                            const DataBuffer* step, DataBuffer* response,
                            DirContinueData* continueData) override;
  DataBuffer* dsDataBufferAllocate(DirReference session, std::uint32_t size) override;
  DirStatus dsDataBufferDeAllocate(DirReference session, DataBuffer* buffer) override;

  /// The names of the calls made so far, in order.
  const std::vector<std::string>& calls() const { return calls_; }
  void forgetCalls() { calls_.clear(); }
  /// The sizes asked of dsDataBufferAllocate() so far.
  const std::vector<std::uint32_t>& bufferSizes() const { return bufferSizes_; }
  /// The sizes of the buffers given back so far, in that order.
  const std::vector<std::uint32_t>& releasedBufferSizes() const { return releasedBufferSizes_; }

  /// What is still handed out or was given back wrongly; "" when all is well.
  std::string leaks() const;

 protected:
  DirStatus entering(std::string_view call) override;

 private:
  Reporter reporter_;
  std::vector<std::string> calls_;
  std::vector<std::uint32_t> bufferSizes_;
  std::map<const DataBuffer*, std::uint32_t> heldBufferSizes_;
  std::vector<std::uint32_t> releasedBufferSizes_;
  std::string refusedName_;
  std::size_t callsUntilRefusal_ = 0;  // 0 = none is to be refused
  bool leavesContinueData_ = false;
};

}  // namespace vt
