// Steam: its library, its client, the user's session.

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "doctor/checkup.h"
#include "doctor/export_list.h"
#include "doctor/library_child.h"
#include "launcher_dll.h"

namespace launcher::doctor {
namespace {

namespace fs = std::filesystem;

// The functions that LauncherDll calls in Steam's library.
constexpr const char* kSteamFunctions[] = {
    "SteamAPI_Init", "SteamAPI_Shutdown", "SteamAPI_IsSteamRunning",
    "SteamUser",     "SteamFriends",      "SteamAPI_RestartAppIfNecessary",
    "SteamApps",     "SteamHTTP",         "SteamRemoteStorage"};

// The stand-in for development reads an environment variable of this name. On Windows its file has
// the name in UTF-16.
bool IsStandIn(const fs::path& path) {
  const std::string name = "STEAM_STAND_IN";
  std::string wide;
  for (const char c : name) wide += {c, '\0'};
  const std::string bytes = ReadBytes(path, kLargestLibrary);
  return bytes.find(name) != std::string::npos || bytes.find(wide) != std::string::npos;
}

// Returns true if there is a Steam library that can be called.
bool CheckSteamFile(const fs::path& libraryFolder, Report& report) {
  const std::optional<fs::path> path = FindSteam(libraryFolder);
  if (!path) {
    report.Add("steam-library.missing", {kSteamName});
    return false;
  }
  const std::string name = path->u8string();
  std::string error;
  const std::optional<LoadedLibrary> steam = Load(*path, error);
  if (!steam) {
    report.Add("steam-library.refused", {name, error});
    return false;
  }
  std::vector<std::string> missing;
  for (const char* const function : kSteamFunctions) {
    if (steam->Find(function) == nullptr) missing.emplace_back(function);
  }
  if (!missing.empty()) {
    report.Add("steam-library.lacks", {name, Listed(missing)});
    return false;
  }
  report.Add("steam-library.found", {name});
  if (IsStandIn(*path)) report.Add("steam-stand-in", {name});
  return true;
}

void CheckLanguage(const LoadedLibrary& library, Report& report) {
  char text[1024] = "";
  const ResultCode result = QX_IN(library, QX_SteamAPI_GetCurrentGameLanguage)(text, sizeof text);
  const std::string language = text;
  text[0] = '\0';
  QX_IN(library, QX_SteamAPI_GetAvailableGameLanguages)(text, sizeof text);
  const std::string languages = text;
  const bool isListed = (',' + languages + ',').find(',' + language + ',') != std::string::npos;
  report.Add(result != QX_SUCCEEDED ? "steam-language.unknown"
             : isListed             ? "steam-language.fine"
                                    : "steam-language.gone",
             {language, languages, std::to_string(result)});
}

void CheckSession(const LoadedLibrary& library, Report& report) {
  const bool isLoggedOn = (QX_IN(library, QX_SteamAPI_IsLoggedOn)() & 0xFF) == 1;
  report.Add(isLoggedOn ? "steam-user.on" : "steam-user.off");
  CheckLanguage(library, report);
  const bool isOnForAccount =
      QX_IN(library, QX_SteamAPI_RemoteStorageIsCloudEnabledForAccount)() == 1;
  const bool isOn =
      isOnForAccount && QX_IN(library, QX_SteamAPI_RemoteStorageIsCloudEnabledForApp)() == 1;
  report.Add(isOn ? "steam-cloud.on" : "steam-cloud.off",
             {isOnForAccount ? "the game" : "the account"});
}

}  // namespace

void CheckSteam(const LoadedLibrary& library, const fs::path& libraryFolder, Report& report) {
  if (!CheckSteamFile(libraryFolder, report)) return;
  const bool isRunning = QX_IN(library, QX_SteamAPI_IsSteamRunning)() == 1;
  report.Add(isRunning ? "steam-client.on" : "steam-client.off");
  if (!isRunning) return;
  const bool isOpen = QX_IN(library, QX_SteamAPI_Init)() == 1;
  report.Add(isOpen ? "steam-session.open" : "steam-session.refused");
  if (!isOpen) return;
  CheckSession(library, report);
  QX_IN(library, QX_SteamAPI_Shutdown)();
}

}  // namespace launcher::doctor
