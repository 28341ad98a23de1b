// The check-up: the library, the settings, Steam, the display and the folders, each with what is
// known of it.

#ifndef LAUNCHER_TOOLS_DOCTOR_CHECKUP_H_
#define LAUNCHER_TOOLS_DOCTOR_CHECKUP_H_

#include <filesystem>
#include <optional>
#include <string>

#include "doctor/config_file.h"
#include "doctor/finding.h"
#include "doctor/machine.h"

namespace launcher::doctor {

struct Subject {
  std::filesystem::path library;  // empty: the one that the system finds
  std::filesystem::path config = "config.json";
};

// Looks for the library, examines its file and, where that shows nothing against it, loads it.
std::optional<LoadedLibrary> OpenLibrary(const Subject& subject, Report& report);

// The settings file's bytes; nothing where there is none, or none that can be read, which is told.
std::optional<std::string> ReadSettings(const Subject& subject, Report& report);

// What the library says of a settings file with these bytes.
std::optional<LibraryVerdict> AskLibrary(const LoadedLibrary& library, const std::string& bytes);

// The file that the library writes where there is none.
std::optional<std::string> AskDefaults(const LoadedLibrary& library);

void CheckConfig(const Subject& subject, const std::optional<LoadedLibrary>& library,
                 Report& report);

void CheckAll(const Subject& subject, Report& report);

}  // namespace launcher::doctor

#endif  // LAUNCHER_TOOLS_DOCTOR_CHECKUP_H_
