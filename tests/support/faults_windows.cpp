// The DLL's import table leads to these functions: those that only the parts for Windows call, and
// those that request memory. The native build fails all others.

#include <windows.h>

#include <atomic>
#include <cstdlib>
#include <cstring>
#include <type_traits>

#include "support/faults.h"
#include "support/import_patch_windows.h"

namespace launcher::test {
namespace {

FailurePlan calls;
FailurePlan memory;
std::atomic<int> openObjects{0};

// Each has its own kNumber. `opened` is 1 if the function opens an object, and -1 if it closes one,
// which it does even if it fails.
template <int kNumber, class Result, class... Arguments>
void* Replacement(Result(WINAPI* function)(Arguments...), std::common_type_t<Result> failure,
                  int opened) {
  static const auto call = [=](Arguments... arguments) -> Result {
    const bool fails = calls.IsDue();
    if (fails) SetLastError(ERROR_GEN_FAILURE);
    if (fails && opened >= 0) return failure;
    const Result result = function(arguments...);
    if (opened < 0 || result != failure) openObjects += opened;
    return fails ? failure : result;
  };
  struct Local {
    static Result WINAPI Call(Arguments... arguments) { return call(arguments...); }
  };
  return reinterpret_cast<void*>(Local::Call);
}

void* __cdecl Reallocate(void* block, std::size_t size) {
  if (memory.IsDue()) return nullptr;
  void* const moved = std::realloc(block, size);
  if (block == nullptr && moved != nullptr) ++openObjects;
  return moved;
}
void* __cdecl Allocate(std::size_t size) { return Reallocate(nullptr, size); }
void* __cdecl AllocateZeroed(std::size_t count, std::size_t size) {
  void* const block = Allocate(count * size);
  return block != nullptr ? std::memset(block, 0, count * size) : nullptr;
}
void __cdecl Free(void* block) {
  if (block != nullptr) --openObjects;
  std::free(block);
}

// For the rest of the process.
void PatchImports() {
#define PATCH_AS(name, replacement) \
  static const ImportPatch patchOf_##name(#name, reinterpret_cast<void*>(replacement))
#define PATCH(name, failure, opened) PATCH_AS(name, Replacement<__LINE__>(name, failure, opened))
  PATCH(CloseHandle, FALSE, -1);
  PATCH(CreateFileA, INVALID_HANDLE_VALUE, 1);
  PATCH(MultiByteToWideChar, 0, 0);
  PATCH(CreateFileW, INVALID_HANDLE_VALUE, 1);
  PATCH(WriteFile, FALSE, 0);
  PATCH(FlushFileBuffers, FALSE, 0);
  PATCH(SetFileInformationByHandle, FALSE, 0);
  PATCH(MoveFileExW, FALSE, 0);
  PATCH(DeleteFileW, FALSE, 0);
  PATCH(GetModuleHandleA, nullptr, 0);
  PATCH(GetModuleHandleExA, FALSE, 0);
  PATCH(GetFileAttributesW, INVALID_FILE_ATTRIBUTES, 0);
  PATCH(GetModuleFileNameW, 0, 0);
  PATCH(LoadLibraryExA, nullptr, 0);
  PATCH(LoadLibraryExW, nullptr, 0);
  PATCH(GetProcAddress, nullptr, 0);
  PATCH_AS(malloc, Allocate);
  PATCH_AS(calloc, AllocateZeroed);
  PATCH_AS(realloc, Reallocate);
  PATCH_AS(free, Free);
}

}  // namespace

std::vector<FaultKind> FaultKinds() {
  PatchImports();
  return {PlannedFaults("calls", calls), PlannedFaults("memory", memory)};
}

int OpenObjectCount() { return openObjects; }

}  // namespace launcher::test
