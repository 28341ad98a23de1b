// The stand-in's settings: the account, its languages, what Steam reports, and limits.

#ifndef LAUNCHER_STEAM_STAND_IN_STEAM_SETTINGS_H_
#define LAUNCHER_STEAM_STAND_IN_STEAM_SETTINGS_H_

#include <cstdint>
#include <filesystem>
#include <stdexcept>
#include <string>

namespace launcher::stand_in {

constexpr std::uint64_t kMebibyte = std::uint64_t{1} << 20;

struct SteamSettings {
  // The highest possible id of an individual account: probably no real user has it.
  std::uint64_t accountId = 0x01100001FFFFFFFF;
  std::string personaName = "Player";
  std::string currentLanguage = "english";
  std::string availableLanguages = "english";
  bool running = true;
  bool startedBySteam = true;
  bool subscribed = true;
  bool loggedOn = true;
  bool cloudEnabledForAccount = true;
  bool cloudEnabledForApp = true;
  std::uint64_t quotaBytes = 100 * kMebibyte;
  std::uint64_t httpConnectLimitMs = 10'000;
  std::uint64_t httpRequestLimitMs = 60'000;
  std::uint64_t httpBodyLimitBytes = 16 * kMebibyte;
};

// Its text says in one line what is wrong with a settings file.
class SteamSettingsError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// Reads the settings file in `folder`. Returns the defaults if there is no file. Throws
// SteamSettingsError if the file is wrong.
SteamSettings LoadSteamSettings(const std::filesystem::path& folder);

}  // namespace launcher::stand_in

#endif  // LAUNCHER_STEAM_STAND_IN_STEAM_SETTINGS_H_
