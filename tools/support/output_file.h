// Output files, which appear whole or not at all, and output to devices and pipes.

#ifndef LAUNCHER_TOOLS_SUPPORT_OUTPUT_FILE_H_
#define LAUNCHER_TOOLS_SUPPORT_OUTPUT_FILE_H_

#include <cstddef>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>

#include "platform/new_file.h"

namespace launcher {

// Paths are 8-bit text in the encoding of the system's narrow functions: bytes on Linux, the ANSI
// code page on Windows.
std::filesystem::path PathOf(const std::string& text);
std::string NarrowText(const std::filesystem::path& path);

// The system's message for an error, without a line end or a full stop.
std::string SystemErrorText(SystemError error);

// The reason why the last function of <cstdio> failed in this thread.
SystemError LastFileError();

bool MeansFullDisk(SystemError error);
bool MeansNoReader(SystemError error);

// True for a device or a pipe, which is written to directly.
bool IsDevice(const std::string& path);

// True if an OutputFile of this path would have to replace something.
bool HasFileAt(const std::string& path);

// True for a symbolic link, and on Windows for a junction.
bool IsLink(const std::filesystem::path& path);

struct CloseFile {
  void operator()(std::FILE* file) const { std::fclose(file); }
};
using OwnedStream = std::unique_ptr<std::FILE, CloseFile>;

// Writes all bytes and flushes the stream's buffer.
SystemError WriteToStream(std::FILE* stream, const void* data, std::size_t size);

// A NewFile at a path, or a device or a pipe, which is written to directly.
class OutputFile {
 public:
  OutputFile() = default;
  OutputFile(const OutputFile&) = delete;
  OutputFile& operator=(const OutputFile&) = delete;
  // Removes what is not committed.
  ~OutputFile() { Abandon(); }

  SystemError Open(const std::string& path);

  // Takes over the permissions and the modification time of `source`, if that is a file. Call it
  // before Write, so that nobody can read more than the source permits.
  void TakeAfter(const std::filesystem::path& source);

  SystemError Write(const void* data, std::size_t size);

  // Gives the file its name. With kReplaced, if the path is a link to a file, that file is the one
  // replaced. `isSafe` flushes the file to the disk first, against a loss of power.
  SystemError Commit(NewFile::Existing existing, bool isSafe = false);

  void Abandon();

 private:
  NewFile file_;
  OwnedStream device_;
  SystemPath place_;
  std::optional<std::filesystem::file_time_type> time_;
};

// Creates the file with these bytes.
SystemError WriteOutputFile(const std::string& path, const std::string& bytes,
                            NewFile::Existing existing);

// Removes all temporary files, for a process that ends while its threads still run.
void AbandonOutputFiles();

}  // namespace launcher

#endif  // LAUNCHER_TOOLS_SUPPORT_OUTPUT_FILE_H_
