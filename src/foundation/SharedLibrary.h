#pragma once

#include <string>

namespace vt {

/// A library of the system that is loaded when it is first needed: what a program loads at its
/// start costs each run of it, and most runs need few of its libraries. Never unloaded.
class SharedLibrary {
 public:
  /// `name` is the one that the dynamic loader knows, such as "libm.so.6". Throws
  /// std::runtime_error when it cannot be loaded.
  explicit SharedLibrary(const std::string& name);

  /// The function `name`, as declared by the library's header. Throws std::runtime_error when the
  /// library has none.
  template <class Function>
  Function* function(const char* name) const {
    return reinterpret_cast<Function*>(address(name));
  }

 private:
  void* address(const char* name) const;

  void* handle_;
};

}  // namespace vt
