// What differs from system to system: how libraries are found and loaded, and what the terminal
// and the user's folders are.

#ifndef LAUNCHER_TOOLS_DOCTOR_MACHINE_H_
#define LAUNCHER_TOOLS_DOCTOR_MACHINE_H_

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "doctor/image_file.h"

namespace launcher::doctor {

// The file names of the library and of Steam's, and what a library must be to be loaded here.
extern const char* const kLibraryName;
extern const char* const kSteamName;
extern const ImageFormat kMachineFormat;
constexpr int kProcessBits = static_cast<int>(sizeof(void*)) * 8;

// Whether exports go by the names of the 32-bit standard call, and have ordinals.
extern const bool kNamesAreDecorated;

// Whether a text file ends at its first control-Z.
extern const bool kTextEndsAtControlZ;

// Whether this system comes with Direct3D 9, and has an ANSI code page.
extern const bool kIsWindows;

// The arguments in UTF-8.
std::vector<std::string> Arguments(int count, char** arguments);

std::filesystem::path ProgramFolder();

// The file that the system would load by the name kLibraryName; nothing where there is none.
std::optional<std::filesystem::path> FindLibrary();

// The file that the library in `libraryFolder` would load as Steam's.
std::optional<std::filesystem::path> FindSteam(const std::filesystem::path& libraryFolder);

// A library that is loaded, for as long as the process runs.
class LoadedLibrary {
 public:
  // Answers why not in `error` where the library cannot be loaded.
  static std::optional<LoadedLibrary> Load(const std::filesystem::path& path, std::string& error);

  void* Find(const std::string& name) const;

  // Where the system says that it found the library.
  std::filesystem::path Where() const;

 private:
  explicit LoadedLibrary(void* handle) : handle_(handle) {}
  void* handle_;
};

enum class CodePageAnswer : std::uint8_t { survives, doesNot, noQuestion };

// Whether a path is the same after it was text in the system's ANSI code page.
CodePageAnswer SurvivesCodePage(const std::filesystem::path& path);

// The parts of a path that tell who the user is, and what stands in their place.
struct UserTraces {
  std::string folder;
  std::string folderSign;
  std::string name;
  std::string nameSign;
};
UserTraces ThisUser();

// Has a terminal show UTF-8 for as long as the process runs.
void ShowUtf8();

// A path as the system's plain functions take it.
std::string NarrowPath(const std::filesystem::path& path);

std::string SystemName();

}  // namespace launcher::doctor

#endif  // LAUNCHER_TOOLS_DOCTOR_MACHINE_H_
