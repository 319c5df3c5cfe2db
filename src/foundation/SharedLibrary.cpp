#include "foundation/SharedLibrary.h"

#include <dlfcn.h>

#include <stdexcept>

namespace vt {

SharedLibrary::SharedLibrary(const std::string& name)
    : handle_(dlopen(name.c_str(), RTLD_LAZY | RTLD_LOCAL)) {
  if (!handle_) throw std::runtime_error(dlerror());
}

void* SharedLibrary::address(const char* name) const {
  void* const found = dlsym(handle_, name);
  if (!found) throw std::runtime_error(dlerror());
  return found;
}

}  // namespace vt
