// interrupt.h, terminal.h, quiet_library.h, threads.h and large_memory.h on Linux and its
// like.

#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <condition_variable>
#include <csignal>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <mutex>
#include <string>
#include <system_error>
#include <thread>
#include <vector>

#include "support/interrupt.h"
#include "support/large_memory.h"
#include "support/quiet_library.h"
#include "support/terminal.h"
#include "support/threads.h"

namespace launcher {
namespace {

volatile std::sig_atomic_t isInterrupted = 0;

void SetFlag(int /*signal*/) { isInterrupted = 1; }

}  // namespace

void WatchForInterrupts() {
  struct sigaction action = {};
  action.sa_handler = SetFlag;
  for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
    struct sigaction before = {};
    // What a shell has told a program in the background to ignore stays ignored.
    if (sigaction(signal, nullptr, &before) == 0 && before.sa_handler == SIG_IGN) continue;
    sigaction(signal, &action, nullptr);
  }
  // Without these, a reader that goes away or a limit on the size of files ends the process.
  action.sa_handler = SIG_IGN;
  sigaction(SIGPIPE, &action, nullptr);
  sigaction(SIGXFSZ, &action, nullptr);
}

bool Interrupted() { return isInterrupted != 0; }

bool IsTerminal(Stream stream) { return isatty(static_cast<int>(stream)) != 0; }

void KeepClosedStreamsClosed() {
  for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
    if (fcntl(stream, F_GETFD) != -1) continue;
    // The lowest free number is the stream's; open for what nobody does with it.
    if (open("/dev/null", stream == STDIN_FILENO ? O_WRONLY : O_RDONLY) != stream) return;
  }
}

bool ShowsColour(Stream stream) {
  const char* const noColour = std::getenv("NO_COLOR");
  const char* const terminal = std::getenv("TERM");
  return IsTerminal(stream) && (noColour == nullptr || *noColour == '\0') && terminal != nullptr &&
         std::string(terminal) != "dumb";
}

SystemError RunQuietly(const std::function<void()>& call) {
  const char* const temporary = std::getenv("TMPDIR");
  std::string directory =
      std::string(temporary != nullptr && *temporary != '\0' ? temporary : "/tmp") +
      "/launcher-XXXXXX";
  const int current = open(".", O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (current < 0) return errno;
  SystemError error = 0;
  if (mkdtemp(directory.data()) == nullptr || chdir(directory.c_str()) != 0) {
    error = errno;
  } else {
    // A stream that is closed stays closed afterwards: its copy is -1.
    const int streams[] = {STDOUT_FILENO, STDERR_FILENO};
    int copies[2];
    const int nowhere = open("/dev/null", O_WRONLY | O_CLOEXEC);
    std::fflush(nullptr);
    for (int i = 0; i < 2; ++i) {
      copies[i] = fcntl(streams[i], F_DUPFD_CLOEXEC, 3);
      if (nowhere >= 0) dup2(nowhere, streams[i]);
    }
    if (nowhere >= 0) {
      call();
      std::fflush(nullptr);
    } else {
      error = errno;
    }
    for (int i = 0; i < 2; ++i) {
      if (copies[i] < 0) {
        close(streams[i]);
      } else {
        dup2(copies[i], streams[i]);
        close(copies[i]);
      }
    }
    if (nowhere > STDERR_FILENO) close(nowhere);
    unlink("config.json");
    if (fchdir(current) != 0) error = errno;
  }
  close(current);
  rmdir(directory.c_str());
  return error;
}

int ProcessorCount() {
  const unsigned count = std::thread::hardware_concurrency();
  return count == 0 ? 1 : static_cast<int>(count);
}

void RunInThreads(int count, const std::function<void()>& work,
                  const std::function<void()>& watch) {
  std::mutex mutex;
  std::condition_variable hasEnded;
  int running = 0;
  std::vector<std::thread> threads;
  const auto run = [&] {
    work();
    const std::lock_guard<std::mutex> guard(mutex);
    --running;
    hasEnded.notify_one();
  };
  for (int i = 0; i < count; ++i) {
    const std::lock_guard<std::mutex> guard(mutex);
    try {
      threads.emplace_back(run);
      ++running;
    } catch (const std::exception&) {
      break;  // those that have started do all the work
    }
  }
  if (threads.empty()) {
    work();
    return;
  }
  for (;;) {
    {
      std::unique_lock<std::mutex> guard(mutex);
      if (hasEnded.wait_for(guard, std::chrono::milliseconds(50), [&] { return running == 0; })) {
        break;
      }
    }
    watch();
  }
  for (std::thread& thread : threads) thread.join();
}

void PreferLargePages(void* block, std::size_t size) {
#ifdef MADV_HUGEPAGE
  constexpr std::size_t kPage = 4096;
  const auto before = reinterpret_cast<std::uintptr_t>(block) % kPage;
  const std::size_t skipped = before == 0 ? 0 : kPage - before;
  if (size > skipped) madvise(static_cast<char*>(block) + skipped, size - skipped, MADV_HUGEPAGE);
#endif
}

void EndAtOnce(int exitCode) { _exit(exitCode); }

}  // namespace launcher
