#pragma once

#include <cassert>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <typeindex>
#include <unordered_map>
#include <utility>
#include <vector>

namespace vt {

class Bundles;
class ContentTypeTags;
class DirectoryServices;
class Files;
class Host;
class Identity;
class Images;
class MetadataIndex;
class Process;
class Resources;
class RuntimeBundles;
class ServiceDiscovery;
class Tasks;

/// One object per outside service, and the process-wide state of the library that stands on them.
///
/// The library reaches everything outside itself through the installed platform. Putting another
/// one in gives a fresh world: settings, kind registry and every other singleton hang on it.
class Platform {
 public:
  struct Services {
    std::shared_ptr<Files> files;
    std::shared_ptr<Identity> identity;
    std::shared_ptr<DirectoryServices> directoryServices;
    std::shared_ptr<RuntimeBundles> runtimeBundles;
    std::shared_ptr<MetadataIndex> metadataIndex;
    std::shared_ptr<Resources> resources;
    std::shared_ptr<Host> host;
    std::shared_ptr<Process> process;
    std::shared_ptr<Bundles> bundles{};
    std::shared_ptr<ServiceDiscovery> serviceDiscovery{};  ///< only of a server
    std::shared_ptr<ContentTypeTags> contentTypeTags{};
    std::shared_ptr<Tasks> tasks{};
    std::shared_ptr<Images> images{};
    /// Put in front of the system's own fixed paths; "" for the machine itself.
    std::string rootPrefix;
  };

  explicit Platform(Services services) : services_(std::move(services)) {}
  Platform(const Platform&) = delete;
  Platform& operator=(const Platform&) = delete;
  ~Platform();

  /// The installed platform; one must be installed (see PlatformScope).
  static Platform& current();

  Files& files() const { return need(services_.files); }
  Identity& identity() const { return need(services_.identity); }
  DirectoryServices& directoryServices() const { return need(services_.directoryServices); }
  RuntimeBundles& runtimeBundles() const { return need(services_.runtimeBundles); }
  MetadataIndex& metadataIndex() const { return need(services_.metadataIndex); }
  /// The same, for those who may outlive the platform.
  const std::shared_ptr<MetadataIndex>& sharedMetadataIndex() const {
    return services_.metadataIndex;
  }
  /// Whether there is an index to ask: not where the tables that it needs are missing or damaged.
  bool hasMetadataIndex() const { return services_.metadataIndex != nullptr; }
  Resources& resources() const { return need(services_.resources); }
  Host& host() const { return need(services_.host); }
  Process& process() const { return need(services_.process); }
  Bundles& bundles() const { return need(services_.bundles); }
  ServiceDiscovery& serviceDiscovery() const { return need(services_.serviceDiscovery); }
  ContentTypeTags& contentTypeTags() const { return need(services_.contentTypeTags); }
  Tasks& tasks() const { return need(services_.tasks); }
  Images& images() const { return need(services_.images); }

  /// Where one of the system's own fixed absolute paths lies: behind the root prefix.
  std::string systemPath(std::string_view fixedPath) const {
    return services_.rootPrefix + std::string(fixedPath);
  }

  /// The one `T` of this world, made by `make` on first use and destroyed with the platform, in
  /// reverse order of making.
  template <class T>
  std::shared_ptr<T> shared(const std::function<std::shared_ptr<T>()>& make) {
    const std::type_index key(typeid(T));
    if (const auto found = shared_.find(key); found != shared_.end()) {
      return std::static_pointer_cast<T>(found->second);
    }
    std::shared_ptr<T> object = make();
    shared_[key] = object;
    order_.push_back(key);
    return object;
  }

 private:
  friend class PlatformScope;

  template <class T>
  static T& need(const std::shared_ptr<T>& service) {
    assert(service && "the platform was built without this service");
    return *service;
  }

  static Platform*& installed();

  Services services_;
  std::unordered_map<std::type_index, std::shared_ptr<void>> shared_;
  std::vector<std::type_index> order_;
};

/// Installs a platform while it lives; the one before is then installed again.
class PlatformScope {
 public:
  explicit PlatformScope(std::shared_ptr<Platform> platform);
  PlatformScope(const PlatformScope&) = delete;
  PlatformScope& operator=(const PlatformScope&) = delete;
  ~PlatformScope();

 private:
  std::shared_ptr<Platform> platform_;
  Platform* previous_;
};

}  // namespace vt
