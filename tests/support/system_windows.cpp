#include <windows.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <stdexcept>

#include "support/system.h"

namespace launcher::test {
namespace {

// Such a program is no process to Wine: the link shows when it has ended.
void RunBelowWine(const std::string& commandLine, const std::string& link, bool makes) {
  RunProgram("Z:\\bin\\" + commandLine + " \"" + link + '"');
  for (int i = 0; std::filesystem::exists(link) != makes; ++i) {
    if (i == 6000) throw std::runtime_error("without effect: " + commandLine);
    Sleep(10);
  }
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
  RunBelowWine("ln -s \"" + unixTarget + '"', link, true);
}

void RemoveLink(const std::string& link) { RunBelowWine("rm -f", link, false); }

void RunInThread(std::size_t stackSize, std::function<void()> body,
                 const std::function<void()>& meanwhile) {
  const HANDLE thread =
      CreateThread(nullptr, stackSize, StartRun, &body, STACK_SIZE_PARAM_IS_A_RESERVATION, nullptr);
  meanwhile();
  if (WaitForSingleObject(thread, INFINITE) != WAIT_OBJECT_0) std::abort();
  CloseHandle(thread);
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
