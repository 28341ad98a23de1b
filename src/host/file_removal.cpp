// QX_RemoveFile and QX_RemoveDirectory.
//
// Nothing outside the tree is removed: links are removed but not followed, an entry stays if its
// path would refer to another one, and every directory is held open while it is emptied, so that on
// Windows nobody can move it away and put a link in its place.

#include <cstddef>
#include <cstdint>
#include <cstring>

#include "frame/bounded_text.h"
#include "launcher_dll.h"
#include "platform/owners.h"
#include "platform/win32.h"

namespace launcher {
namespace {

constexpr std::size_t kPathCapacity = 260;

// False for an empty path and for a drive's name alone: with them the search pattern would list the
// root of the drive.
bool NamesDirectory(const char* path) {
  const std::size_t length = std::strlen(path);
  return length != 0 && path[length - 1] != ':';
}

bool HasSeparator(const char* name) {
  for (; *name != '\0'; ++name) {
    if (*name == '\\' || *name == '/') return true;
    // In East Asian code pages the second byte of a character can equal a backslash, but not a
    // slash.
    const bool isLeadByte = IsDBCSLeadByte(static_cast<BYTE>(*name)) != FALSE;
    if (isLeadByte && name[1] != '\0' && name[1] != '/') ++name;
  }
  return false;
}

// True if a listed name, appended to the path of its directory, refers to its own entry. Windows
// drops dots and blanks at the end of a name. A name from another system can contain separators,
// also as a result of its conversion to the code page. False for "." and "..".
bool LeadsToItself(const char* name) {
  const std::size_t length = std::strlen(name);
  if (length == 0) return false;
  const char last = name[length - 1];
  return last != '.' && last != ' ' && !HasSeparator(name);
}

// Opens a directory so that nobody else can move, replace or remove it. A handle without
// FILE_LIST_DIRECTORY would not prevent that.
HANDLE Hold(const char* directory, DWORD flags) {
  return CreateFileA(directory, FILE_LIST_DIRECTORY, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                     OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS | flags, nullptr);
}

// True if neither the held entry nor its path says that it is a link. Wine does not say so of the
// handle of a link from Linux; and in the code page the path can refer to another entry than the
// one that was listed.
bool IsNoLink(HANDLE held, const char* path) {
  BY_HANDLE_FILE_INFORMATION information = {};
  if (GetFileInformationByHandle(held, &information) == FALSE) return false;
  // INVALID_FILE_ATTRIBUTES has all bits set.
  const DWORD attributes = information.dwFileAttributes | GetFileAttributesA(path);
  return (attributes & FILE_ATTRIBUTE_REPARSE_POINT) == 0;
}

// Walks through a tree. All levels share one path and one entry, so that a level needs only a few
// words of the stack. There are at most 128 levels, since each adds two characters to the path.
// Each level has its held directory and its listing open.
class TreeRemoval {
 public:
  // Removes the entries of a directory, except those that the system refuses to remove. If the
  // path is a link to a directory, that directory is emptied. Does nothing if the path is too long
  // for a search pattern.
  void RemoveEntriesOf(const char* directory) {
    if (!Append(directory)) return;
    const FileHandle held(Hold(path_, 0));
    if (held) RemoveEntries();
  }

 private:
  // Removes the entries of the directory at path_.
  void RemoveEntries() {
    const std::size_t length = length_;
    if (!Append("\\*.*")) return;
    const FindHandle listing(FindFirstFileA(path_, &entry_));
    TruncateTo(length);
    if (!listing) return;
    do {
      if (LeadsToItself(entry_.cFileName) && Append("\\") && Append(entry_.cFileName)) {
        RemoveEntry();
      }
      TruncateTo(length);
    } while (FindNextFileA(listing.Get(), &entry_) != FALSE);
  }

  // Removes the entry at path_.
  void RemoveEntry() {
    if ((entry_.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) == 0) {
      DeleteFileA(path_);
      return;
    }
    if ((entry_.dwFileAttributes & FILE_ATTRIBUTE_REPARSE_POINT) == 0) RemoveEntriesInside();
    RemoveDirectoryA(path_);
  }

  // Removes the entries of the directory at path_, unless it has become a link.
  void RemoveEntriesInside() {
    const FileHandle held(Hold(path_, FILE_FLAG_OPEN_REPARSE_POINT));
    if (held && IsNoLink(held.Get(), path_)) RemoveEntries();
  }

  bool Append(const char* text) {
    if (!CopyText(path_ + length_, kPathCapacity - length_, text)) return false;
    length_ += std::strlen(text);
    return true;
  }

  void TruncateTo(std::size_t length) {
    path_[length] = '\0';
    length_ = length;
  }

  char path_[kPathCapacity] = "";
  std::size_t length_ = 0;
  WIN32_FIND_DATAA entry_ = {};
};

}  // namespace
}  // namespace launcher

ResultCode QX_CALL QX_RemoveFile(const char* path) {
  if (path == nullptr) return QX_BAD_ARGUMENT;
  return DeleteFileA(path) != FALSE ? QX_SUCCEEDED : QX_FAILED;
}

ResultCode QX_CALL QX_RemoveDirectory(const char* path, std::uint32_t keepDirectory) {
  if (path == nullptr) return QX_BAD_ARGUMENT;

  const bool namesDirectory = launcher::NamesDirectory(path);
  if (namesDirectory) launcher::TreeRemoval().RemoveEntriesOf(path);

  if (keepDirectory != 0) return QX_SUCCEEDED;
  return namesDirectory && RemoveDirectoryA(path) != FALSE ? QX_SUCCEEDED : QX_FAILED;
}
