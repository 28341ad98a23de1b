#include "doctor/steam_check.h"

#include <exception>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "doctor/export_list.h"
#include "doctor/library_calls.h"
#include "support/quiet_library.h"

namespace launcher::doctor {
namespace {

namespace fs = std::filesystem;

// What the library calls of Steam's.
constexpr const char* kSteamFunctions[] = {
    "SteamAPI_Init", "SteamAPI_Shutdown", "SteamAPI_IsSteamRunning",
    "SteamUser",     "SteamFriends",      "SteamAPI_RestartAppIfNecessary",
    "SteamApps",     "SteamHTTP",         "SteamRemoteStorage"};

constexpr const char* kVerify = "have Steam verify the game's files, which brings it back";

// Answers whether there is a Steam library that can be called.
bool CheckSteamFile(const fs::path& libraryFolder, Report& report) {
  const std::optional<fs::path> path = FindSteam(libraryFolder);
  if (!path) {
    report.Add(
        {"steam-library", Status::warning,
         std::string(kSteamName) + " is not to be found: everything answers as without Steam",
         "doctor does not lie in the launcher's folder, or the file is gone", kVerify});
    return false;
  }
  const std::string name = path->u8string();
  Image image;
  try {
    image = ReadImage(*path);
  } catch (const std::exception& failure) {
    image.fault = failure.what();
  }
  if (!image.fault.empty() || image.format != kMachineFormat) {
    report.Add({"steam-library", Status::broken,
                name + " is damaged or no library" +
                    (image.fault.empty() ? "" : ": " + image.fault) +
                    ". Everything answers as without Steam",
                "a download or a copy that ended early", kVerify});
    return false;
  }
  if (image.bits != kProcessBits) {
    report.Add({"steam-library", Status::broken,
                name + " is for " + image.machine + ", and this program has " +
                    std::to_string(kProcessBits) + " bits: everything answers as without Steam",
                "the library for programs of the other kind was copied, or renamed, to this place",
                kVerify});
    return false;
  }
  std::vector<std::string> missing;
  if (image.format == ImageFormat::pe) {
    for (const char* const function : kSteamFunctions) {
      if (image.exports.count(function) == 0) missing.emplace_back(function);
    }
  }
  if (!missing.empty()) {
    report.Add({"steam-library", Status::broken,
                name + " lacks " + Counted(missing.size(), "function") + ", " + missing.front() +
                    " among them",
                "a Steam library of another version", kVerify});
    return false;
  }
  report.Add({"steam-library", Status::ok,
              "found " + name + ", " + std::to_string(kProcessBits) + " bits" +
                  (image.version.empty() ? std::string() : ", version " + image.version)});
  if (libraryFolder != path->parent_path()) {
    std::error_code error;
    if (!fs::equivalent(libraryFolder, path->parent_path(), error)) {
      report.Add({"steam-place", Status::warning,
                  std::string(kSteamName) + " lies in another folder than " + kLibraryName,
                  "doctor does not lie in the launcher's folder: Steam's library is looked for "
                  "beside the program that runs",
                  "put doctor beside the launcher and start it there"});
    }
  }
  return true;
}

struct SteamAnswers {
  bool isRunning = false;
  bool isUp = false;
  bool isLoggedOn = false;
  ResultCode languageResult = QX_NO_STEAM;
  std::string language;
  std::string languages;
  bool isAccountInCloud = false;
  bool isGameInCloud = false;
};

void Ask(const LoadedLibrary& library, SteamAnswers& answers) {
  answers.isRunning = QX_IN(library, QX_SteamAPI_IsSteamRunning)() == 1;
  answers.isUp = QX_IN(library, QX_SteamAPI_Init)() == 1;
  if (!answers.isUp) return;
  answers.isLoggedOn = (QX_IN(library, QX_SteamAPI_IsLoggedOn)() & 0xFF) == 1;
  char text[1024] = "";
  answers.languageResult = QX_IN(library, QX_SteamAPI_GetCurrentGameLanguage)(text, sizeof text);
  if (answers.languageResult == QX_SUCCEEDED) answers.language = text;
  text[0] = '\0';
  QX_IN(library, QX_SteamAPI_GetAvailableGameLanguages)(text, sizeof text);
  answers.languages = text;
  answers.isAccountInCloud =
      QX_IN(library, QX_SteamAPI_RemoteStorageIsCloudEnabledForAccount)() == 1;
  answers.isGameInCloud = QX_IN(library, QX_SteamAPI_RemoteStorageIsCloudEnabledForApp)() == 1;
  QX_IN(library, QX_SteamAPI_Shutdown)();
}

void TellLanguage(const SteamAnswers& answers, Report& report) {
  if (answers.languageResult != QX_SUCCEEDED) {
    const Export& entry = *FindExport("QX_SteamAPI_GetCurrentGameLanguage");
    const ResultMeaning* const meaning = MeaningOf(entry, answers.languageResult);
    report.Add({"steam-language", Status::warning,
                "the game's language is not known: " + entry.name + " answered " +
                    std::to_string(answers.languageResult),
                meaning != nullptr ? meaning->means : std::string(),
                "choose a language in the game's properties in Steam"});
    return;
  }
  const bool isListed =
      (',' + answers.languages + ',').find(',' + answers.language + ',') != std::string::npos;
  report.Add({"steam-language", isListed ? Status::ok : Status::warning,
              "the game runs in " + answers.language + "; it has " + answers.languages,
              isListed ? "" : "the language was taken out of the game",
              isListed ? "" : "choose another one in the game's properties in Steam"});
}

void Tell(const SteamAnswers& answers, Report& report) {
  if (!answers.isRunning) {
    report.Add({"steam-client", Status::warning, "the Steam client does not run",
                "it was not started, or runs for another user of this machine",
                "start Steam and log on, as the user who starts the launcher"});
  } else {
    report.Add({"steam-client", Status::ok, "the Steam client runs"});
  }
  if (!answers.isUp) {
    report.Add({"steam-session", Status::warning, "Steam does not come up for the game",
                answers.isRunning
                    ? "the account has no licence for the game, Steam does not know which game "
                      "this is, or only one of Steam and doctor runs as administrator"
                    : "the Steam client does not run",
                answers.isRunning
                    ? "look whether the game is in the library of the account that is "
                      "logged on, and start it from there"
                    : "start Steam"});
    return;
  }
  report.Add({"steam-session", Status::ok, "Steam came up for the game"});
  if (answers.isLoggedOn) {
    report.Add({"steam-user", Status::ok, "the user is logged on"});
  } else {
    report.Add({"steam-user", Status::warning,
                "the user is not logged on: there are no tickets, and a server refuses the player",
                "Steam is in offline mode, or has no connection",
                "go online in Steam, and look at the network"});
  }
  TellLanguage(answers, report);
  if (answers.isAccountInCloud && answers.isGameInCloud) {
    report.Add({"steam-cloud", Status::ok, "the cloud is on"});
  } else {
    report.Add({"steam-cloud", Status::warning,
                std::string("the cloud is off for ") +
                    (answers.isAccountInCloud ? "the game" : "the account"),
                "switched off by the user; files stay on this machine alone",
                "switch it on in Steam's settings if it is wanted"});
  }
}

}  // namespace

void CheckSteam(const LoadedLibrary& library, Report& report) {
  if (!CheckSteamFile(library.Where().parent_path(), report)) return;
  SteamAnswers answers;
  if (RunQuietly([&] { Ask(library, answers); }) == 0) Tell(answers, report);
}

}  // namespace launcher::doctor
