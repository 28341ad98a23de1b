// NewFile on Linux.

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <utility>

#include "platform/new_file.h"
#include "platform/posix/faults.h"

namespace launcher {
namespace {

// In bytes, a little below 2 GiB: no system call transfers more at once.
constexpr std::size_t kLargestTransfer = 0x7FFF0000;

// Makes a system call, which returns 0 on success, and returns its error. Fails without the call if
// a test has planned it.
template <class Call>
SystemError ErrorOf(const char* name, Call call) {
  if (posix::MustFail(name)) return EIO;
  return call() == 0 ? 0 : errno;
}

// Returns 0, or -1 with the reason in errno; EEXIST if anything has the name `to`.
int RenameWithoutReplacing(const char* from, const char* to) {
  if (renameat2(AT_FDCWD, from, AT_FDCWD, to, RENAME_NOREPLACE) == 0) return 0;
  // Not every file system supports this. A second name, after which the first is removed, has the
  // same effect on `to`: link does not replace anything either.
  const bool isUnsupported = errno == EINVAL || errno == ENOSYS;
  if (!isUnsupported || link(from, to) != 0) return -1;
  unlink(from);
  return 0;
}

// Flushes the new name. A failure is not reported: the name then reaches the disk later, and the
// file is complete in any case.
void FlushDirectoryOf(const std::string& path) {
  const std::size_t slash = path.rfind('/');
  const std::string directory = slash == std::string::npos ? "." : path.substr(0, slash + 1);
  const int descriptor = open(directory.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (descriptor < 0) return;
  fsync(descriptor);
  close(descriptor);
}

}  // namespace

bool MeansThatItExists(SystemError error) { return error == EEXIST; }

SystemPath SystemPathOf(const char* path) { return path; }

SystemError NewFile::Create(const SystemPath& temporary) {
  Abandon();
  // Before the file exists, since memory can run out here.
  SystemPath name = temporary;
  constexpr mode_t kReadAndWrite = 0666;  // without the bits of the user's umask
  return ErrorOf("open", [&] {
    handle_ = open(name.c_str(), O_CREAT | O_EXCL | O_WRONLY | O_CLOEXEC, kReadAndWrite);
    if (handle_ == kNone) return -1;
    temporary_ = std::move(name);
    isFlushed_ = false;
    return 0;
  });
}

SystemError NewFile::Write(const void* data, std::size_t size) {
  const char* next = static_cast<const char*>(data);
  return ErrorOf("write", [&] {
    while (size > 0) {
      const ssize_t count =
          write(static_cast<int>(handle_), next, std::min(size, kLargestTransfer));
      if (count < 0 && errno == EINTR) continue;
      if (count < 0) return -1;
      next += count;
      size -= static_cast<std::size_t>(count);
    }
    return 0;
  });
}

SystemError NewFile::WriteText(const std::string& text) { return Write(text.data(), text.size()); }

SystemError NewFile::Flush() {
  isFlushed_ = true;
  return ErrorOf("fsync", [&] { return fsync(static_cast<int>(handle_)); });
}

SystemError NewFile::MoveTo(const SystemPath& place, Existing existing) {
  const bool replaces = existing != Existing::kStays;
  struct stat status = {};
  if (replaces && stat(place.c_str(), &status) == 0) {
    // rename would replace a device or a pipe too.
    if (!S_ISREG(status.st_mode)) return EEXIST;
    // Not every file system has permissions; if this fails, the content counts.
    if (existing == Existing::kReplaced) {
      static_cast<void>(fchmod(static_cast<int>(handle_), status.st_mode & 0777));
    }
  }
  // Some network file systems report a full disk only when the file closes. It closes even if a
  // test has planned a failure here.
  const int descriptor = static_cast<int>(std::exchange(handle_, kNone));
  const bool isClosed = close(descriptor) == 0;
  if (const SystemError error = ErrorOf("close", [&] { return isClosed ? 0 : -1; })) return error;

  if (temporary_ != place) {
    const SystemError error = ErrorOf("rename", [&] {
      return replaces ? std::rename(temporary_.c_str(), place.c_str())
                      : RenameWithoutReplacing(temporary_.c_str(), place.c_str());
    });
    if (error != 0) return error;
  }
  temporary_.clear();  // Abandon has nothing to remove any more
  if (isFlushed_) FlushDirectoryOf(place);
  return 0;
}

void NewFile::Abandon() {
  if (handle_ != kNone) close(static_cast<int>(std::exchange(handle_, kNone)));
  if (!temporary_.empty()) unlink(temporary_.c_str());
  temporary_.clear();
}

}  // namespace launcher
