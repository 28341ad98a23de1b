// Processes: handles, a child by fork and exec, its end by waitpid.

#include <fcntl.h>
#include <sys/prctl.h>
#include <sys/uio.h>
#include <sys/wait.h>
#include <time.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <memory>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

#include "platform/posix/command_line.h"
#include "platform/posix/faults.h"
#include "platform/posix/process_handle.h"

namespace launcher::posix {
namespace {

// waitpid, repeated if a signal interrupts it.
pid_t WaitForEnd(pid_t pid, int* status, int options) {
  pid_t ended = 0;
  do {
    ended = waitpid(pid, status, options);
  } while (ended < 0 && errno == EINTR);
  return ended;
}

constexpr DWORD kFullAccess = 0x1FFFFF;

// What is known of a process. Both handles of a child share it, since waitpid reports the end of a
// child only once.
struct Process {
  pid_t pid = 0;
  bool isChild = false;
  std::mutex mutex;
  bool hasEnded = false;
  DWORD exitCode = STILL_ACTIVE;
};

// A handle of a process or of a file: process is null, or descriptor is -1.
struct Handle {
  explicit Handle(std::shared_ptr<Process> itsProcess) : process(std::move(itsProcess)) {}
  Handle(const Handle&) = delete;
  Handle& operator=(const Handle&) = delete;
  ~Handle() {
    if (descriptor >= 0) close(descriptor);
  }

  std::shared_ptr<Process> process;
  int descriptor = -1;
};

using OwnedHandle = std::unique_ptr<Handle>;

OwnedHandle MakeHandle(const std::shared_ptr<Process>& process) {
  return std::make_unique<Handle>(process);
}

// Gives the handle to the caller, who must close it with CloseHandle.
HANDLE HandOut(OwnedHandle handle) {
  CountObject(1);
  return handle.release();
}

Process* ProcessOf(HANDLE handle) {
  return handle == nullptr ? nullptr : static_cast<Handle*>(handle)->process.get();
}

// Updates hasEnded and exitCode without waiting. The caller holds the process's mutex.
void AskWhetherEnded(Process& process) {
  if (process.hasEnded) return;
  if (!process.isChild) {
    // Only a parent gets an exit code. Another failure than ESRCH means that the process exists.
    process.hasEnded = kill(process.pid, 0) != 0 && errno == ESRCH;
    return;
  }
  int status = 0;
  const pid_t ended = WaitForEnd(process.pid, &status, WNOHANG);
  // If the caller ignores SIGCHLD, the kernel keeps no exit code; the child then counts as ended
  // with exit code 0.
  const bool isLost = ended < 0 && errno == ECHILD;
  if (ended != process.pid && !isLost) return;
  process.hasEnded = true;
  process.exitCode = WIFEXITED(status) ? static_cast<DWORD>(WEXITSTATUS(status))
                                       : 0x80000000 + static_cast<DWORD>(WTERMSIG(status));
}

// Owns both ends of a pipe: end 0 is read, end 1 is written. They also close when the child starts
// its program.
class Pipe {
 public:
  Pipe() { isOpen_ = pipe2(ends_, O_CLOEXEC) == 0; }
  Pipe(const Pipe&) = delete;
  Pipe& operator=(const Pipe&) = delete;
  ~Pipe() {
    CloseEnd(0);
    CloseEnd(1);
  }

  bool IsOpen() const { return isOpen_; }

  void CloseEnd(int end) {
    if (isOpen_ && ends_[end] >= 0) close(ends_[end]);
    ends_[end] = -1;
  }

  // Waits for one byte and returns it, or -1 if the other end closes first.
  int ReadByte() const {
    unsigned char byte = 0;
    ssize_t count = 0;
    do {
      count = read(ends_[0], &byte, 1);
    } while (count < 0 && errno == EINTR);
    return count == 1 ? byte : -1;
  }

  void WriteByte(int value) const {
    const auto byte = static_cast<unsigned char>(value);
    while (write(ends_[1], &byte, 1) < 0 && errno == EINTR) {
    }
  }

 private:
  int ends_[2] = {-1, -1};
  bool isOpen_ = false;
};

// Runs between fork and exec, so it makes only calls that are safe in the child of a process with
// threads. It waits for a byte from the parent, which first permits the child to read its memory.
// If exec fails, it sends the error, which fits one byte; if exec succeeds, `failed` closes without
// one.
[[noreturn]] void BecomeProgram(const char* path, char* const* arguments, Pipe& go, Pipe& failed) {
  go.CloseEnd(1);
  if (go.ReadByte() == 0) {
    close_range(3, ~0U, CLOSE_RANGE_CLOEXEC);  // all but the three standard streams
    execv(path, arguments);
  }
  failed.WriteByte(errno);
  _exit(127);
}

// Returns the child's process id, or 0 with the reason in errno and GetLastError. `arguments` end
// in null.
pid_t StartChild(const char* path, char* const* arguments) {
  Pipe go;
  Pipe failed;
  if (!go.IsOpen() || !failed.IsOpen()) return Fail(kErrorGeneralFailure);
  const pid_t pid = fork();
  if (pid < 0) return Fail(kErrorNotEnoughMemory);
  if (pid == 0) BecomeProgram(path, arguments, go, failed);

  // Some kernels let even a child read its parent's memory only if the parent permits it.
  prctl(PR_SET_PTRACER, static_cast<unsigned long>(pid));
  go.WriteByte(0);
  // Otherwise this process would keep the pipe open and wait for itself.
  failed.CloseEnd(1);
  const int childError = failed.ReadByte();
  if (childError >= 0) {
    WaitForEnd(pid, nullptr, 0);  // so that no zombie stays
    errno = childError;
    return Fail(kErrorFileNotFound);
  }
  return pid;
}

BOOL StartProgram(const std::string& commandLine, PROCESS_INFORMATION& started) {
  std::vector<std::string> texts = SplitCommandLine(commandLine);
  if (texts.empty()) return Fail(kErrorFileNotFound);
  const std::string path = NativePath(texts[0].c_str());
  std::vector<char*> arguments;
  arguments.reserve(texts.size() + 1);
  for (std::string& text : texts) arguments.push_back(text.data());
  arguments.push_back(nullptr);

  // All memory is allocated before the child runs: a started child is always returned.
  const auto process = std::make_shared<Process>();
  OwnedHandle processHandle = MakeHandle(process);
  OwnedHandle threadHandle = MakeHandle(process);
  process->pid = StartChild(path.c_str(), arguments.data());
  process->isChild = true;
  if (process->pid == 0) return FALSE;

  started.hProcess = HandOut(std::move(processHandle));
  started.hThread = HandOut(std::move(threadHandle));
  started.dwProcessId = static_cast<DWORD>(process->pid);
  started.dwThreadId = static_cast<DWORD>(process->pid);
  return TRUE;
}

}  // namespace

pid_t ProcessIdOf(HANDLE handle) {
  const Process* const process = ProcessOf(handle);
  return process == nullptr ? 0 : process->pid;
}

HANDLE OpenFileHandle(const char* path, int flags) {
  OwnedHandle handle = MakeHandle(nullptr);
  handle->descriptor = open(path, flags | O_CLOEXEC);
  if (handle->descriptor < 0) {
    Fail(kErrorFileNotFound);
    return INVALID_HANDLE_VALUE;
  }
  return HandOut(std::move(handle));
}

int DescriptorOf(HANDLE handle) {
  return handle == nullptr ? -1 : static_cast<Handle*>(handle)->descriptor;
}

}  // namespace launcher::posix

DWORD GetCurrentProcessId() { return static_cast<DWORD>(getpid()); }

DWORD GetCurrentThreadId() { return static_cast<DWORD>(gettid()); }

HANDLE OpenProcess(DWORD access, BOOL inheritHandle, DWORD processId) {
  using namespace launcher::posix;
  if (MustFail(__func__)) return nullptr;
  const auto pid = static_cast<pid_t>(processId);
  // kill with signal 0 only looks whether the process exists.
  const bool isAccess = access == kFullAccess || access == PROCESS_VM_READ;
  if (!isAccess || inheritHandle != FALSE || pid <= 0 || (kill(pid, 0) != 0 && errno == ESRCH)) {
    Fail(kErrorInvalidParameter);
    return nullptr;
  }
  constexpr HANDLE kNone = nullptr;
  return WithoutThrowing(kNone, [=] {
    const auto process = std::make_shared<Process>();
    process->pid = pid;
    return HandOut(MakeHandle(process));
  });
}

BOOL CreateProcessA(const char* application, char* commandLine, void* processAttributes,
                    void* threadAttributes, BOOL inheritHandles, DWORD /*flags*/, void* environment,
                    const char* directory, STARTUPINFOA* startup, PROCESS_INFORMATION* started) {
  using namespace launcher::posix;
  if (MustFail(__func__)) return FALSE;
  if (application != nullptr || processAttributes != nullptr || threadAttributes != nullptr ||
      inheritHandles != FALSE || environment != nullptr || directory != nullptr ||
      startup->cb != sizeof *startup) {
    return Fail(kErrorInvalidParameter);
  }
  return WithoutThrowing(FALSE, [=] { return StartProgram(commandLine, *started); });
}

BOOL GetExitCodeProcess(HANDLE handle, DWORD* exitCode) {
  using namespace launcher::posix;
  if (MustFail(__func__)) return FALSE;
  Process* const process = ProcessOf(handle);
  if (process == nullptr) return Fail(kErrorInvalidHandle);
  const std::lock_guard<std::mutex> lock(process->mutex);
  AskWhetherEnded(*process);
  *exitCode = process->exitCode;
  return TRUE;
}

DWORD WaitForSingleObject(HANDLE handle, DWORD milliseconds) {
  using namespace launcher::posix;
  if (MustFail(__func__)) return WAIT_FAILED;
  Process* const process = ProcessOf(handle);
  if (process == nullptr || milliseconds != 0) {
    Fail(kErrorInvalidParameter);
    return WAIT_FAILED;
  }
  const std::lock_guard<std::mutex> lock(process->mutex);
  AskWhetherEnded(*process);
  return process->hasEnded ? WAIT_OBJECT_0 : WAIT_TIMEOUT;
}

BOOL CloseHandle(HANDLE handle) {
  using namespace launcher::posix;
  if (handle == nullptr) return Fail(kErrorInvalidHandle);
  delete static_cast<Handle*>(handle);
  CountObject(-1);
  return MustFail(__func__) ? FALSE : TRUE;
}

void Sleep(DWORD milliseconds) {
  // A signal interrupts nanosleep, which then stores the time that is left.
  timespec left = {static_cast<time_t>(milliseconds / 1000),
                   static_cast<long>(milliseconds % 1000) * 1000000};
  while (nanosleep(&left, &left) != 0 && errno == EINTR) {
  }
}
