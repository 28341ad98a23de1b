// What differs between systems: finding and loading libraries, the terminal, the user's folders.

#ifndef LAUNCHER_TOOLS_DOCTOR_MACHINE_H_
#define LAUNCHER_TOOLS_DOCTOR_MACHINE_H_

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace launcher::doctor {

extern const char* const kLibraryName;
extern const char* const kSteamName;
extern const bool kIsWindows;

// The arguments in UTF-8.
std::vector<std::string> Arguments(int count, char** arguments);

std::filesystem::path ProgramFolder();

// The file that the system would load by the name kLibraryName; nothing if there is none.
std::optional<std::filesystem::path> FindLibrary();

// The file that the library in `libraryFolder` would load as Steam's.
std::optional<std::filesystem::path> FindSteam(const std::filesystem::path& libraryFolder);

// A library file as it is without being loaded.
struct Image {
  std::string fault = {};  // why this is no library of ours, after its name; empty if it may be one
  std::string version = {};
  bool isForThisSystem = true;
  bool isUnversioned = false;     // libraries of this kind have no version
  bool hasWrongChecksum = false;  // in its header
};
Image ExamineImage(const std::filesystem::path& path, const std::string& bytes);

// A library that stays loaded as long as the process runs.
class LoadedLibrary {
 public:
  // Writes the reason to `error` if the library cannot be loaded.
  static std::optional<LoadedLibrary> Load(const std::filesystem::path& path, std::string& error);

  // Both return null if there is no such export.
  void* Find(const std::string& name) const;
  void* FindOrdinal(std::uint32_t ordinal) const;

 private:
  explicit LoadedLibrary(void* handle) : handle_(handle) {}
  void* handle_;
};

// Returns the exit status: not 0 if the program crashed or could not be started.
int RunThisProgram(const std::vector<std::string>& arguments);

// True if a path is the same after it was text in the system's ANSI code page.
bool SurvivesCodePage(const std::filesystem::path& path);

// The parts of a path that show who the user is, and what replaces them.
struct UserTraces {
  std::string folder;
  std::string folderSign;
  std::string name;
  std::string nameSign;
};
UserTraces ThisUser();

// Makes a terminal show UTF-8 as long as the process runs.
void ShowUtf8();

// If the program was started by a double click, waits for a key before the window closes.
void WaitForKeyAfterDoubleClick();

// A path as the system's narrow functions take it.
std::string NarrowPath(const std::filesystem::path& path);

std::string SystemName();

}  // namespace launcher::doctor

#endif  // LAUNCHER_TOOLS_DOCTOR_MACHINE_H_
