// Files that appear whole or not at all.

#ifndef LAUNCHER_TOOLS_SUPPORT_NEW_FILE_H_
#define LAUNCHER_TOOLS_SUPPORT_NEW_FILE_H_

#include <cstddef>
#include <cstdint>
#include <string>

namespace launcher {

// What went wrong, by the system's number for it (errno, GetLastError); 0 is nothing. Paths are
// 8-bit text as the system's plain functions take it: bytes on Linux, the ANSI code page on
// Windows.
using SystemError = int;

// The system's words for it, without a line end or a full stop.
std::string SystemErrorText(SystemError error);

// Whether it says that there is a file of that name.
bool MeansThatItExists(SystemError error);

// Whether it says that the disk, or what this user may have of it, is full.
bool MeansThatTheDiskIsFull(SystemError error);

// Whether a file is there that a NewFile of this path would have to replace. A device is none.
bool HasFileAt(const std::string& path);

// Makes a directory. One that is there already is no error.
SystemError MakeDirectory(const std::string& path);

// A path's last part, and a path put together.
std::string FileNameOf(const std::string& path);
std::string PathIn(const std::string& directory, const std::string& name);

// A file that is written out of sight, beside the place where it will be, and comes there in one
// step. What is at the place stays until then, and stays for good where anything fails. A process
// that is killed leaves nothing where the system has files without a name, else a ".new-*.tmp".
//
// A device or a pipe has no place to move to and is written to directly.
class NewFile {
 public:
  NewFile() = default;
  NewFile(const NewFile&) = delete;
  NewFile& operator=(const NewFile&) = delete;
  // Removes what is not committed.
  ~NewFile() { Abandon(); }

  SystemError Open(const std::string& path);

  SystemError Write(const void* data, std::size_t size);

  enum class Existing { kStays, kReplaced };

  // Moves the file to its place. With kStays a file that is there makes that fail, even if it
  // appears at the same moment. With kReplaced the new file gets the old one's permissions, and
  // where a link leads to a file, that file is the one replaced. `isSafe` has the disk hold the
  // content first, against a loss of power.
  SystemError Commit(Existing existing, bool isSafe = false);

  void Abandon();

 private:
  std::intptr_t handle_ = -1;
  bool isDirect_ = false;
  std::string place_;
  std::string temporary_;  // empty while the file has no name
};

// Makes the file with these bytes at one go.
SystemError WriteNewFile(const std::string& path, const std::string& bytes,
                         NewFile::Existing existing, bool isSafe = false);

// Removes every temporary that is left, for a process about to end with threads at work.
void AbandonNewFiles();

}  // namespace launcher

#endif  // LAUNCHER_TOOLS_SUPPORT_NEW_FILE_H_
