#include <windows.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <stdexcept>
#include <vector>

#include "support/run_program.h"
#include "support/system.h"

namespace launcher::test {
namespace {

// Class 64 of NtQuerySystemInformation, which no header declares.
constexpr int kSystemExtendedHandleInformation = 64;

struct HandleEntry {
  void* object;
  ULONG_PTR processId;
  ULONG_PTR handle;
  ULONG access;
  USHORT backTraceIndex;
  USHORT typeIndex;
  ULONG attributes;
  ULONG reserved;
};

struct HandleTable {
  ULONG_PTR count;
  ULONG_PTR reserved;
  HandleEntry entries[1];
};

// Such a program is no process to Wine, so only what it does tells when it is done.
template <class IsDone>
void RunBelowWine(const std::string& commandLine, IsDone isDone) {
  RunProgram("Z:\\bin\\" + commandLine);
  for (int i = 0; i < 6000; ++i) {
    if (isDone()) return;
    Sleep(10);
  }
  throw std::runtime_error("in vain: " + commandLine);
}

struct NumberedRun {
  void (*body)(int number);
  int number;
};

DWORD WINAPI RunNumbered(void* argument) {
  const auto& run = *static_cast<NumberedRun*>(argument);
  run.body(run.number);
  return 0;
}

DWORD WINAPI RunThread(void* body) {
  reinterpret_cast<void (*)()>(body)();
  return 0;
}

}  // namespace

const bool kHasDirect3D = true;

const char* const kLineEnd = "\r\n";

std::string PathBeside(const std::string& name) {
  char program[MAX_PATH] = "";
  GetModuleFileNameA(nullptr, program, sizeof program);
  const std::string self(program);
  std::string path = self.substr(0, self.rfind('\\') + 1) + name;
  std::replace(path.begin(), path.end(), '/', '\\');
  return path;
}

std::string ProgramBeside(const std::string& name) { return PathBeside(name + ".exe"); }

void SetLibraryPath(const std::string& folder) {
  static const std::string before = std::getenv("PATH");
  SetEnvironmentVariableA("PATH",
                          folder.empty() ? before.c_str() : (folder + ';' + before).c_str());
}

void* LoadFunction(const std::string& path, const char* name) {
  const HMODULE library = LoadLibraryA(path.c_str());
  const auto function = library != nullptr ? GetProcAddress(library, name) : nullptr;
  if (function == nullptr) throw std::runtime_error("no " + std::string(name) + " in " + path);
  return reinterpret_cast<void*>(function);
}

// Wine makes and removes no links. There the system below it does, which is as good: what it makes
// is a link to Wine too.
void MakeLink(const std::string& target, const std::string& link) {
  const bool isDirectory = std::filesystem::is_directory(std::filesystem::path(link).parent_path() /
                                                         std::filesystem::path(target));
  CreateSymbolicLinkA(link.c_str(), target.c_str(), isDirectory ? SYMBOLIC_LINK_FLAG_DIRECTORY : 0);
  if (std::filesystem::exists(link)) return;
  std::string unixTarget = target.substr(target.compare(0, 2, "Z:") == 0 ? 2 : 0);
  std::replace(unixTarget.begin(), unixTarget.end(), '\\', '/');
  RunBelowWine("ln -s \"" + unixTarget + "\" \"" + link + '"',
               [&] { return std::filesystem::exists(link); });
}

void RemoveLink(const std::string& link) {
  const auto isGone = [&] { return !std::filesystem::exists(link); };
  if (isGone() || RemoveDirectoryA(link.c_str()) != FALSE) return;
  RunBelowWine("rm \"" + link + '"', isGone);
}

bool SystemRemovesLinks() {
  return GetProcAddress(GetModuleHandleA("ntdll.dll"), "wine_get_version") == nullptr;
}

void RunInThread(std::size_t stackSize, void (*body)()) {
  const HANDLE thread = CreateThread(nullptr, stackSize, RunThread, reinterpret_cast<void*>(body),
                                     STACK_SIZE_PARAM_IS_A_RESERVATION, nullptr);
  if (thread == nullptr) throw std::runtime_error("no thread");
  WaitForSingleObject(thread, INFINITE);
  CloseHandle(thread);
}

void RunInThreads(int count, void (*body)(int number)) {
  std::vector<NumberedRun> runs;
  for (int i = 0; i < count; ++i) runs.push_back({body, i});
  std::vector<HANDLE> threads;
  for (NumberedRun& run : runs) {
    threads.push_back(CreateThread(nullptr, 0, RunNumbered, &run, 0, nullptr));
  }
  for (const HANDLE thread : threads) {
    WaitForSingleObject(thread, INFINITE);
    CloseHandle(thread);
  }
}

// Where Wine itself is emulated a start takes seconds, and an exception a tenth.
const bool kTriesEverything = false;

// A hundred thousand take an hour where Wine itself is emulated.
const int kManyFiles = 300;

// GetProcessHandleCount would be the plain way; Wine answers it with 0.
void KeepDigestLoaded() { LoadLibraryA("rsaenh.dll"); }

int OpenHandleCount() {
  // Under a type of its own, since the header's enumeration ends before the class asked for.
  using Query = LONG(NTAPI*)(int, void*, ULONG, ULONG*);
  const auto query = reinterpret_cast<Query>(reinterpret_cast<void*>(
      GetProcAddress(GetModuleHandleA("ntdll.dll"), "NtQuerySystemInformation")));
  std::vector<unsigned char> buffer(1 << 20);
  if (query(kSystemExtendedHandleInformation, buffer.data(), static_cast<ULONG>(buffer.size()),
            nullptr) != 0) {
    return -1;
  }
  const auto* const table = reinterpret_cast<const HandleTable*>(buffer.data());
  int count = 0;
  for (ULONG_PTR i = 0; i < table->count; ++i) {
    count += table->entries[i].processId == GetCurrentProcessId() ? 1 : 0;
  }
  return count;
}

}  // namespace launcher::test
