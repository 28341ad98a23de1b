#include "support/quiet_library.h"

#include <fcntl.h>
#include <unistd.h>

#include <cstdio>

#include "support/process.h"

namespace launcher {
namespace {

namespace fs = std::filesystem;

constexpr int kStreams[] = {STDOUT_FILENO, STDERR_FILENO};

// Discards what goes to the standard output and error streams while it exists.
class Silence {
 public:
  Silence() {
    std::fflush(nullptr);
    for (const int stream : kStreams) copies_[stream] = dup(stream);
    const int nowhere = open(kNullDevice, O_WRONLY);
    if (nowhere < 0) return;
    for (const int stream : kStreams) dup2(nowhere, stream);
    if (nowhere > STDERR_FILENO) close(nowhere);
  }
  Silence(const Silence&) = delete;
  Silence& operator=(const Silence&) = delete;
  ~Silence() {
    std::fflush(nullptr);
    for (const int stream : kStreams) {
      // A stream that was closed is closed again.
      if (copies_[stream] < 0 || dup2(copies_[stream], stream) < 0) close(stream);
      if (copies_[stream] >= 0) close(copies_[stream]);
    }
  }

 private:
  int copies_[STDERR_FILENO + 1] = {};
};

}  // namespace

SystemError RunQuietly(const std::function<void()>& call) {
  std::error_code error;
  const fs::path current = fs::current_path(error);
  if (error) return error.value();
  fs::path folder;
  if (const SystemError made = MakePrivateFolder(&folder); made != 0) return made;
  fs::current_path(folder, error);
  if (!error) {
    {
      const Silence silence;
      call();
    }
    fs::current_path(current, error);
  }
  std::error_code ignored;
  fs::remove_all(folder, ignored);
  return error.value();
}

}  // namespace launcher
