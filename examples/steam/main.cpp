// What a launcher does with Steam: gets the user's name and language and a ticket, keeps files on
// this machine and in the cloud, and sends a request to the game's server.
//
//   example_steam URL
//
// Exit status: 0 if Steam did all of it, 1 if anything went wrong, 2 for a wrong call.

#include <cstdint>
#include <cstdio>
#include <cstring>
#include <string>

#include "launcher_dll.h"

namespace {

void Say(const std::string& text) {
  std::printf("steam:    %s\n", text.c_str());
  std::fflush(stdout);
}

int Fail(const char* step) {
  std::fprintf(stderr, "steam: failed: %s\n", step);
  return 1;
}

constexpr char kSaveGame[] = "level=7;coins=120";
constexpr std::uint32_t kSaveSize = sizeof kSaveGame - 1;

bool ShowUser() {
  char name[128] = "";
  char language[64] = "";
  char ticket[2049] = "";
  if (QX_SteamAPI_GetPersonaName(name, sizeof name) != QX_SUCCEEDED) return false;
  if (QX_SteamAPI_GetCurrentGameLanguage(language, sizeof language) != QX_SUCCEEDED) return false;
  const std::int32_t ticketLength = QX_SteamAPI_GetSteamAuthTicket(ticket, sizeof ticket);
  if (ticketLength <= 0) return false;

  Say(std::string("the user is ") + name + ", who plays in " + language);
  Say("an auth ticket of " + std::to_string(ticketLength) + " characters");
  return true;
}

bool KeepFileHere() {
  char path[260] = "";
  char content[kSaveSize] = {};
  if (QX_SteamAPI_CatUserFilePath(path, sizeof path, "save.txt") != QX_SUCCEEDED) return false;
  if (QX_SteamAPI_WriteFile("save.txt", kSaveGame, kSaveSize) != QX_SUCCEEDED) return false;
  if (QX_SteamAPI_ReadFile("save.txt", content, sizeof content) != QX_SUCCEEDED) return false;
  if (std::memcmp(content, kSaveGame, kSaveSize) != 0) return false;

  Say("wrote " + std::to_string(kSaveSize) +
      " bytes to the user's folder and read them back: " + path);
  return true;
}

bool KeepFileInTheCloud() {
  char content[kSaveSize] = {};
  constexpr auto kSize = static_cast<std::int32_t>(kSaveSize);
  if (QX_SteamAPI_RemoteStorageFileWrite("save.txt", kSaveGame, kSize) != 0) return false;
  if (QX_SteamAPI_RemoteStorageFileRead("save.txt", content, kSize) != kSize) return false;
  if (std::memcmp(content, kSaveGame, kSaveSize) != 0) return false;

  Say("the same in the cloud, which has " +
      std::to_string(QX_SteamAPI_RemoteStorageGetFileCount()) + " file");
  return true;
}

}  // namespace

int main(int argumentCount, char** arguments) {
  if (argumentCount != 2) {
    std::fprintf(stderr, "usage: example_steam URL\n");
    return 2;
  }
  if (QX_SteamAPI_Init() != 1) return Fail("starting Steam");
  if (!ShowUser()) return Fail("asking for the user");
  if (!KeepFileHere()) return Fail("keeping a file in the user's folder");
  if (!KeepFileInTheCloud()) return Fail("keeping a file in the cloud");

  Say(std::string("asking ") + arguments[1]);
  constexpr std::int32_t kGet = 1;
  if (QX_SteamAPI_HTTPRequest(arguments[1], kGet, nullptr, nullptr, 0) != QX_SUCCEEDED) {
    return Fail("sending a request");
  }
  QX_SteamAPI_Shutdown();
  return 0;
}
