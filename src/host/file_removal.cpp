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

// MAX_PATH, the limit of the A functions of Windows; terminator included.
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
    // In East Asian code pages the second byte of a character can equal a backslash, which then
    // separates nothing. It cannot equal a slash.
    const bool isLeadByte = IsDBCSLeadByte(static_cast<BYTE>(*name)) != FALSE;
    if (isLeadByte && name[1] != '\0' && name[1] != '/') ++name;
  }
  return false;
}

// True if a listed name, appended to the path of its directory, refers to the listed entry. Windows
// drops dots and blanks at the end of a name. A name that another system made can contain
// separators, and so can the result of its conversion to the code page. False for "." and "..",
// which must not be entered.
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

// True if neither the held entry nor its path is reported as a link. One of them is not enough:
// Wine does not report a link from Linux by its handle, and after its conversion to the code page
// the path can refer to another entry than the listed one. A junction is a link too.
bool IsNoLink(HANDLE held, const char* path) {
  BY_HANDLE_FILE_INFORMATION information = {};
  if (GetFileInformationByHandle(held, &information) == FALSE) return false;
  // If the path has no attributes, INVALID_FILE_ATTRIBUTES has all bits set, so the entry counts as
  // a link and is not entered.
  const DWORD attributes = information.dwFileAttributes | GetFileAttributesA(path);
  return (attributes & FILE_ATTRIBUTE_REPARSE_POINT) == 0;
}

// Walks through a tree. All levels share one path and one entry, so that a level needs only a few
// words of the stack. There are at most 128 levels, since each adds two characters or more to the
// path. Each level keeps its directory and its listing open.
class TreeRemoval {
 public:
  // Removes the entries of a directory, except those that the system refuses to remove. If the
  // path is a link to a directory, that directory is emptied. Does nothing if the path is too long
  // for a search pattern.
  void RemoveEntriesOf(const char* directory) {
    if (!Append(directory)) return;
    // Without FILE_FLAG_OPEN_REPARSE_POINT, since the caller named this link: it is followed.
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
    // An entry that does not fit the path, or that the system does not remove, stays; the walk goes
    // on.
    do {
      if (LeadsToItself(entry_.cFileName) && Append("\\") && Append(entry_.cFileName)) {
        RemoveEntry();  // overwrites entry_
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
    // Not held any more: that would prevent this removal. If the directory has become a link since,
    // only the link is removed.
    RemoveDirectoryA(path_);
  }

  // Removes the entries of the directory at path_, unless it has become a link since it was listed.
  void RemoveEntriesInside() {
    const FileHandle held(Hold(path_, FILE_FLAG_OPEN_REPARSE_POINT));
    if (held && IsNoLink(held.Get(), path_)) RemoveEntries();
  }

  // Returns false if the text does not fit, with path_ as before.
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

  // The results of the entries do not count: one that stays makes the removal of `path` fail.
  const bool namesDirectory = launcher::NamesDirectory(path);
  if (namesDirectory) launcher::TreeRemoval().RemoveEntriesOf(path);

  if (keepDirectory != 0) return QX_SUCCEEDED;
  return namesDirectory && RemoveDirectoryA(path) != FALSE ? QX_SUCCEEDED : QX_FAILED;
}
