// QX_CreateProcess: starts the client, keeps data for it in this process, and waits until it ends.

#include <cstdint>
#include <cstring>

#include "launch/launch_line.h"
#include "launcher_dll.h"
#include "platform/owners.h"
#include "platform/win32.h"

namespace launcher {
namespace {

// PROCESS_ALL_ACCESS, which has fewer bits in older headers.
constexpr DWORD kFullAccess = 0x1FFFFF;
constexpr DWORD kPollMilliseconds = 500;

// Owns at most one block of memory in `process`, for another process to read. The handle is
// borrowed and must outlive the block.
class RemoteBlock {
 public:
  explicit RemoteBlock(HANDLE process) : process_(process) {}
  RemoteBlock(const RemoteBlock&) = delete;
  RemoteBlock& operator=(const RemoteBlock&) = delete;
  ~RemoteBlock() { Reset(); }

  // Allocates `size` bytes, not 0, and copies `data` into them. May be called once.
  bool Fill(const void* data, std::uint32_t size) {
    block_ = VirtualAllocEx(process_, nullptr, size, MEM_RESERVE | MEM_COMMIT, PAGE_READWRITE);
    return block_ != nullptr && WriteProcessMemory(process_, block_, data, size, nullptr);
  }

  // Returns 0 if there is no block.
  std::uint32_t Address() const {
    return static_cast<std::uint32_t>(reinterpret_cast<std::uintptr_t>(block_));
  }

  void Reset() {
    constexpr SIZE_T kWholeBlock = 0;
    if (block_ != nullptr) VirtualFreeEx(process_, block_, kWholeBlock, MEM_RELEASE);
    block_ = nullptr;
  }

 private:
  HANDLE process_;
  void* block_ = nullptr;
};

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
  // A client may also end with the exit code 259, which is STILL_ACTIVE.
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
  // The client gets the plain line: the system reads the program's path from its start, and the
  // line readers read the numbers from its end. Every launch also makes the enciphered form, but
  // does not fail without it.
  std::uint8_t encipheredLine[kEncipheredLineSize];
  EncipherLaunchLine(encipheredLine, line);

  PROCESS_INFORMATION started = {};
  if (!StartProcess(line, started)) return QX_FAILED;
  const Client client(started);
  WaitForEnd(client.process);
  // Frees the data before the client's handles close: it is needed only while the client runs.
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
