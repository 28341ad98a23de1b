// Functions that the DLL imports, replaced while a test runs.

#ifndef LAUNCHER_TESTS_SUPPORT_IMPORT_PATCH_WINDOWS_H_
#define LAUNCHER_TESTS_SUPPORT_IMPORT_PATCH_WINDOWS_H_

#include <windows.h>

#include <cstring>
#include <stdexcept>
#include <string>

namespace launcher::test {

// While it lives, the DLL's calls of the imported function `name` reach `replacement`.
class ImportPatch {
 public:
  ImportPatch(const char* name, void* replacement) : slot_(SlotOf(name)), original_(*slot_) {
    Write(replacement);
  }
  ImportPatch(const ImportPatch&) = delete;
  ImportPatch& operator=(const ImportPatch&) = delete;
  ~ImportPatch() { Write(original_); }

 private:
  static void** SlotOf(const char* name) {
    char* const base = reinterpret_cast<char*>(GetModuleHandleA("LauncherDll.dll"));
    const auto* const dos = reinterpret_cast<const IMAGE_DOS_HEADER*>(base);
    const auto* const headers = reinterpret_cast<const IMAGE_NT_HEADERS*>(base + dos->e_lfanew);
    const DWORD directory =
        headers->OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_IMPORT].VirtualAddress;
    const auto* import = reinterpret_cast<const IMAGE_IMPORT_DESCRIPTOR*>(base + directory);
    for (; import->Name != 0; ++import) {
      const auto* names = reinterpret_cast<const DWORD*>(base + import->OriginalFirstThunk);
      auto* slots = reinterpret_cast<void**>(base + import->FirstThunk);
      for (; *names != 0; ++names, ++slots) {
        if ((*names & IMAGE_ORDINAL_FLAG32) != 0) continue;
        const auto* const entry = reinterpret_cast<const IMAGE_IMPORT_BY_NAME*>(base + *names);
        if (std::strcmp(reinterpret_cast<const char*>(entry->Name), name) == 0) return slots;
      }
    }
    throw std::invalid_argument(std::string("the DLL does not import ") + name);
  }

  void Write(void* function) {
    DWORD protection = 0;
    VirtualProtect(slot_, sizeof *slot_, PAGE_READWRITE, &protection);
    *slot_ = function;
    VirtualProtect(slot_, sizeof *slot_, protection, &protection);
  }

  void** slot_;
  void* original_;
};

}  // namespace launcher::test

#endif  // LAUNCHER_TESTS_SUPPORT_IMPORT_PATCH_WINDOWS_H_
