#include <windows.h>

#include <algorithm>
#include <cstdlib>
#include <deque>
#include <filesystem>
#include <new>
#include <stdexcept>

#include "support/guarded_buffer.h"
#include "support/run_program.h"
#include "support/system.h"

namespace launcher::test {
namespace {

// Such a program is no process to Wine: `isDone` shows when it has ended.
template <class IsDone>
void RunBelowWine(const std::string& commandLine, IsDone isDone) {
  RunProgram("Z:\\bin\\" + commandLine);
  for (int i = 0; i < 6000; ++i) {
    if (isDone()) return;
    Sleep(10);
  }
  throw std::runtime_error("without effect: " + commandLine);
}

struct Run {
  const std::function<void(int)>& body;
  int number;
  HANDLE thread;
};

DWORD WINAPI StartRun(void* argument) {
  const Run& run = *static_cast<Run*>(argument);
  run.body(run.number);
  return 0;
}

}  // namespace

const char* const kLineEnd = "\r\n";
const bool kTriesEverything = false;
const bool kHasDirect3D = true;
const int kManyFiles = 300;  // a hundred thousand take an hour in an emulator

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

// Wine cannot create and remove links. There the system below it does, and Wine sees a link.
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

void RunInThreads(int count, const std::function<void(int number)>& body, std::size_t stackSize) {
  std::deque<Run> runs;
  for (int i = 0; i < count; ++i) {
    Run& run = runs.emplace_back(Run{body, i, nullptr});
    run.thread = CreateThread(nullptr, stackSize, StartRun, &run, STACK_SIZE_PARAM_IS_A_RESERVATION,
                              nullptr);
    if (run.thread == nullptr) std::abort();
  }
  for (const Run& run : runs) {
    WaitForSingleObject(run.thread, INFINITE);
    CloseHandle(run.thread);
  }
}

std::uint8_t* MapWithGuardPage(std::size_t size) {
  void* const pages = VirtualAlloc(nullptr, size, MEM_RESERVE | MEM_COMMIT, PAGE_READWRITE);
  if (pages == nullptr) throw std::bad_alloc();
  auto* const bytes = static_cast<std::uint8_t*>(pages);
  DWORD previous = 0;
  VirtualProtect(bytes + size - kPageSize, kPageSize, PAGE_NOACCESS, &previous);
  return bytes;
}

void UnmapPages(std::uint8_t* pages, std::size_t /*size*/) { VirtualFree(pages, 0, MEM_RELEASE); }

void KeepDigestLoaded() { LoadLibraryA("rsaenh.dll"); }

int OpenHandleCount() {
  DWORD count = 0;
  GetProcessHandleCount(GetCurrentProcess(), &count);
  return static_cast<int>(count);
}

}  // namespace launcher::test
