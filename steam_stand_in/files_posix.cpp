#include <fcntl.h>
#include <signal.h>
#include <sys/random.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>

#include "steam_stand_in/files.h"

namespace launcher::stand_in {
namespace {

class Descriptor {
 public:
  explicit Descriptor(int number) : number_(number) {}
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;
  ~Descriptor() {
    if (number_ >= 0) close(number_);
  }

  explicit operator bool() const { return number_ >= 0; }
  int Get() const { return number_; }

 private:
  int number_;
};

// Calls `transfer(offset)`, which returns what read returns, until it has transferred `size` bytes
// or no more come. Returns how many it transferred.
template <class Transfer>
std::optional<std::size_t> TransferAll(std::size_t size, Transfer transfer) {
  std::size_t offset = 0;
  while (offset < size) {
    const ssize_t count = transfer(offset);
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) return std::nullopt;
    if (count == 0) break;
    offset += static_cast<std::size_t>(count);
  }
  return offset;
}

}  // namespace

Path StandInFolder() {
  const char* const named = std::getenv("STEAM_STAND_IN");
  if (named != nullptr && *named != '\0') return std::filesystem::absolute(named);
  return std::filesystem::read_symlink("/proc/self/exe").parent_path() / "steam_stand_in";
}

std::optional<std::string> NarrowText(const Path& path) { return path.string(); }

bool FillRandom(void* buffer, std::size_t size) {
  return TransferAll(size, [&](std::size_t offset) {
           return getrandom(static_cast<char*>(buffer) + offset, size - offset, 0);
         }) == size;
}

bool IsLink(const Path& path) {
  std::error_code error;
  return std::filesystem::is_symlink(std::filesystem::symlink_status(path, error));
}

std::optional<std::size_t> ReadStart(const Path& path, void* buffer, std::size_t capacity) {
  // O_NONBLOCK: the file may be a pipe, and opening it would wait for a writer.
  const Descriptor file(open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
  if (!file) return std::nullopt;
  return TransferAll(capacity, [&](std::size_t offset) {
    return read(file.Get(), static_cast<char*>(buffer) + offset, capacity - offset);
  });
}

unsigned long OwnProcessId() { return static_cast<unsigned long>(getpid()); }

bool IsProcessRunning(unsigned long id) {
  return kill(static_cast<pid_t>(id), 0) == 0 || errno == EPERM;
}

}  // namespace launcher::stand_in
