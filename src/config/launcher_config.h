// The settings file, config.json.

#ifndef LAUNCHER_CONFIG_LAUNCHER_CONFIG_H_
#define LAUNCHER_CONFIG_LAUNCHER_CONFIG_H_

#include <string>

namespace launcher {

inline constexpr char kConfigPath[] = "config.json";

// The twelve settings. All are text, those that read like truth values too.
struct LauncherConfig {
  std::string apiServer;
  std::string orvaneServer;
  std::string purchaseServer;
  std::string telemetryServer;
  std::string downloadUrl;
  std::string orvaneQaApiUrl;
  std::string orvaneCiApiUrl;
  std::string gameUrl;
  std::string gameVersion;
  std::string sslCheck;
  std::string isStaging;
  std::string isShipping;
};

// Reads the settings from the file at `path`. Where it cannot be opened the defaults serve: they
// are written to `path` unless something is there, and the line "Created default config: PATH" is
// printed either way.
//
// A file that opens must hold a JSON object with all twelve settings as strings; what follows the
// object is not looked at. Throws the JSON library's exception where it does not, for the first
// setting that is wrong, and std::bad_alloc. The file is then left as it is.
LauncherConfig LoadLauncherConfig(const char* path);

}  // namespace launcher

#endif  // LAUNCHER_CONFIG_LAUNCHER_CONFIG_H_
