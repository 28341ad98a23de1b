// A whole file in memory.

#ifndef LAUNCHER_TOOLS_DOCTOR_FILE_BYTES_H_
#define LAUNCHER_TOOLS_DOCTOR_FILE_BYTES_H_

#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>

namespace launcher::doctor {

// Throws std::runtime_error, with a sentence, for a file that cannot be read or is larger than
// `limit`.
inline std::string ReadBytes(const std::filesystem::path& path, std::size_t limit) {
  if (std::filesystem::is_directory(path)) throw std::runtime_error("it is a folder");
  std::ifstream file(path, std::ios::binary);
  if (!file) throw std::runtime_error("it cannot be opened");
  std::string bytes;
  char piece[65536];
  while (file.read(piece, sizeof piece) || file.gcount() > 0) {
    bytes.append(piece, static_cast<std::size_t>(file.gcount()));
    if (bytes.size() > limit) throw std::runtime_error("it is larger than any such file");
  }
  if (file.bad()) throw std::runtime_error("it cannot be read to its end");
  return bytes;
}

}  // namespace launcher::doctor

#endif  // LAUNCHER_TOOLS_DOCTOR_FILE_BYTES_H_
