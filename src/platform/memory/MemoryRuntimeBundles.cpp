#include "platform/memory/MemoryRuntimeBundles.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

namespace vt {
namespace {

using Calls = std::shared_ptr<std::vector<std::string>>;

class WatchedRecord final : public ODRecord {
 public:
  WatchedRecord(std::shared_ptr<ODRecord> record, Calls calls)
      : record_(std::move(record)), calls_(std::move(calls)) {}

  bool verifyPassword(const std::string& password, BundleError* error) override {
    calls_->push_back("verifyPassword " + password);
    return record_->verifyPassword(password, error);
  }

 private:
  std::shared_ptr<ODRecord> record_;
  Calls calls_;
};

class WatchedNode final : public ODNode {
 public:
  WatchedNode(std::shared_ptr<ODNode> node, Calls calls)
      : node_(std::move(node)), calls_(std::move(calls)) {}

  std::shared_ptr<ODRecord> recordWithRecordType(const std::string& recordType,
                                                 const std::string& name,
                                                 const std::vector<std::string>& attributes,
                                                 BundleError* error) override {
    calls_->push_back(
        fmt::format("recordWithRecordType {} {} {}", recordType, name, fmt::join(attributes, ",")));
    auto record = node_->recordWithRecordType(recordType, name, attributes, error);
    return record ? std::make_shared<WatchedRecord>(std::move(record), calls_) : nullptr;
  }

 private:
  std::shared_ptr<ODNode> node_;
  Calls calls_;
};

class WatchedSessionClass final : public ODSessionClass {
 public:
  WatchedSessionClass(std::shared_ptr<ODSessionClass> sessions, Calls calls)
      : sessions_(std::move(sessions)), calls_(std::move(calls)) {}

  std::shared_ptr<ODSession> defaultSession() override {
    calls_->emplace_back("defaultSession");
    return sessions_->defaultSession();
  }

 private:
  std::shared_ptr<ODSessionClass> sessions_;
  Calls calls_;
};

class WatchedNodeClass final : public ODNodeClass {
 public:
  WatchedNodeClass(std::shared_ptr<ODNodeClass> nodes, Calls calls)
      : nodes_(std::move(nodes)), calls_(std::move(calls)) {}

  std::shared_ptr<ODNode> nodeWithSession(const std::shared_ptr<ODSession>& session,
                                          DirPatternMatch type, BundleError* error) override {
    calls_->push_back(fmt::format("nodeWithSession {:#x}", type));
    auto node = nodes_->nodeWithSession(session, type, error);
    return node ? std::make_shared<WatchedNode>(std::move(node), calls_) : nullptr;
  }

 private:
  std::shared_ptr<ODNodeClass> nodes_;
  Calls calls_;
};

}  // namespace

bool MemoryRuntimeBundles::load(const std::string& path) {
  calls_->push_back("load " + path);
  return !missing_.contains(path) && RecordRuntimeBundles::load(path);
}

std::shared_ptr<RuntimeClass> MemoryRuntimeBundles::classNamed(std::string_view name) {
  calls_->push_back(fmt::format("classNamed {}", name));
  if (missing_.contains(name)) return nullptr;
  auto found = RecordRuntimeBundles::classNamed(name);
  if (auto sessions = std::dynamic_pointer_cast<ODSessionClass>(found)) {
    return std::make_shared<WatchedSessionClass>(std::move(sessions), calls_);
  }
  if (auto nodes = std::dynamic_pointer_cast<ODNodeClass>(found)) {
    return std::make_shared<WatchedNodeClass>(std::move(nodes), calls_);
  }
  return found;
}

}  // namespace vt
