// The native library carries a search path of its own, the folder in which it lies itself.

#include "platform/late_library.h"

#include <dlfcn.h>

#include "platform/posix/faults.h"

namespace launcher {

void* FindLateFunction(const char* library, const char* name) {
  if (posix::MustFail(name)) return nullptr;
  void* module = dlopen(library, RTLD_NOW | RTLD_LOCAL | RTLD_NOLOAD);
  if (module != nullptr) {
    dlclose(module);  // it stays loaded; this only counts the last line back
  } else {
    module = dlopen(library, RTLD_NOW | RTLD_LOCAL);
  }
  return module != nullptr ? dlsym(module, name) : nullptr;
}

}  // namespace launcher
