// The DLL's import table leads here. A function that gives something back does so also when it
// fails.

#include <share.h>
#include <sys/stat.h>
#include <windows.h>

#include "support/faults.h"
// They need windows.h ahead.
#include <bcrypt.h>
#include <shellapi.h>
#include <wincrypt.h>

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <memory>

#include "support/failure_plan.h"
#include "support/import_patch_windows.h"

namespace launcher::test {
namespace {

FailurePlan calls;
FailurePlan memory;
std::atomic<int> openObjects{0};
std::set<std::string> failedCalls;
bool hasCng = true;

// Stands for one import, whose name makes Tag.
template <class Tag, class Result>
struct Import {
  static inline const char* name = "";
  static inline Result failure = {};
  static inline int opened = 0;  // how many objects a call opens; -1 where it closes one

  template <class Function, class... Arguments>
  static Result Call(Function* function, Arguments... arguments) {
    const bool fails = calls.IsDue();
    if (fails) failedCalls.insert(name);
    if (fails) SetLastError(ERROR_GEN_FAILURE);
    if (fails && opened >= 0) return failure;
    const Result result = function(arguments...);
    if (opened < 0 || result != failure) openObjects += opened;
    return fails ? failure : result;
  }
};

#define REPLACEMENT(convention)                                                                   \
  template <class Tag, class Result, class... Arguments>                                          \
  void* Replacement(const char* name, Result(convention* function)(Arguments...), Result failure, \
                    int opened) {                                                                 \
    using Own = Import<Tag, Result>;                                                              \
    Own::name = name;                                                                             \
    Own::failure = failure;                                                                       \
    Own::opened = opened;                                                                         \
    static const auto real = function;                                                            \
    struct Local {                                                                                \
      static Result convention Call(Arguments... arguments) {                                     \
        return Own::Call(real, arguments...);                                                     \
      }                                                                                           \
    };                                                                                            \
    return reinterpret_cast<void*>(Local::Call);                                                  \
  }
REPLACEMENT(WINAPI)
REPLACEMENT(__cdecl)
#undef REPLACEMENT

void* Counted(void* block) {
  if (block != nullptr) ++openObjects;
  return block;
}
void* __cdecl Allocate(std::size_t size) {
  return memory.IsDue() ? nullptr : Counted(std::malloc(size));
}
void* __cdecl AllocateCleared(std::size_t count, std::size_t size) {
  return memory.IsDue() ? nullptr : Counted(std::calloc(count, size));
}
void* __cdecl Reallocate(void* block, std::size_t size) {
  if (memory.IsDue()) return nullptr;
  void* const moved = std::realloc(block, size);
  return block == nullptr ? Counted(moved) : moved;
}
void __cdecl Free(void* block) {
  if (block != nullptr) --openObjects;
  std::free(block);
}

// Without the window of a console, which takes seconds where Wine is emulated.
BOOL WINAPI StartWithoutConsole(const char* application, char* commandLine,
                                SECURITY_ATTRIBUTES* process, SECURITY_ATTRIBUTES* thread,
                                BOOL inherits, DWORD flags, void* environment,
                                const char* directory, STARTUPINFOA* startup,
                                PROCESS_INFORMATION* started) {
  return CreateProcessA(application, commandLine, process, thread, inherits,
                        flags & ~static_cast<DWORD>(CREATE_NEW_CONSOLE), environment, directory,
                        startup, started);
}

constexpr NTSTATUS kUnsuccessful = static_cast<NTSTATUS>(0xC0000001);

NTSTATUS WINAPI CreateCngHash(BCRYPT_ALG_HANDLE algorithm, BCRYPT_HASH_HANDLE* hash, UCHAR* object,
                              ULONG objectSize, UCHAR* secret, ULONG secretSize, ULONG flags) {
  if (!hasCng) return kUnsuccessful;
  return BCryptCreateHash(algorithm, hash, object, objectSize, secret, secretSize, flags);
}

// All that can fail, for the rest of the process; but fgetc is called too often to fail each time.
void PatchImports() {
  static std::vector<std::unique_ptr<ImportPatch>> patches;
  if (!patches.empty()) return;
  const auto patch = [&](const char* name, void* replacement) {
    patches.push_back(std::make_unique<ImportPatch>(name, replacement));
  };
  void* const noHandle = nullptr;
  std::FILE* const noFile = nullptr;
#define PATCH(name, failure, opened) \
  patch(#name, Replacement<struct Tag_##name>(#name, name, failure, opened))
  PATCH(_fsopen, noFile, 1);
  PATCH(fclose, EOF, -1);
  PATCH(fread, std::size_t{0}, 0);
  PATCH(fwrite, std::size_t{0}, 0);
  PATCH(_stat64, -1, 0);
  PATCH(OpenProcess, noHandle, 1);
  patch("CreateProcessA",
        Replacement<struct Tag_CreateProcessA>("CreateProcessA", StartWithoutConsole, FALSE, 2));
  PATCH(CloseHandle, FALSE, -1);
  PATCH(GetExitCodeProcess, FALSE, 0);
  PATCH(WaitForSingleObject, WAIT_FAILED, 0);
  PATCH(VirtualAllocEx, noHandle, 1);
  PATCH(WriteProcessMemory, FALSE, 0);
  PATCH(VirtualFreeEx, FALSE, -1);
  PATCH(CommandLineToArgvW, static_cast<wchar_t**>(nullptr), 0);
  PATCH(WideCharToMultiByte, 0, 0);
  PATCH(LocalAlloc, noHandle, 0);
  PATCH(CreateFileA, INVALID_HANDLE_VALUE, 1);
  PATCH(GetFileInformationByHandle, FALSE, 0);
  PATCH(FindFirstFileA, INVALID_HANDLE_VALUE, 1);
  PATCH(FindNextFileA, FALSE, 0);
  PATCH(FindClose, FALSE, -1);
  PATCH(GetFileAttributesA, INVALID_FILE_ATTRIBUTES, 0);
  PATCH(DeleteFileA, FALSE, 0);
  PATCH(RemoveDirectoryA, FALSE, 0);
  PATCH(MultiByteToWideChar, 0, 0);
  PATCH(CreateFileW, INVALID_HANDLE_VALUE, 1);
  PATCH(WriteFile, FALSE, 0);
  PATCH(FlushFileBuffers, FALSE, 0);
  PATCH(SetFileInformationByHandle, FALSE, 0);
  PATCH(MoveFileExW, FALSE, 0);
  PATCH(DeleteFileW, FALSE, 0);
  patch("BCryptCreateHash", Replacement<struct Tag_BCryptCreateHash>(
                                "BCryptCreateHash", CreateCngHash, kUnsuccessful, 1));
  PATCH(BCryptHashData, kUnsuccessful, 0);
  PATCH(BCryptFinishHash, kUnsuccessful, 0);
  PATCH(BCryptDestroyHash, kUnsuccessful, -1);
  PATCH(CryptAcquireContextA, FALSE, 1);
  PATCH(CryptCreateHash, FALSE, 1);
  PATCH(CryptHashData, FALSE, 0);
  PATCH(CryptGetHashParam, FALSE, 0);
  PATCH(CryptDestroyHash, FALSE, -1);
  PATCH(CryptReleaseContext, FALSE, -1);
  PATCH(GetModuleHandleA, static_cast<HMODULE>(nullptr), 0);
  PATCH(GetModuleHandleExA, FALSE, 0);
  PATCH(GetFileAttributesW, INVALID_FILE_ATTRIBUTES, 0);
  PATCH(GetModuleFileNameW, DWORD{0}, 0);
  PATCH(LoadLibraryExA, static_cast<HMODULE>(nullptr), 0);
  PATCH(LoadLibraryExW, static_cast<HMODULE>(nullptr), 0);
  PATCH(GetProcAddress, static_cast<FARPROC>(nullptr), 0);
#undef PATCH
  patch("malloc", reinterpret_cast<void*>(Allocate));
  patch("calloc", reinterpret_cast<void*>(AllocateCleared));
  patch("free", reinterpret_cast<void*>(Free));
  patch("realloc", reinterpret_cast<void*>(Reallocate));
}

}  // namespace

const std::vector<FaultKind>& FaultKinds() {
  static const std::vector<FaultKind> kinds = {
      {"imports", false, false,
       [](int n, bool andAllAfter) {
         PatchImports();
         calls.Start(n, andAllAfter);
       },
       [] { return calls.Stop(); }},
      {"imports without CNG", false, true,
       [](int n, bool andAllAfter) {
         PatchImports();
         hasCng = false;
         calls.Start(n, andAllAfter);
       },
       [] {
         hasCng = true;
         return calls.Stop();
       }},
      {"memory", true, false,
       [](int n, bool andAllAfter) {
         PatchImports();
         memory.Start(n, andAllAfter);
       },
       [] { return memory.Stop(); }},
  };
  return kinds;
}

std::set<std::string> FailedCalls() { return failedCalls; }

int OpenObjectCount() { return openObjects; }

}  // namespace launcher::test
