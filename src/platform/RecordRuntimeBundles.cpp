#include "platform/RecordRuntimeBundles.h"

#include <utility>

namespace vt {
namespace {

using Source = std::shared_ptr<const RecordSource>;

class Record final : public ODRecord {
 public:
  Record(Source source, std::string name) : source_(std::move(source)), name_(std::move(name)) {}

  bool verifyPassword(const std::string& password, BundleError* error) override {
    if (source_->verifyPassword(name_, password)) return true;
    if (error) error->text = "the credentials were refused";
    return false;
  }

 private:
  Source source_;
  std::string name_;
};

class Node final : public ODNode {
 public:
  explicit Node(Source source) : source_(std::move(source)) {}

  std::shared_ptr<ODRecord> recordWithRecordType(const std::string& recordType,
                                                 const std::string& name,
                                                 const std::vector<std::string>&,
                                                 BundleError* error) override {
    const std::vector<DirectoryRecord> records = source_->records(recordType, name);
    if (records.size() == 1) return std::make_shared<Record>(source_, records.front().name);
    if (error) error->text = "no record, or more than one, of this name";
    return nullptr;
  }

 private:
  Source source_;
};

class SessionClass final : public ODSessionClass {
 public:
  std::shared_ptr<ODSession> defaultSession() override { return std::make_shared<ODSession>(); }
};

class NodeClass final : public ODNodeClass {
 public:
  explicit NodeClass(Source source) : source_(std::move(source)) {}

  std::shared_ptr<ODNode> nodeWithSession(const std::shared_ptr<ODSession>& session,
                                          DirPatternMatch type, BundleError* error) override {
    if (session && type == kDSAuthenticationSearchNodeName) return std::make_shared<Node>(source_);
    if (error) error->text = "no node of this kind";
    return nullptr;
  }

 private:
  Source source_;
};

}  // namespace

bool RecordRuntimeBundles::load(const std::string& path) {
  if (path != kOpenDirectoryFrameworkPath) return false;
  loaded_ = true;
  return true;
}

std::shared_ptr<RuntimeClass> RecordRuntimeBundles::classNamed(std::string_view name) {
  if (!loaded_) return nullptr;
  if (name == kODSessionClassName) return std::make_shared<SessionClass>();
  if (name == kODNodeClassName) return std::make_shared<NodeClass>(source_);
  return nullptr;
}

}  // namespace vt
