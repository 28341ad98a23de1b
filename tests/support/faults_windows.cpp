// The DLL's import table leads to these functions.

#include <share.h>
#include <sys/stat.h>
#include <windows.h>

#include "support/faults.h"
// They need windows.h first.
#include <bcrypt.h>
#include <shellapi.h>
#include <wincrypt.h>

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <memory>

#include "support/import_patch_windows.h"

namespace launcher::test {
namespace {

FailurePlan calls;
FailurePlan memory;
std::atomic<int> openObjects{0};
bool hasCng = true;

// Calls a function that opens so many objects, or closes one (-1), which it does even if it fails.
template <class Result, class Function>
Result CallOrFail(FailurePlan& plan, Result failure, int opened, Function function) {
  const bool fails = plan.IsDue();
  if (fails) SetLastError(ERROR_GEN_FAILURE);
  if (fails && opened >= 0) return failure;
  const Result result = function();
  if (opened < 0 || result != failure) openObjects += opened;
  return fails ? failure : result;
}

// A function of the same type for each Tag.
#define REPLACEMENT(convention)                                                                    \
  template <class Tag, class Result, class... Arguments>                                           \
  void* Replacement(FailurePlan& plan, Result(convention* function)(Arguments...), Result failure, \
                    int opened) {                                                                  \
    static const struct {                                                                          \
      FailurePlan& plan;                                                                           \
      Result(convention* function)(Arguments...);                                                  \
      Result failure;                                                                              \
      int opened;                                                                                  \
    } own = {plan, function, failure, opened};                                                     \
    struct Local {                                                                                 \
      static Result convention Call(Arguments... arguments) {                                      \
        return CallOrFail(own.plan, own.failure, own.opened,                                       \
                          [&] { return own.function(arguments...); });                             \
      }                                                                                            \
    };                                                                                             \
    return reinterpret_cast<void*>(Local::Call);                                                   \
  }
REPLACEMENT(WINAPI)
REPLACEMENT(__cdecl)
#undef REPLACEMENT

void* __cdecl Reallocate(void* block, std::size_t size) {
  const int opened = block == nullptr ? 1 : 0;
  void* const none = nullptr;
  return CallOrFail(memory, none, opened, [=] { return std::realloc(block, size); });
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

// All that can fail, for the rest of the process. But fgetc is called too often to fail each time.
void PatchImports() {
  static std::vector<std::unique_ptr<ImportPatch>> patches;
  if (!patches.empty()) return;
  const auto patch = [&](const char* name, void* replacement) {
    patches.push_back(std::make_unique<ImportPatch>(name, replacement));
  };
  void* const noHandle = nullptr;
  std::FILE* const noFile = nullptr;
#define PATCH_AS(name, plan, function, failure, opened) \
  patch(#name, Replacement<struct Tag_##name>(plan, function, failure, opened))
#define PATCH(name, failure, opened) PATCH_AS(name, calls, name, failure, opened)
  PATCH(_fsopen, noFile, 1);
  PATCH(fclose, EOF, -1);
  PATCH(fread, std::size_t{0}, 0);
  PATCH(fwrite, std::size_t{0}, 0);
  PATCH(_stat64, -1, 0);
  PATCH(OpenProcess, noHandle, 1);
  PATCH_AS(CreateProcessA, calls, StartWithoutConsole, FALSE, 2);
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
  PATCH_AS(BCryptCreateHash, calls, CreateCngHash, kUnsuccessful, 1);
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
  PATCH_AS(malloc, memory, std::malloc, noHandle, 1);
  PATCH_AS(calloc, memory, std::calloc, noHandle, 1);
#undef PATCH
#undef PATCH_AS
  patch("realloc", reinterpret_cast<void*>(Reallocate));
  patch("free", reinterpret_cast<void*>(Free));
}

}  // namespace

std::vector<FaultKind> FaultKinds() {
  PatchImports();
  FaultKind withoutCng = PlannedFaults("calls without CNG", calls);
  withoutCng.start = [](int n, bool andAllAfter) {
    hasCng = false;
    calls.Start(n, andAllAfter);
  };
  withoutCng.stop = [] {
    hasCng = true;
    return calls.Stop();
  };
  return {PlannedFaults("calls", calls), withoutCng, PlannedFaults("memory", memory)};
}

int OpenObjectCount() { return openObjects; }

}  // namespace launcher::test
