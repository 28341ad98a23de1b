// What a library's file says of itself, without loading it: a PE file's machine, exports and
// version, an ELF file's class. The file may be damaged or hostile.

#ifndef LAUNCHER_TOOLS_DOCTOR_IMAGE_FILE_H_
#define LAUNCHER_TOOLS_DOCTOR_IMAGE_FILE_H_

#include <cstdint>
#include <filesystem>
#include <map>
#include <string>

namespace launcher::doctor {

enum class ImageFormat : std::uint8_t { none, pe, elf };

struct Image {
  ImageFormat format = ImageFormat::none;
  bool isLibrary = false;
  int bits = 0;         // 32 or 64; 0 for another machine
  std::string machine;  // in words
  std::string exportName;
  std::map<std::string, std::uint32_t> exports;  // ordinals by name
  std::string version;                           // empty where there is none
  std::string fault;  // why it could not be read to the end, empty where it could
};

// Throws std::runtime_error where the file cannot be opened.
Image ReadImage(const std::filesystem::path& path);

}  // namespace launcher::doctor

#endif  // LAUNCHER_TOOLS_DOCTOR_IMAGE_FILE_H_
