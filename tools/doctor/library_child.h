// The process that loads the library. A damaged library can crash it and not doctor itself.
//
// It runs in a folder of its own, with the settings file that it is to try. It writes to
// kReplyFile a line of JSON for each finding and one for the settings; the library prints other
// lines in between.

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

// Its parts: calls whose results are known; and Steam, without asking who the user is.
void CheckKnownResults(const LoadedLibrary& library, Report& report);
void CheckSteam(const LoadedLibrary& library, const std::filesystem::path& libraryFolder,
                Report& report);

}  // namespace launcher::doctor

#endif  // LAUNCHER_TOOLS_DOCTOR_LIBRARY_CHILD_H_
