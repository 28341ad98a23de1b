// Functions that the DLL imports, replaced while a test runs.

#ifndef LAUNCHER_TESTS_SUPPORT_IMPORT_PATCH_WINDOWS_H_
#define LAUNCHER_TESTS_SUPPORT_IMPORT_PATCH_WINDOWS_H_

#include <windows.h>
// It needs windows.h first.
#include <imagehlp.h>

#include <cstring>
#include <stdexcept>

namespace launcher::test {

// While it lives, the DLL's calls of the imported function `name` reach `replacement`.
class ImportPatch {
 public:
  ImportPatch(const char* name, void* replacement) : slot_(SlotOf(name)), original_(*slot_) {
    DWORD protection = 0;
    VirtualProtect(slot_, sizeof *slot_, PAGE_READWRITE, &protection);
    *slot_ = replacement;
  }
  ~ImportPatch() { *slot_ = original_; }

 private:
  static void** SlotOf(const char* name) {
    char* const base = reinterpret_cast<char*>(GetModuleHandleA("LauncherDll.dll"));
    ULONG size = 0;
    const auto* import = static_cast<const IMAGE_IMPORT_DESCRIPTOR*>(
        ImageDirectoryEntryToData(base, TRUE, IMAGE_DIRECTORY_ENTRY_IMPORT, &size));
    for (; import->Name != 0; ++import) {
      const auto* names = reinterpret_cast<const DWORD*>(base + import->OriginalFirstThunk);
      auto* slots = reinterpret_cast<void**>(base + import->FirstThunk);
      for (; *names != 0; ++names, ++slots) {
        const auto* const entry = reinterpret_cast<const IMAGE_IMPORT_BY_NAME*>(base + *names);
        if (std::strcmp(reinterpret_cast<const char*>(entry->Name), name) == 0) return slots;
      }
    }
    throw std::invalid_argument(name);
  }

  void** slot_;
  void* original_;
};

}  // namespace launcher::test

#endif  // LAUNCHER_TESTS_SUPPORT_IMPORT_PATCH_WINDOWS_H_
