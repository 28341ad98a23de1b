// The native library's own folder counts as the program's.

#include "platform/late_library.h"

#include <dlfcn.h>

#include <string>

#include "platform/posix/faults.h"

namespace launcher {
namespace {

std::string OwnFolder() {
  static const char inside = 0;
  Dl_info found = {};
  if (dladdr(&inside, &found) == 0) return {};
  const std::string path = found.dli_fname;
  return path.substr(0, path.rfind('/') + 1);
}

void* Open(const std::string& path, int mode) { return dlopen(path.c_str(), RTLD_NOW | mode); }

// By its whole path first: a search path in this library would not do, since the address sanitizer
// makes the call in the library's place.
void* OpenLibrary(const char* library) {
  if (void* const loaded = Open(library, RTLD_NOLOAD)) {
    dlclose(loaded);  // it stays loaded: this only counts back
    return loaded;
  }
  const std::string folder = OwnFolder();
  void* const beside = folder.empty() ? nullptr : Open(folder + library, RTLD_LOCAL);
  return beside != nullptr ? beside : Open(library, RTLD_LOCAL);
}

}  // namespace

void* FindLateFunction(const char* library, const char* name, LateFolders /*folders*/) {
  if (posix::MustFail(name)) return nullptr;
  constexpr void* kNone = nullptr;
  return posix::WithoutThrowing(kNone, [=] {
    void* const module = OpenLibrary(library);
    return module != nullptr ? dlsym(module, name) : nullptr;
  });
}

}  // namespace launcher
