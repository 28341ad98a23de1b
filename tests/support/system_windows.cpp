#include <windows.h>

#include <algorithm>
#include <cstdlib>
#include <deque>
#include <filesystem>
#include <stdexcept>
#include <vector>

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

DWORD WINAPI StartRun(void* run) {
  (*static_cast<std::function<void()>*>(run))();
  return 0;
}

}  // namespace

std::string PathBeside(const std::string& name) {
  char program[MAX_PATH] = "";
  GetModuleFileNameA(nullptr, program, sizeof program);
  return std::filesystem::path(program).replace_filename(name).make_preferred().string();
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

// Wine cannot create and remove links. The system below it does, and Wine sees a link.
void MakeLink(const std::string& target, const std::string& link) {
  std::string unixTarget = target.substr(target.compare(0, 2, "Z:") == 0 ? 2 : 0);
  std::replace(unixTarget.begin(), unixTarget.end(), '\\', '/');
  RunBelowWine("ln -s \"" + unixTarget + "\" \"" + link + '"',
               [&] { return std::filesystem::exists(link); });
}

void RemoveLink(const std::string& link) {
  RunBelowWine("rm -f \"" + link + '"', [&] { return !std::filesystem::exists(link); });
}

void RunInThreads(int count, const std::function<void(int number)>& body, std::size_t stackSize) {
  std::deque<std::function<void()>> runs;
  std::vector<HANDLE> threads(static_cast<std::size_t>(count));
  for (HANDLE& thread : threads) {
    runs.push_back([&body, number = static_cast<int>(runs.size())] { body(number); });
    thread = CreateThread(nullptr, stackSize, StartRun, &runs.back(),
                          STACK_SIZE_PARAM_IS_A_RESERVATION, nullptr);
  }
  for (const HANDLE thread : threads) {
    if (WaitForSingleObject(thread, INFINITE) != WAIT_OBJECT_0) std::abort();
    CloseHandle(thread);
  }
}

std::shared_ptr<std::uint8_t> MapBeforeGuardPage(std::size_t size) {
  constexpr std::size_t kPage = 4096;
  const std::size_t used = (size + kPage - 1) / kPage * kPage;
  void* const pages = VirtualAlloc(nullptr, used + kPage, MEM_COMMIT, PAGE_READWRITE);
  auto* const guard = static_cast<std::uint8_t*>(pages) + used;
  DWORD previous = 0;
  VirtualProtect(guard, kPage, PAGE_NOACCESS, &previous);
  return {guard - size, [=](std::uint8_t*) { VirtualFree(pages, 0, MEM_RELEASE); }};
}

}  // namespace launcher::test
