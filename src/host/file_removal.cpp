// QX_RemoveFile and QX_RemoveDirectory.
//
// Whatever lies in a tree, nothing outside it is removed: a link in it goes and is not followed,
// and an entry whose path would lead elsewhere stays.

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

// Whether there is a directory to list. Behind an empty path, or a drive's name alone, the search
// pattern would mean the drive's root.
bool NamesDirectory(const char* path) {
  const std::size_t length = std::strlen(path);
  return length != 0 && path[length - 1] != ':';
}

bool HasSeparator(const char* name) {
  for (; *name != '\0'; ++name) {
    if (*name == '\\' || *name == '/') return true;
    // In East Asian code pages the second byte of a character can be that of a backslash, never
    // that of a slash.
    const bool isLeadByte = IsDBCSLeadByte(static_cast<BYTE>(*name)) != FALSE;
    if (isLeadByte && name[1] != '\0' && name[1] != '/') ++name;
  }
  return false;
}

// Whether a name behind its directory's path leads to its own entry. Windows drops dots and blanks
// at the end of a name, and one from another system can hold separators, or get them where it is
// put into the code page. "." and ".." are among those that do not.
bool LeadsToItself(const char* name) {
  const std::size_t length = std::strlen(name);
  if (length == 0) return false;
  const char last = name[length - 1];
  return last != '.' && last != ' ' && !HasSeparator(name);
}

// Asked by the path that is about to be listed: a name in the code page can belong to another entry
// than the one that was found. Where the path gives no answer here, it gives no listing either.
bool IsLink(const char* path) {
  const DWORD attributes = GetFileAttributesA(path);
  return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0;
}

// A walk through a tree, from the directory that it starts with. Path and entry exist once for all
// levels, so that a level takes a few words of the stack; there are at most 128 levels, since each
// takes two characters of the path.
class TreeRemoval {
 public:
  // Removes what is in a directory. What resists stays. Nothing happens where the path is too long
  // for a search pattern.
  void RemoveEntriesOf(const char* directory) {
    if (Append(directory)) RemoveEntries();
  }

 private:
  // Those of the directory at path_.
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

  // The entry at path_.
  void RemoveEntry() {
    if ((entry_.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) == 0) {
      DeleteFileA(path_);
      return;
    }
    const bool isLink =
        (entry_.dwFileAttributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0 || IsLink(path_);
    if (!isLink) RemoveEntries();
    RemoveDirectoryA(path_);
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
