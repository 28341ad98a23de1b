// Files. In their paths a backslash separates names, as a slash does.

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "platform/posix/command_line.h"
#include "platform/posix/faults.h"
#include "platform/posix/process_handle.h"

namespace launcher::posix {
namespace {

// Returns the path of an entry itself. A separator at the end would make Linux follow a link.
std::string EntryPath(const char* path) {
  std::string native = NativePath(path);
  while (native.size() > 1 && native.back() == '/') native.pop_back();
  return native;
}

// Returns INVALID_FILE_ATTRIBUTES if there is no such entry.
DWORD AttributesOf(const std::string& entry) {
  struct stat status = {};
  if (lstat(entry.c_str(), &status) != 0) return INVALID_FILE_ATTRIBUTES;
  DWORD attributes = (status.st_mode & S_IWUSR) == 0 ? FILE_ATTRIBUTE_READONLY : 0;
  const bool isLink = S_ISLNK(status.st_mode);
  if (isLink) stat(entry.c_str(), &status);  // if it leads nowhere, the status stays the link's own
  if (S_ISDIR(status.st_mode)) {
    attributes |= FILE_ATTRIBUTE_DIRECTORY | (isLink ? FILE_ATTRIBUTE_REPARSE_POINT : 0);
  }
  return attributes != 0 ? attributes : FILE_ATTRIBUTE_NORMAL;
}

// What FindFirstFileA returns as a handle.
struct Listing {
  std::string directory;  // with a separator at its end
  std::vector<std::string> names;
  std::size_t next = 0;

  // Returns false if there is no more. Leaves out names that do not exist any more or do not fit.
  bool Give(WIN32_FIND_DATAA* entry) {
    for (; next < names.size(); ++next) {
      const std::string& name = names[next];
      const DWORD attributes = AttributesOf(directory + name);
      if (attributes == INVALID_FILE_ATTRIBUTES || name.size() >= sizeof entry->cFileName) continue;
      entry->dwFileAttributes = attributes;
      std::memcpy(entry->cFileName, name.c_str(), name.size() + 1);
      ++next;
      return true;
    }
    return false;
  }
};

struct DirectoryCloser {
  void operator()(DIR* directory) const { closedir(directory); }
};

// Returns null if there is no such directory. Sorts the names, so that tests always see one order.
std::unique_ptr<Listing> ListDirectory(std::string directory) {
  const std::unique_ptr<DIR, DirectoryCloser> opened(opendir(directory.c_str()));
  if (!opened) return nullptr;
  auto listing = std::make_unique<Listing>();
  listing->directory = std::move(directory);
  while (const dirent* const entry = readdir(opened.get())) listing->names.push_back(entry->d_name);
  std::sort(listing->names.begin(), listing->names.end());
  return listing;
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
    // "e" sets O_CLOEXEC: a child process does not inherit the file.
    std::FILE* const file = std::fopen(NativePath(path).c_str(), (std::string(mode) + 'e').c_str());
    struct stat status = {};
    if (file == nullptr || fstat(fileno(file), &status) != 0 || !S_ISDIR(status.st_mode)) {
      return file;
    }
    std::fclose(file);  // Linux opens a directory for reading, Windows does not
    return kNone;
  });
}

int printf_s(const char* format, ...) {  // NOLINT(cert-dcl50-cpp): as the runtime declares it
  va_list arguments;
  va_start(arguments, format);
  const int length = std::vprintf(format, arguments);
  va_end(arguments);
  return length;
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

DWORD GetFileAttributesA(const char* path) {
  using namespace launcher::posix;
  if (MustFail(__func__)) return INVALID_FILE_ATTRIBUTES;
  return WithoutThrowing(INVALID_FILE_ATTRIBUTES, [=] { return AttributesOf(EntryPath(path)); });
}

HANDLE CreateFileA(const char* path, DWORD access, DWORD /*share*/, void* /*security*/,
                   DWORD creation, DWORD flags, HANDLE /*pattern*/) {
  using namespace launcher::posix;
  if (MustFail(__func__)) return INVALID_HANDLE_VALUE;
  if (access != FILE_LIST_DIRECTORY || creation != OPEN_EXISTING ||
      (flags & FILE_FLAG_BACKUP_SEMANTICS) == 0) {
    Fail(kErrorInvalidParameter);
    return INVALID_HANDLE_VALUE;
  }
  return WithoutThrowing(INVALID_HANDLE_VALUE, [=] {
    // O_PATH can open a link itself; the handle is only for GetFileInformationByHandle.
    const bool opensLink = (flags & FILE_FLAG_OPEN_REPARSE_POINT) != 0;
    return opensLink ? OpenFileHandle(EntryPath(path).c_str(), O_PATH | O_NOFOLLOW)
                     : OpenFileHandle(NativePath(path).c_str(), O_RDONLY | O_DIRECTORY);
  });
}

BOOL GetFileInformationByHandle(HANDLE file, BY_HANDLE_FILE_INFORMATION* information) {
  using namespace launcher::posix;
  if (MustFail(__func__)) return FALSE;
  struct stat status = {};
  if (fstat(DescriptorOf(file), &status) != 0) return Fail(kErrorInvalidHandle);
  information->dwFileAttributes = S_ISLNK(status.st_mode)   ? FILE_ATTRIBUTE_REPARSE_POINT
                                  : S_ISDIR(status.st_mode) ? FILE_ATTRIBUTE_DIRECTORY
                                                            : FILE_ATTRIBUTE_NORMAL;
  return TRUE;
}

HANDLE FindFirstFileA(const char* pattern, WIN32_FIND_DATAA* entry) {
  using namespace launcher::posix;
  if (MustFail(__func__)) return INVALID_HANDLE_VALUE;
  return WithoutThrowing(INVALID_HANDLE_VALUE, [=] {
    std::string directory = NativePath(pattern);
    // Only this pattern, which finds every name on Windows.
    const std::size_t end = directory.rfind("/*.*");
    const bool isOfNetwork = directory.compare(0, 2, "//") == 0;
    if (end == std::string::npos || end + 4 != directory.size() || isOfNetwork) {
      Fail(kErrorInvalidParameter);
      return INVALID_HANDLE_VALUE;
    }
    directory.resize(end + 1);
    std::unique_ptr<Listing> listing = ListDirectory(std::move(directory));
    if (!listing || !listing->Give(entry)) {
      Fail(kErrorFileNotFound);
      return INVALID_HANDLE_VALUE;
    }
    CountObject(1);
    return static_cast<HANDLE>(listing.release());
  });
}

BOOL FindNextFileA(HANDLE listing, WIN32_FIND_DATAA* entry) {
  using namespace launcher::posix;
  if (MustFail(__func__)) return FALSE;
  return WithoutThrowing(FALSE, [=] {
    return static_cast<Listing*>(listing)->Give(entry) ? TRUE : Fail(kErrorFileNotFound);
  });
}

BOOL FindClose(HANDLE listing) {
  using namespace launcher::posix;
  delete static_cast<Listing*>(listing);
  CountObject(-1);
  return MustFail(__func__) ? FALSE : TRUE;
}

BOOL DeleteFileA(const char* path) {
  using namespace launcher::posix;
  if (MustFail(__func__)) return FALSE;
  return WithoutThrowing(FALSE, [=] {
    // unlink would remove a read-only file; Windows refuses it.
    const std::string native = NativePath(path);
    const DWORD attributes = AttributesOf(native);
    if (attributes != INVALID_FILE_ATTRIBUTES &&
        (attributes & (FILE_ATTRIBUTE_DIRECTORY | FILE_ATTRIBUTE_READONLY)) != 0) {
      return Fail(kErrorAccessDenied);
    }
    return unlink(native.c_str()) == 0 ? TRUE : Fail(kErrorFileNotFound);
  });
}

BOOL RemoveDirectoryA(const char* path) {
  using namespace launcher::posix;
  if (MustFail(__func__)) return FALSE;
  return WithoutThrowing(FALSE, [=] {
    const std::string entry = EntryPath(path);
    const DWORD attributes = AttributesOf(entry);
    if (attributes == INVALID_FILE_ATTRIBUTES || (attributes & FILE_ATTRIBUTE_DIRECTORY) == 0) {
      return Fail(kErrorFileNotFound);
    }
    const bool isLink = (attributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0;
    const int result = isLink ? unlink(entry.c_str()) : rmdir(entry.c_str());
    return result == 0 ? TRUE : Fail(kErrorAccessDenied);
  });
}

std::int64_t _time64(std::int64_t* now) {
  const std::int64_t seconds = std::time(nullptr);
  if (now != nullptr) *now = seconds;
  return seconds;
}
