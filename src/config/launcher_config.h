// The settings file, config.json.

#ifndef LAUNCHER_CONFIG_LAUNCHER_CONFIG_H_
#define LAUNCHER_CONFIG_LAUNCHER_CONFIG_H_

#include <string>

namespace launcher {

// Relative, so the file is in the current directory.
inline constexpr char kConfigPath[] = "config.json";

// The twelve settings. All are text, also those that read like truth values.
struct LauncherConfig {
#define SETTING(section, key, field, defaultText) std::string field;
#include "config/settings.inc"
};

// Reads the settings from the file at `path`. If it cannot be opened, returns the defaults, creates
// the file with them unless something exists at `path`, and prints "Created default config: PATH"
// in either case.
//
// A file that opens must hold a JSON object with all twelve settings as strings; what follows the
// object is not looked at. Otherwise throws the JSON library's exception for the first wrong
// setting. Throws std::bad_alloc if memory runs out. A file that exists is never changed.
LauncherConfig LoadLauncherConfig(const char* path);

}  // namespace launcher

#endif  // LAUNCHER_CONFIG_LAUNCHER_CONFIG_H_
