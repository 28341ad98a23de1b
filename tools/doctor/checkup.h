// The check-up of the library, the settings, Steam, the display and the folders.

#ifndef LAUNCHER_TOOLS_DOCTOR_CHECKUP_H_
#define LAUNCHER_TOOLS_DOCTOR_CHECKUP_H_

#include <filesystem>
#include <optional>
#include <string>

#include "doctor/config_file.h"
#include "doctor/finding.h"

namespace launcher::doctor {

struct Subject {
  std::filesystem::path library;  // empty: the one that the system finds
  std::filesystem::path config = "config.json";
};

// Returns the content of a file. Throws std::runtime_error with the reason if the file cannot be
// read or is larger than `limit`.
std::string ReadBytes(const std::filesystem::path& path, std::size_t limit);

// The settings file's bytes; nothing, with a finding, if it cannot be read or does not exist.
std::optional<std::string> ReadConfig(const Subject& subject, Report& report);

struct LibraryReply {
  std::optional<bool> loads;  // true if the settings load; nothing if the library cannot be used
  std::string config;         // the settings file that the library left in its folder
};

// Adds the findings of a child process that loads the library. `config` is the settings file that
// it gets; if there is none, the library writes one with the defaults.
LibraryReply AskLibrary(const Subject& subject, const char* mode,
                        const std::optional<std::string>& config, Report& report);

void CheckConfig(const Subject& subject, Report& report);

void CheckAll(const Subject& subject, Report& report);

}  // namespace launcher::doctor

#endif  // LAUNCHER_TOOLS_DOCTOR_CHECKUP_H_
