#include "platform/late_library.h"

#include "platform/win32.h"

namespace launcher {

namespace {

// Loads `library` from the folder of `neighbour`; null is the program. What the library needs
// itself comes from the same folder or the system's. Without std::wstring: many exports that come
// here have no guard against exceptions.
HMODULE LoadBeside(HMODULE neighbour, const char* library) {
  wchar_t path[MAX_PATH];
  const DWORD length = GetModuleFileNameW(neighbour, path, MAX_PATH);
  if (length == 0 || length == MAX_PATH) return nullptr;
  wchar_t* end = path + length;
  while (end != path && end[-1] != L'\\' && end[-1] != L'/') --end;
  do {
    if (end == path + MAX_PATH) return nullptr;
    *end++ = static_cast<unsigned char>(*library);
  } while (*library++ != '\0');
  return LoadLibraryExW(path, nullptr,
                        LOAD_LIBRARY_SEARCH_DLL_LOAD_DIR | LOAD_LIBRARY_SEARCH_SYSTEM32);
}

// The library that holds this code.
HMODULE ThisLibrary() {
  static const char inside = 0;
  constexpr DWORD kJustFind =
      GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT;
  HMODULE self = nullptr;
  return GetModuleHandleExA(kJustFind, &inside, &self) ? self : nullptr;
}

HMODULE Load(const char* library, LateFolders folders) {
  HMODULE module = LoadBeside(nullptr, library);
  if (module == nullptr && folders == LateFolders::kOwnToo) {
    module = LoadBeside(ThisLibrary(), library);
  }
  if (module == nullptr) module = LoadLibraryExA(library, nullptr, LOAD_LIBRARY_SEARCH_SYSTEM32);
  return module;
}

}  // namespace

void* FindLateFunction(const char* library, const char* name, LateFolders folders) {
  HMODULE module = GetModuleHandleA(library);
  if (module == nullptr) module = Load(library, folders);
  if (module == nullptr) return nullptr;
  return reinterpret_cast<void*>(GetProcAddress(module, name));
}

}  // namespace launcher
