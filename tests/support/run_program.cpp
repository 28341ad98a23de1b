#include "support/run_program.h"

#include "platform/owners.h"
#include "platform/win32.h"

namespace launcher::test {

int RunProgram(std::string commandLine) {
  STARTUPINFOA startup = {};
  startup.cb = sizeof startup;
  PROCESS_INFORMATION started = {};
  if (!CreateProcessA(nullptr, commandLine.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr,
                      &startup, &started)) {
    return -1;
  }
  const KernelHandle process(started.hProcess);
  const KernelHandle thread(started.hThread);
  while (WaitForSingleObject(process.Get(), 0) == WAIT_TIMEOUT) Sleep(10);
  DWORD exitCode = 0;
  GetExitCodeProcess(process.Get(), &exitCode);
  return static_cast<int>(exitCode);
}

}  // namespace launcher::test
