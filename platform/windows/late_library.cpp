#include "platform/late_library.h"

#include "platform/win32.h"

namespace launcher {

void* FindLateFunction(const char* library, const char* name) {
  HMODULE module = GetModuleHandleA(library);
  if (module == nullptr) {
    module = LoadLibraryExA(library, nullptr,
                            LOAD_LIBRARY_SEARCH_APPLICATION_DIR | LOAD_LIBRARY_SEARCH_SYSTEM32);
  }
  if (module == nullptr) return nullptr;
  return reinterpret_cast<void*>(GetProcAddress(module, name));
}

}  // namespace launcher
