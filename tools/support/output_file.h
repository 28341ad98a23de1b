// What a program writes: files that appear whole or not at all, devices and pipes.

#ifndef LAUNCHER_TOOLS_SUPPORT_OUTPUT_FILE_H_
#define LAUNCHER_TOOLS_SUPPORT_OUTPUT_FILE_H_

#include <cstddef>
#include <cstdint>
#include <string>

#include "platform/new_file.h"

namespace launcher {

// Paths are 8-bit text in the encoding of the system's narrow functions: bytes on Linux, the ANSI
// code page on Windows.

// The system's words for an error, without a line end or a full stop.
std::string SystemErrorText(SystemError error);

// True if the error says that the disk, or this user's share of it, is full.
bool MeansThatTheDiskIsFull(SystemError error);

// True if an OutputFile of this path would have to replace a file. A device is none.
bool HasFileAt(const std::string& path);

// Creates a directory. One that exists is no error.
SystemError MakeDirectory(const std::string& path);

// A path's last part, and a path put together.
std::string FileNameOf(const std::string& path);
std::string PathIn(const std::string& directory, const std::string& name);

// A NewFile at a path, or a device or a pipe, which is written to directly.
class OutputFile {
 public:
  OutputFile() = default;
  OutputFile(const OutputFile&) = delete;
  OutputFile& operator=(const OutputFile&) = delete;
  // Removes what is not committed.
  ~OutputFile() { Abandon(); }

  SystemError Open(const std::string& path);

  SystemError Write(const void* data, std::size_t size);

  // Gives the file its name. With kReplaced, if the path is a link to a file, that file is the one
  // replaced. `isSafe` flushes the file to the disk first, against a loss of power.
  SystemError Commit(NewFile::Existing existing, bool isSafe = false);

  void Abandon();

 private:
  // Opens what is at `path` if it is a device or a pipe; else leaves `device` at -1.
  static SystemError OpenDevice(const std::string& path, std::intptr_t* device);
  static SystemError WriteToDevice(std::intptr_t device, const void* data, std::size_t size);
  static SystemError CloseDevice(std::intptr_t device);
  // The file that `path` leads to, if it is a link to one.
  static std::string ResolvedPath(const std::string& path);

  static constexpr std::intptr_t kNone = -1;

  NewFile file_;
  std::intptr_t device_ = kNone;
  SystemPath place_;
};

// Creates the file with these bytes.
SystemError WriteOutputFile(const std::string& path, const std::string& bytes,
                            NewFile::Existing existing, bool isSafe = false);

// Removes every temporary file that is left, for a process about to end with threads at work.
void AbandonOutputFiles();

}  // namespace launcher

#endif  // LAUNCHER_TOOLS_SUPPORT_OUTPUT_FILE_H_
