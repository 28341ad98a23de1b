// The process that loads the library, so that a damaged library cannot crash doctor itself.
//
// It runs in its own folder, which has the settings file to try. It writes to kReplyFile a line of
// JSON for each finding and one for the settings. The library prints other lines between them.

#ifndef LAUNCHER_TOOLS_DOCTOR_LIBRARY_CHILD_H_
#define LAUNCHER_TOOLS_DOCTOR_LIBRARY_CHILD_H_

#include <filesystem>
#include <string>

#include "doctor/finding.h"
#include "doctor/machine.h"

namespace launcher::doctor {

constexpr const char* kChildArgument = "--library-child";
constexpr const char* kSettingsMode = "settings";
constexpr const char* kEverythingMode = "everything";
constexpr const char* kReplyFile = "reply.txt";
constexpr std::size_t kLargestLibrary = std::size_t{1} << 28;

// Returns the exit status.
int RunLibraryChild(const std::string& mode, const std::string& library);

// Parts of the child's work: calls whose results are known, and Steam, but not the user's identity.
void CheckKnownResults(const LoadedLibrary& library, Report& report);
void CheckSteam(const LoadedLibrary& library, const std::filesystem::path& libraryFolder,
                Report& report);

}  // namespace launcher::doctor

#endif  // LAUNCHER_TOOLS_DOCTOR_LIBRARY_CHILD_H_
