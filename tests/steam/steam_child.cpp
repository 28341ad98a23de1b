// Exit code 0 where everything answers as without Steam, 1 where Steam is there, 2 where some
// answers fit neither.

#include <cstdint>

#include "launcher_dll.h"

int main() {
  char text[8] = "before";
  const bool answers[] = {
      QX_SteamAPI_Init() == 1,
      QX_SteamAPI_IsSteamRunning() == 1,
      QX_SteamAPI_RestartAppIfNecessary(1) == QX_SUCCEEDED,
      QX_SteamAPI_IsLoggedOn() == 1,
      QX_SteamAPI_GetSteamAuthTicket(text, sizeof text) != QX_FAILED,
      QX_SteamAPI_GetAvailableGameLanguages(text, sizeof text) != QX_NO_STEAM,
      QX_SteamAPI_GetUserDataFolder(text, sizeof text) != QX_NO_STEAM,
      QX_SteamAPI_RemoteStorageGetFileCount() != QX_FAILED,
      QX_SteamAPI_RemoteStorageSetCloudEnabledForApp(1) == 0,
      QX_SteamAPI_HTTPRequest(nullptr, 1, nullptr, nullptr, 0) != QX_NO_STEAM,
  };
  QX_SteamAPI_Shutdown();
  for (const bool answer : answers) {
    if (answer != answers[0]) return 2;
  }
  return answers[0] ? 1 : 0;
}
