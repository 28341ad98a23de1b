// output_file.h and input_file.h on Linux and its like.

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <memory>
#include <system_error>

#include "support/input_file.h"
#include "support/output_file.h"

namespace launcher {
namespace {

// No system call takes more at once than this, a little below 2 GiB.
constexpr std::size_t kLargestTransfer = 0x7FFF0000;

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

}  // namespace

std::string SystemErrorText(SystemError error) {
  return std::error_code(error, std::generic_category()).message();
}

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

SystemError OutputFile::OpenDevice(const std::string& path, std::intptr_t* device) {
  struct stat status = {};
  if (stat(path.c_str(), &status) != 0 || S_ISREG(status.st_mode)) return 0;
  *device = open(path.c_str(), O_WRONLY | O_CLOEXEC);
  return *device == kNone ? errno : 0;
}

SystemError OutputFile::WriteToDevice(std::intptr_t device, const void* data, std::size_t size) {
  return WriteAll(static_cast<int>(device), data, size);
}

SystemError OutputFile::CloseDevice(std::intptr_t device) {
  return close(static_cast<int>(device)) == 0 ? 0 : errno;
}

std::string OutputFile::ResolvedPath(const std::string& path) {
  struct stat status = {};
  if (lstat(path.c_str(), &status) != 0 || !S_ISLNK(status.st_mode)) return path;
  const std::unique_ptr<char, decltype(&std::free)> resolved(realpath(path.c_str(), nullptr),
                                                             &std::free);
  return resolved ? resolved.get() : path;
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
