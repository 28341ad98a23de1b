// What differs between systems: finding and loading libraries, the terminal, the user's folders.

#ifndef LAUNCHER_TOOLS_DOCTOR_MACHINE_H_
#define LAUNCHER_TOOLS_DOCTOR_MACHINE_H_

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace launcher::doctor {

extern const char* const kLibraryName;
extern const char* const kSteamName;
extern const bool kIsWindows;

// The arguments in UTF-8.
std::vector<std::string> Arguments(int count, char** arguments);

// The file that the system would load by the name kLibraryName; nothing if there is none.
std::optional<std::filesystem::path> FindLibrary();

// The file that the library in `libraryFolder` would load as Steam's.
std::optional<std::filesystem::path> FindSteam(const std::filesystem::path& libraryFolder);

// What is wrong with a library file that is not loaded, as the key of a finding; empty if it may be
// loaded. Writes its version, if it has one.
std::string ExamineFile(const std::filesystem::path& path, const std::string& bytes,
                        std::string& version);

// A library that stays loaded until the process ends.
struct LoadedLibrary {
  // Both return null if there is no such export.
  void* Find(const std::string& name) const;
  void* FindOrdinal(std::uint32_t ordinal) const;

  void* handle;
};

// Writes the reason to `error` if the library cannot be loaded.
std::optional<LoadedLibrary> Load(const std::filesystem::path& path, std::string& error);

// Returns the exit status: not 0 if the program crashed or could not be started.
int RunThisProgram(const std::vector<std::string>& arguments);

// True if a path can be converted to the system's ANSI code page and back without a change.
bool SurvivesCodePage(const std::filesystem::path& path);

// The user's folder, without a separator at its end, and the user's name.
std::pair<std::string, std::string> ThisUser();

// Makes a terminal show UTF-8 as long as the process runs.
void ShowUtf8();

// If the program was started by a double click, waits for a key before the window closes.
void WaitForKeyAfterDoubleClick();

// A path as the system's narrow functions take it.
std::string NarrowPath(const std::filesystem::path& path);

std::string SystemName();

}  // namespace launcher::doctor

#endif  // LAUNCHER_TOOLS_DOCTOR_MACHINE_H_
