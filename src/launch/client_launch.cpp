// QX_CreateProcess: starts the client, keeps data for it in this process, and waits until it ends.
// The client learns the data's address from its command line and reads the data from this process.

#include <cstdint>
#include <cstring>

#include "launch/launch_line.h"
#include "launcher_dll.h"
#include "platform/owners.h"
#include "platform/win32.h"

namespace launcher {
namespace {

// PROCESS_ALL_ACCESS as since Windows Vista; older headers have fewer bits.
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

  // Allocates `size` bytes, not 0, and copies `data` into them. May be called once. If only the
  // copy fails, the destructor frees the block.
  bool Fill(const void* data, std::uint32_t size) {
    block_ = VirtualAllocEx(process_, nullptr, size, MEM_RESERVE | MEM_COMMIT, PAGE_READWRITE);
    return block_ != nullptr && WriteProcessMemory(process_, block_, data, size, nullptr);
  }

  // Returns 0 if there is no block. 32 bits are enough, in the native build too: there
  // VirtualAllocEx allocates below 4 GiB.
  std::uint32_t Address() const {
    return static_cast<std::uint32_t>(reinterpret_cast<std::uintptr_t>(block_));
  }

  void Reset() {
    constexpr SIZE_T kWholeBlock = 0;  // MEM_RELEASE accepts no other size
    if (block_ != nullptr) VirtualFreeEx(process_, block_, kWholeBlock, MEM_RELEASE);
    block_ = nullptr;
  }

 private:
  HANDLE process_;
  void* block_ = nullptr;
};

// Owns the handles of a started client. Members are destroyed in reverse order, so the process
// handle closes first.
struct Client {
  explicit Client(const PROCESS_INFORMATION& started)
      : thread(started.hThread), process(started.hProcess) {}

  KernelHandle thread;
  KernelHandle process;
};

// No application name: the system takes the program from the quoted path at the start of the line.
bool StartProcess(char* commandLine, PROCESS_INFORMATION& started) {
  STARTUPINFOA startup = {};
  startup.cb = sizeof startup;
  return CreateProcessA(nullptr, commandLine, nullptr, nullptr, FALSE, CREATE_NEW_CONSOLE, nullptr,
                        nullptr, &startup, &started) != FALSE;
}

bool HasEnded(const KernelHandle& process) {
  DWORD exitCode = STILL_ACTIVE;
  if (GetExitCodeProcess(process.Get(), &exitCode) && exitCode != STILL_ACTIVE) return true;
  // A client can also end with the exit code 259, which is STILL_ACTIVE, so the process object
  // decides. If even that query fails, the client counts as ended: to wait would take for ever.
  return WaitForSingleObject(process.Get(), 0) != WAIT_TIMEOUT;
}

// Sleeps before the first look, so the caller is held for at least half a second.
void WaitForEnd(const KernelHandle& process) {
  do {
    Sleep(kPollMilliseconds);
  } while (!HasEnded(process));
}

ResultCode RunClient(const char* clientPath, const void* data, std::uint32_t dataSize) {
  const DWORD processId = GetCurrentProcessId();
  const KernelHandle self(OpenProcess(kFullAccess, FALSE, processId));
  if (!self) return QX_FAILED;

  // Declared after `self`, so that every return frees the block before its process handle closes.
  RemoteBlock block(self.Get());
  if (data != nullptr && dataSize != 0 && !block.Fill(data, dataSize)) return QX_FAILED;

  char line[kLaunchLineCapacity];
  FormatLaunchLine(line, clientPath, processId, block.Address());
  // The client gets the plain line: the system reads the program's path from its start, and the
  // line readers read the numbers from its end. Every launch also makes the enciphered form. It is
  // not handed on, and if it cannot be made, the launch goes on.
  std::uint8_t encipheredLine[kEncipheredLineSize];
  EncipherLaunchLine(encipheredLine, line);

  PROCESS_INFORMATION started = {};
  if (!StartProcess(line, started)) return QX_FAILED;
  const Client client(started);
  WaitForEnd(client.process);
  // Explicitly, since this must come before the client's handles close.
  block.Reset();
  return QX_SUCCEEDED;
}

}  // namespace
}  // namespace launcher

ResultCode QX_CALL QX_CreateProcess(const char* clientPath, const void* data,
                                    std::uint32_t dataSize) {
  if (clientPath == nullptr) return QX_FAILED;
  // A longer path would cut the numbers off the end of the line.
  if (std::strlen(clientPath) > launcher::kMaxClientPathLength) return QX_FAILED;

  return launcher::RunClient(clientPath, data, dataSize);
}
