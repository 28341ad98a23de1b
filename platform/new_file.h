// Files that appear under their name completely or not at all.

#ifndef LAUNCHER_PLATFORM_NEW_FILE_H_
#define LAUNCHER_PLATFORM_NEW_FILE_H_

#include <cstddef>
#include <cstdint>
#include <string>

namespace launcher {

// The system's number for what went wrong: errno on Linux, GetLastError() on Windows. 0 is success.
using SystemError = int;

// True if the error means that something of that name exists.
bool MeansThatItExists(SystemError error);

// A path in the form that the system takes without loss.
#if defined(_WIN32)
// A type of its own, since std::wstring would link all of its code from the runtime's library: 38
// KB of the DLL.
struct SystemPathTraits : std::char_traits<wchar_t> {};
using SystemPath = std::basic_string<wchar_t, SystemPathTraits>;
#else
using SystemPath = std::string;
#endif

// Converts a path in the encoding of the system's narrow functions: the ANSI code page on Windows,
// bytes on Linux. Returns an empty path if the text is not valid in that encoding.
SystemPath SystemPathOf(const char* path);

// A file that is written under a temporary name and then gets its own name in one step. A program
// that opens that name meanwhile finds what was there before, or the complete new file.
//
// If the process is killed, the temporary file can stay. Windows removes it if the file system
// supports that and the process was not inside MoveTo. The file also stays if the directory permits
// neither renaming nor deleting. Call Create or CreateBeside first; all functions except Abandon
// and Temporary need its file.
class NewFile {
 public:
  NewFile() = default;
  NewFile(const NewFile&) = delete;
  NewFile& operator=(const NewFile&) = delete;
  // Removes the temporary file, unless MoveTo succeeded.
  ~NewFile() { Abandon(); }

  // Creates the file under the name `temporary`, which can be its final name if the file system
  // permits no renaming. Fails if anything has that name, even a link that leads nowhere. First
  // removes the file of an earlier call. On Windows nobody else can open the file before MoveTo.
  SystemError Create(const SystemPath& temporary);

  // Creates the file in the directory of `place`, under the first free name of the form
  // ".123abc.new". That is 11 characters, no more than "config.json" has, so a path that fits for
  // the one fits for the other.
  SystemError CreateBeside(const SystemPath& place);

  // Writes all `size` bytes, with one call of the system if it takes them all. After a failure the
  // file holds an unknown part of them.
  SystemError Write(const void* data, std::size_t size);

  // As Write, but with the line ends of the system's text files instead of "\n".
  SystemError WriteText(const std::string& text);

  // Returns when the disk has what was written, so that after MoveTo a loss of power cannot leave
  // an empty file. MoveTo then makes the new name durable too.
  SystemError Flush();

  enum class Existing : std::uint8_t { kStays, kReplaced, kReplacedWithOwnMode };

  // Closes the file and gives it the name `place`, in the same file system. With kStays this
  // fails if anything has that name, even if it appears at the same moment. With kReplaced it
  // replaces a file, and on Linux takes over that file's permissions; with kReplacedWithOwnMode the
  // new file keeps its own.
  SystemError MoveTo(const SystemPath& place, Existing existing);

  // Closes and removes the file, if there is one.
  void Abandon();

  // Empty if there is no temporary file.
  const SystemPath& Temporary() const { return temporary_; }

 private:
  static constexpr std::intptr_t kNone = -1;

  std::intptr_t handle_ = kNone;  // a HANDLE on Windows, a descriptor on Linux
  SystemPath temporary_;
  bool isFlushed_ = false;
  bool goesOnClose_ = false;  // Windows: the system removes the file if the process is killed
};

}  // namespace launcher

#endif  // LAUNCHER_PLATFORM_NEW_FILE_H_
