// By full paths and search flags: a plain LoadLibrary would also search the current directory and
// PATH.

#include "platform/late_library.h"

#include <algorithm>
#include <cstddef>
#include <cstring>

#include "platform/win32.h"

namespace launcher {
namespace {

// The path of `library` in the folder of the module `neighbour`; null means the program. Empty if
// it does not fit. It does not use std::wstring, which can throw: many exports that need a library
// have no guard against exceptions.
struct PathBeside {
  PathBeside(HMODULE neighbour, const char* library) {
    // The length is MAX_PATH if the path was cut, and 0 on failure.
    const DWORD length = GetModuleFileNameW(neighbour, text, MAX_PATH);
    wchar_t* end = length < MAX_PATH ? text + length : text;
    while (end != text && end[-1] != L'\\' && end[-1] != L'/') --end;
    const std::size_t size = std::strlen(library) + 1;
    const bool fits = end != text && size <= static_cast<std::size_t>(text + MAX_PATH - end);
    if (fits) {
      std::copy(library, library + size, end);
    } else {
      text[0] = L'\0';
    }
  }

  wchar_t text[MAX_PATH];
};

// Returns the module that contains this code: LauncherDll.dll, or a test program.
HMODULE ThisLibrary() {
  static const char inside = 0;
  // Counts no reference, so that the library can still be unloaded.
  constexpr DWORD kJustFind =
      GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT;
  HMODULE self = nullptr;
  return GetModuleHandleExA(kJustFind, &inside, &self) ? self : nullptr;
}

// The program's folder comes first, then this library's, then the system's. One call cannot do
// this, so the first step only looks whether the program's folder has the file. The flags of each
// call also decide where Windows searches for the libraries that the loaded one needs.
HMODULE Load(const char* library, LateFolders folders) {
  const bool isBesideProgram =
      GetFileAttributesW(PathBeside(nullptr, library).text) != INVALID_FILE_ATTRIBUTES;
  if (folders == LateFolders::kOwnToo && !isBesideProgram) {
    const HMODULE module =
        LoadLibraryExW(PathBeside(ThisLibrary(), library).text, nullptr,
                       LOAD_LIBRARY_SEARCH_DLL_LOAD_DIR | LOAD_LIBRARY_SEARCH_SYSTEM32);
    if (module != nullptr) return module;
  }
  return LoadLibraryExA(library, nullptr,
                        LOAD_LIBRARY_SEARCH_APPLICATION_DIR | LOAD_LIBRARY_SEARCH_SYSTEM32);
}

}  // namespace

void* FindLateFunction(const char* library, const char* name, LateFolders folders) {
  // A library that is already loaded: the program's own, or that of an earlier call.
  HMODULE module = GetModuleHandleA(library);
  if (module == nullptr) module = Load(library, folders);
  if (module == nullptr) return nullptr;
  return reinterpret_cast<void*>(GetProcAddress(module, name));
}

}  // namespace launcher
