#pragma once

#include <string>
#include <type_traits>

// Declares a member that is the library's function of that name, in a class whose member `library`,
// declared before, is the SharedLibrary. A name that is a macro stands for what it becomes.
#define VT_LIBRARY_FUNCTION(name) VT_LIBRARY_FUNCTION_EXPANDED(name)
#define VT_LIBRARY_FUNCTION_EXPANDED(name)               \
  std::remove_pointer_t<decltype(&::name)>* const name = \
      library.function<std::remove_pointer_t<decltype(&::name)>>(#name);

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
