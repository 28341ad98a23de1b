// Libraries that are loaded on first use. The native library's own folder counts as the program's.

#include "platform/late_library.h"

#include <dlfcn.h>

#include <string>

#include "platform/posix/faults.h"

namespace launcher {
namespace {

// Returns the folder of this library with a slash at its end, or an empty text.
std::string OwnFolder() {
  static const char inside = 0;
  Dl_info found = {};
  if (dladdr(&inside, &found) == 0) return {};
  const std::string path = found.dli_fname;
  return path.substr(0, path.rfind('/') + 1);
}

void* Open(const std::string& path, int mode) { return dlopen(path.c_str(), RTLD_NOW | mode); }

// Tries the full path first. A search path in this library (RPATH) is not enough: the address
// sanitizer intercepts dlopen, and then the search path of the sanitizer's library counts.
void* OpenLibrary(const char* library) {
  if (void* const loaded = Open(library, RTLD_NOLOAD)) {
    dlclose(loaded);  // takes back the reference of RTLD_NOLOAD; the library stays loaded
    return loaded;
  }
  const std::string folder = OwnFolder();
  void* const beside = folder.empty() ? nullptr : Open(folder + library, RTLD_LOCAL);
  return beside != nullptr ? beside : Open(library, RTLD_LOCAL);
}

}  // namespace

void* FindLateFunction(const char* library, const char* name, LateFolders /*folders*/) {
  // By the name of the function, so that a test can make one function of a library missing.
  if (posix::MustFail(name)) return nullptr;
  constexpr void* kNone = nullptr;
  return posix::WithoutThrowing(kNone, [=] {
    void* const module = OpenLibrary(library);
    return module != nullptr ? dlsym(module, name) : nullptr;
  });
}

}  // namespace launcher
