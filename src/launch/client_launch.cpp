// QX_CreateProcess: starts the client, leaves data for it in this process, and waits for its end.

#include <cstdint>
#include <cstring>

#include "launch/launch_line.h"
#include "launch/remote_block.h"
#include "launcher_dll.h"
#include "platform/owners.h"
#include "platform/win32.h"

namespace launcher {
namespace {

constexpr DWORD kFullAccess = 0x1FFFFF;  // PROCESS_ALL_ACCESS, which older headers give fewer bits
constexpr DWORD kPollMilliseconds = 500;

// A started client. Its process handle closes before its thread handle.
struct Client {
  explicit Client(const PROCESS_INFORMATION& started)
      : thread(started.hThread), process(started.hProcess) {}

  KernelHandle thread;
  KernelHandle process;
};

bool StartProcess(char* commandLine, PROCESS_INFORMATION& started) {
  STARTUPINFOA startup = {};
  startup.cb = sizeof startup;
  return CreateProcessA(nullptr, commandLine, nullptr, nullptr, FALSE, CREATE_NEW_CONSOLE, nullptr,
                        nullptr, &startup, &started) != FALSE;
}

bool HasEnded(const KernelHandle& process) {
  DWORD exitCode = STILL_ACTIVE;
  if (GetExitCodeProcess(process.Get(), &exitCode) && exitCode != STILL_ACTIVE) return true;
  // STILL_ACTIVE is 259, which a client may end with too. The process object knows.
  return WaitForSingleObject(process.Get(), 0) != WAIT_TIMEOUT;
}

void WaitForEnd(const KernelHandle& process) {
  do {
    Sleep(kPollMilliseconds);
  } while (!HasEnded(process));
}

ResultCode RunClient(const char* clientPath, const void* data, std::uint32_t dataSize) {
  const DWORD processId = GetCurrentProcessId();
  const KernelHandle self(OpenProcess(kFullAccess, FALSE, processId));
  if (!self) return QX_FAILED;

  RemoteBlock block(self.Get());
  if (data != nullptr && dataSize != 0 && !block.Fill(data, dataSize)) return QX_FAILED;

  char line[kLaunchLineCapacity];
  FormatLaunchLine(line, clientPath, processId, block.Address());
  // The client gets the plain line: the system finds the program at its head, and the readers take
  // numbers off its end. The enciphered form is made beside it at every launch, and no launch fails
  // for want of it.
  std::uint8_t encipheredLine[kEncipheredLineSize];
  EncipherLaunchLine(encipheredLine, line);

  PROCESS_INFORMATION started = {};
  if (!StartProcess(line, started)) return QX_FAILED;
  const Client client(started);
  WaitForEnd(client.process);
  // The data lives as long as the client, so it goes before the client's handles.
  block.Reset();
  return QX_SUCCEEDED;
}

}  // namespace
}  // namespace launcher

ResultCode QX_CALL QX_CreateProcess(const char* clientPath, const void* data,
                                    std::uint32_t dataSize) {
  if (clientPath == nullptr) return QX_FAILED;
  if (std::strlen(clientPath) > launcher::kMaxClientPathLength) return QX_FAILED;

  return launcher::RunClient(clientPath, data, dataSize);
}
