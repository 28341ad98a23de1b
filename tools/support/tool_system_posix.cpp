// output_file.h, process.h and terminal.h for Linux.

#include <fcntl.h>
#include <pthread.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <ctime>
#include <vector>

#include "support/output_file.h"
#include "support/process.h"
#include "support/terminal.h"

namespace launcher {
namespace {

namespace fs = std::filesystem;

volatile std::sig_atomic_t isInterrupted = 0;

void SetFlag(int /*signal*/) { isInterrupted = 1; }

void* RunWork(void* work) {
  (*static_cast<const std::function<void()>*>(work))();
  return nullptr;
}

timespec InAMoment() {
  constexpr long kMoment = 50'000'000;
  constexpr long kSecond = 1'000'000'000;
  timespec time = {};
  clock_gettime(CLOCK_REALTIME, &time);
  time.tv_sec += (time.tv_nsec + kMoment) / kSecond;
  time.tv_nsec = (time.tv_nsec + kMoment) % kSecond;
  return time;
}

}  // namespace

const char* const kNullDevice = "/dev/null";

std::string NarrowText(const fs::path& path) { return path.string(); }

std::string SystemErrorText(SystemError error) { return std::generic_category().message(error); }

SystemError LastFileError() { return errno; }

bool MeansFullDisk(SystemError error) {
  return error == ENOSPC || error == EDQUOT || error == EFBIG;
}

bool MeansNoReader(SystemError error) { return error == EPIPE; }

bool IsDevice(const std::string& path) {
  std::error_code ignored;
  return fs::is_other(fs::status(path, ignored));
}

bool IsLink(const fs::path& path) {
  std::error_code ignored;
  return fs::is_symlink(path, ignored);
}

void UseBinaryStreams() {}

SystemError MakePrivateFolder(fs::path* folder) {
  const char* const temporary = std::getenv("TMPDIR");
  std::string name = temporary != nullptr && *temporary != '\0' ? temporary : "/tmp";
  name += "/launcher-XXXXXX";
  if (mkdtemp(name.data()) == nullptr) return errno;
  *folder = name;
  return 0;
}

void SetPermissions(const fs::path& file, fs::perms permissions) {
  std::error_code ignored;
  fs::permissions(file, permissions & fs::perms::all, ignored);
}

void WatchForInterrupts() {
  struct sigaction action = {};
  action.sa_handler = SetFlag;
  // Otherwise <cstdio> would treat an interrupt as an error of the file.
  action.sa_flags = SA_RESTART;
  for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
    struct sigaction before = {};
    // A shell starts background programs with some signals ignored; they stay ignored.
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
    // open uses the lowest free number, which is the stream's. The wrong access mode makes each use
    // of the stream fail.
    if (open(kNullDevice, stream == STDIN_FILENO ? O_WRONLY : O_RDONLY) != stream) return;
  }
}

bool ShowsColour(Stream stream) {
  const char* const noColour = std::getenv("NO_COLOR");
  const char* const terminal = std::getenv("TERM");
  return IsTerminal(stream) && (noColour == nullptr || *noColour == '\0') && terminal != nullptr &&
         std::string(terminal) != "dumb";
}

int ProcessorCount() { return static_cast<int>(sysconf(_SC_NPROCESSORS_ONLN)); }

void RunInThreads(int count, const std::function<void()>& work,
                  const std::function<void()>& watch) {
  std::vector<pthread_t> threads;
  for (int i = 0; i < count; ++i) {
    pthread_t thread = {};
    auto* const argument = const_cast<std::function<void()>*>(&work);
    if (pthread_create(&thread, nullptr, RunWork, argument) == 0) threads.push_back(thread);
  }
  if (threads.empty()) work();
  for (const pthread_t thread : threads) {
    for (timespec end = InAMoment(); pthread_timedjoin_np(thread, nullptr, &end) == ETIMEDOUT;
         end = InAMoment()) {
      watch();
    }
  }
}

void EndAtOnce(int exitCode) { _exit(exitCode); }

}  // namespace launcher
