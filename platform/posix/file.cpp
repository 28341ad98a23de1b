// Files, by paths in which a backslash separates names too.

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <string>

#include "platform/posix/command_line.h"
#include "platform/posix/faults.h"

namespace launcher::posix {
namespace {

BOOL MoveToFreeName(const std::string& source, const std::string& target) {
  if (renameat2(AT_FDCWD, source.c_str(), AT_FDCWD, target.c_str(), RENAME_NOREPLACE) == 0) {
    return TRUE;
  }
  // Not every file system can do that in one step; a second name and then the first one's end is
  // the same to whoever looks at the target.
  const bool isUnsupported = errno == EINVAL || errno == ENOSYS;
  if (!isUnsupported || link(source.c_str(), target.c_str()) != 0) {
    return Fail(kErrorGeneralFailure);
  }
  unlink(source.c_str());
  return TRUE;
}

}  // namespace
}  // namespace launcher::posix

std::FILE* _fsopen(const char* path, const char* mode, int share) {
  using namespace launcher::posix;
  if (MustFail(__func__)) return nullptr;
  if (share != _SH_DENYNO) {
    Fail(kErrorInvalidParameter);
    return nullptr;
  }
  constexpr std::FILE* kNone = nullptr;
  return WithoutThrowing(kNone, [=] {
    // "e": a child does not inherit it.
    std::FILE* const file = std::fopen(NativePath(path).c_str(), (std::string(mode) + 'e').c_str());
    struct stat status = {};
    if (file == nullptr || fstat(fileno(file), &status) != 0 || !S_ISDIR(status.st_mode)) {
      return file;
    }
    std::fclose(file);  // Windows opens no directory
    return kNone;
  });
}

int _stat64(const char* path, struct __stat64* status) {
  using namespace launcher::posix;
  if (MustFail(__func__)) return -1;
  return WithoutThrowing(-1, [=] {
    struct stat found = {};
    if (stat(NativePath(path).c_str(), &found) != 0) return -1;
    status->st_size = found.st_size;
    return 0;
  });
}

BOOL DeleteFileA(const char* path) {
  using namespace launcher::posix;
  if (MustFail(__func__)) return FALSE;
  return WithoutThrowing(FALSE, [=] {
    return unlink(NativePath(path).c_str()) == 0 ? TRUE : Fail(kErrorFileNotFound);
  });
}

BOOL MoveFileExA(const char* from, const char* to, DWORD flags) {
  using namespace launcher::posix;
  if (MustFail(__func__)) return FALSE;
  if (flags != 0) return Fail(kErrorInvalidParameter);
  return WithoutThrowing(FALSE, [=] { return MoveToFreeName(NativePath(from), NativePath(to)); });
}
