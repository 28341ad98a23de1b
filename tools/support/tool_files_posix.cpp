// new_file.h and input_file.h on Linux and its like.

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <mutex>
#include <random>
#include <set>
#include <system_error>

#include "support/input_file.h"
#include "support/new_file.h"

namespace launcher {
namespace {

// No system call takes more at once than this, a little below 2 GiB.
constexpr std::size_t kLargestTransfer = 0x7FFF0000;

// Temporaries that have a name, for AbandonNewFiles. Never destroyed, since threads may outlive it.
std::mutex& NamesLock() {
  static auto* const lock = new std::mutex;
  return *lock;
}
std::set<std::string>& Names() {
  static auto* const names = new std::set<std::string>;
  return *names;
}
void Remember(const std::string& name) {
  const std::lock_guard<std::mutex> guard(NamesLock());
  Names().insert(name);
}
void Forget(const std::string& name) {
  const std::lock_guard<std::mutex> guard(NamesLock());
  Names().erase(name);
}

std::string DirectoryOf(const std::string& path) {
  const std::size_t slash = path.rfind('/');
  return slash == std::string::npos ? "." : path.substr(0, slash + 1);
}

std::string TemporaryNameIn(const std::string& directory) {
  std::random_device random;
  char name[40];
  std::snprintf(name, sizeof name, "/.new-%08x%08x.tmp", random(), random());
  return directory + name;
}

// `path`, or what it leads to where it is a link to something.
std::string ResolvedPath(const std::string& path) {
  struct stat status = {};
  if (lstat(path.c_str(), &status) != 0 || !S_ISLNK(status.st_mode)) return path;
  const std::unique_ptr<char, decltype(&std::free)> resolved(realpath(path.c_str(), nullptr),
                                                             &std::free);
  return resolved ? resolved.get() : path;
}

SystemError WriteAll(int descriptor, const void* data, std::size_t size) {
  const char* next = static_cast<const char*>(data);
  while (size > 0) {
    const ssize_t written = write(descriptor, next, std::min(size, kLargestTransfer));
    if (written < 0 && errno == EINTR) continue;
    if (written < 0) return errno;
    next += written;
    size -= static_cast<std::size_t>(written);
  }
  return 0;
}

// A file without a name gets one by the link that the system keeps for its descriptor.
bool GiveName(int descriptor, const std::string& name) {
  const std::string link = "/proc/self/fd/" + std::to_string(descriptor);
  return linkat(AT_FDCWD, link.c_str(), AT_FDCWD, name.c_str(), AT_SYMLINK_FOLLOW) == 0;
}

// Not every file system can rename without replacing, but those that cannot have links mostly.
bool RenameWithoutReplacing(const std::string& from, const std::string& to) {
  if (renameat2(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(), RENAME_NOREPLACE) == 0) return true;
  if (errno != EINVAL && errno != ENOSYS) return false;
  if (link(from.c_str(), to.c_str()) != 0) return false;
  unlink(from.c_str());
  return true;
}

}  // namespace

std::string SystemErrorText(SystemError error) {
  return std::error_code(error, std::generic_category()).message();
}

bool MeansThatItExists(SystemError error) { return error == EEXIST; }

bool MeansThatTheDiskIsFull(SystemError error) {
  return error == ENOSPC || error == EDQUOT || error == EFBIG;
}

bool HasFileAt(const std::string& path) {
  struct stat status = {};
  if (stat(path.c_str(), &status) == 0) return S_ISREG(status.st_mode) || S_ISDIR(status.st_mode);
  return lstat(path.c_str(), &status) == 0;
}

SystemError MakeDirectory(const std::string& path) {
  struct stat status = {};
  if (mkdir(path.c_str(), 0777) == 0) return 0;
  const SystemError error = errno;
  return stat(path.c_str(), &status) == 0 && S_ISDIR(status.st_mode) ? 0 : error;
}

std::string FileNameOf(const std::string& path) { return path.substr(path.rfind('/') + 1); }

std::string PathIn(const std::string& directory, const std::string& name) {
  return directory + '/' + name;
}

SystemError NewFile::Open(const std::string& path) {
  Abandon();
  place_ = path;
  struct stat status = {};
  if (stat(path.c_str(), &status) == 0 && !S_ISREG(status.st_mode)) {
    isDirect_ = true;
    handle_ = open(path.c_str(), O_WRONLY | O_CLOEXEC);
    return handle_ < 0 ? errno : 0;
  }
  isDirect_ = false;
  place_ = ResolvedPath(path);
  const std::string directory = DirectoryOf(place_);
#ifdef O_TMPFILE
  // Nothing is left of such a file, however the process ends.
  handle_ = open(directory.c_str(), O_TMPFILE | O_WRONLY | O_CLOEXEC, 0666);
  if (handle_ >= 0 && access("/proc/self/fd", X_OK) == 0) return 0;
  if (handle_ >= 0) close(static_cast<int>(handle_));
#endif
  temporary_ = TemporaryNameIn(directory);
  handle_ = open(temporary_.c_str(), O_CREAT | O_EXCL | O_WRONLY | O_CLOEXEC, 0666);
  if (handle_ < 0) {
    const SystemError error = errno;
    temporary_.clear();
    return error;
  }
  Remember(temporary_);
  return 0;
}

SystemError NewFile::Write(const void* data, std::size_t size) {
  return WriteAll(static_cast<int>(handle_), data, size);
}

SystemError NewFile::Commit(Existing existing, bool isSafe) {
  const int descriptor = static_cast<int>(handle_);
  if (isSafe && fsync(descriptor) != 0 && !isDirect_) return errno;
  struct stat status = {};
  const bool replaces = existing == Existing::kReplaced;
  if (replaces && !isDirect_ && stat(place_.c_str(), &status) == 0) {
    if (!S_ISREG(status.st_mode)) return EEXIST;
    // Another owner's permissions may not be ours to give; the content counts.
    if (fchmod(descriptor, status.st_mode & 0777) != 0) errno = 0;
  }
  bool isInPlace = isDirect_;
  if (!isDirect_ && temporary_.empty()) {
    if (!replaces) {
      isInPlace = GiveName(descriptor, place_);
      if (!isInPlace) return errno;
    } else {
      const std::string name = TemporaryNameIn(DirectoryOf(place_));
      Remember(name);
      if (!GiveName(descriptor, name)) {
        const SystemError error = errno;
        Forget(name);
        return error;
      }
      temporary_ = name;
    }
  }
  // Some network file systems tell of a full disk only here.
  handle_ = -1;
  if (close(descriptor) != 0) return errno;
  if (!isInPlace) {
    const bool isMoved = replaces ? std::rename(temporary_.c_str(), place_.c_str()) == 0
                                  : RenameWithoutReplacing(temporary_, place_);
    if (!isMoved) return errno;
    Forget(temporary_);
    temporary_.clear();
  }
  if (isSafe && !isDirect_) {
    const int directory = open(DirectoryOf(place_).c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (directory >= 0) {
      fsync(directory);
      close(directory);
    }
  }
  return 0;
}

void NewFile::Abandon() {
  if (handle_ >= 0) close(static_cast<int>(handle_));
  handle_ = -1;
  if (temporary_.empty()) return;
  unlink(temporary_.c_str());
  Forget(temporary_);
  temporary_.clear();
}

void AbandonNewFiles() {
  const std::lock_guard<std::mutex> guard(NamesLock());
  for (const std::string& name : Names()) unlink(name.c_str());
}

InputFile::~InputFile() {
  if (isOwned_ && handle_ >= 0) close(static_cast<int>(handle_));
}

SystemError InputFile::Open(const std::string& path) {
  isOwned_ = true;
  handle_ = open(path.c_str(), O_RDONLY | O_CLOEXEC);
  return handle_ < 0 ? errno : 0;
}

void InputFile::OpenStandardInput() {
  isOwned_ = false;
  handle_ = STDIN_FILENO;
}

bool InputFile::IsDirectory() const {
  struct stat status = {};
  return fstat(static_cast<int>(handle_), &status) == 0 && S_ISDIR(status.st_mode);
}

std::optional<std::uint64_t> InputFile::Size() const {
  struct stat status = {};
  if (fstat(static_cast<int>(handle_), &status) != 0 || !S_ISREG(status.st_mode)) return {};
  // A redirected file may have been read from already.
  const off_t position = lseek(static_cast<int>(handle_), 0, SEEK_CUR);
  return static_cast<std::uint64_t>(
      std::max<off_t>(status.st_size - std::max<off_t>(position, 0), 0));
}

SystemError InputFile::Read(void* data, std::size_t size, std::size_t* readSize) {
  for (;;) {
    const ssize_t count = read(static_cast<int>(handle_), data, std::min(size, kLargestTransfer));
    if (count < 0 && errno == EINTR) continue;
    *readSize = count < 0 ? 0 : static_cast<std::size_t>(count);
    return count < 0 ? errno : 0;
  }
}

std::optional<std::uint64_t> SizeOfFileAt(const std::string& path) {
  struct stat status = {};
  if (stat(path.c_str(), &status) != 0 || !S_ISREG(status.st_mode)) return {};
  return static_cast<std::uint64_t>(status.st_size);
}

SystemError WriteToStandardOutput(const void* data, std::size_t size) {
  return WriteAll(STDOUT_FILENO, data, size);
}

}  // namespace launcher
