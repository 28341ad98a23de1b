#include <windows.h>

#include <stdexcept>

#include "steam_stand_in/processes.h"

namespace launcher::test {

void SetEnvironment(const char* name, const char* value) { SetEnvironmentVariableA(name, value); }

Child::Child(const std::string& program, const std::string& argument) : process_(0) {
  std::string line = '"' + program + "\" " + argument;
  STARTUPINFOA startup = {};
  startup.cb = sizeof startup;
  PROCESS_INFORMATION started = {};
  if (!CreateProcessA(nullptr, line.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr, &startup,
                      &started)) {
    throw std::runtime_error("no process for " + program);
  }
  CloseHandle(started.hThread);
  process_ = reinterpret_cast<std::intptr_t>(started.hProcess);
}

bool Child::Kill() {
  constexpr UINT kKilled = 77;
  const auto process = reinterpret_cast<HANDLE>(process_);
  TerminateProcess(process, kKilled);
  WaitForSingleObject(process, INFINITE);
  DWORD code = 0;
  GetExitCodeProcess(process, &code);
  CloseHandle(process);
  return code == kKilled;
}

}  // namespace launcher::test
