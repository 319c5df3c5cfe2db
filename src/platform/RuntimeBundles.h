#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "platform/DirectoryConstants.h"

namespace vt {

/// Why a call of a class found at run time gave nothing.
struct BundleError {
  std::string text;
};

/// A class found by name in a loaded bundle. What it can do is told by its subclass.
class RuntimeClass {
 public:
  virtual ~RuntimeClass() = default;
};

/// A conversation with the directory. It is only handed on.
class ODSession {
 public:
  virtual ~ODSession() = default;
};

/// One record as OpenDirectory gives it.
class ODRecord {
 public:
  virtual ~ODRecord() = default;

  /// `verifyPassword:error:`
  /// Whether the password is right and the account may be used. `error` may be null.
  virtual bool verifyPassword(const std::string& password, BundleError* error) = 0;
};

/// One node of the directory.
class ODNode {
 public:
  virtual ~ODNode() = default;

  /// `recordWithRecordType:name:attributes:error:`
  /// The record of that type called exactly `name`, or nil. `error` may be null.
  virtual std::shared_ptr<ODRecord> recordWithRecordType(const std::string& recordType,
                                                         const std::string& name,
                                                         const std::vector<std::string>& attributes,
                                                         BundleError* error) = 0;
};

/// The class "ODSession".
class ODSessionClass : public RuntimeClass {
 public:
  /// `defaultSession`
  /// The process's session, or nil.
  virtual std::shared_ptr<ODSession> defaultSession() = 0;
};

/// The class "ODNode".
class ODNodeClass : public RuntimeClass {
 public:
  /// `nodeWithSession:type:error:`
  /// The node of kind `type`, or nil; nil as well without a session. `error` may be null.
  virtual std::shared_ptr<ODNode> nodeWithSession(const std::shared_ptr<ODSession>& session,
                                                  DirPatternMatch type, BundleError* error) = 0;
};

/// Code that is loaded while the process runs.
class RuntimeBundles {
 public:
  virtual ~RuntimeBundles() = default;

  /// Loads the bundle at the absolute path `path`, once; whether it is loaded.
  virtual bool load(const std::string& path) = 0;
  /// The class called `name` of a loaded bundle, or nil.
  virtual std::shared_ptr<RuntimeClass> classNamed(std::string_view name) = 0;
};

}  // namespace vt
