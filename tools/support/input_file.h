// Files that are read from their beginning to their end.

#ifndef LAUNCHER_TOOLS_SUPPORT_INPUT_FILE_H_
#define LAUNCHER_TOOLS_SUPPORT_INPUT_FILE_H_

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

#include "support/output_file.h"

namespace launcher {

class InputFile {
 public:
  InputFile() = default;
  InputFile(const InputFile&) = delete;
  InputFile& operator=(const InputFile&) = delete;
  ~InputFile();

  SystemError Open(const std::string& path);

  // The standard input, which stays open afterwards.
  void OpenStandardInput();

  bool IsDirectory() const;

  // The size it had when asked; nothing for a pipe or a device.
  std::optional<std::uint64_t> Size() const;

  // Reads up to `size` bytes, and 0 at the end of the file alone.
  SystemError Read(void* data, std::size_t size, std::size_t* readSize);

 private:
  std::intptr_t handle_ = -1;
  bool isOwned_ = false;
};

// The size of the file there; nothing for a pipe, which opening would disturb, or where none is.
std::optional<std::uint64_t> SizeOfFileAt(const std::string& path);

// Writes all of it to the standard output, past <stdio.h>.
SystemError WriteToStandardOutput(const void* data, std::size_t size);

}  // namespace launcher

#endif  // LAUNCHER_TOOLS_SUPPORT_INPUT_FILE_H_
