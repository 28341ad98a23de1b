// Exit code 0 if every export returns what it does without Steam, 1 if every export reaches Steam,
// 2 otherwise.

#include <cstdint>

#include "launcher_dll.h"

int main() {
  char text[8] = "before";
  const bool reachesSteam[] = {
      QX_SteamAPI_Init() == 1,
      QX_SteamAPI_IsSteamRunning() == 1,
      QX_SteamAPI_RestartAppIfNecessary(1) == QX_SUCCEEDED,
      QX_SteamAPI_IsLoggedOn() == 1,
      QX_SteamAPI_GetSteamAuthTicket(text, sizeof text) != QX_FAILED,
      QX_SteamAPI_GetAvailableGameLanguages(text, sizeof text) != QX_NO_STEAM,
      QX_SteamAPI_GetUserDataFolder(text, sizeof text) != QX_NO_STEAM,
      QX_SteamAPI_RemoteStorageGetFileCount() != QX_FAILED,
      QX_SteamAPI_HTTPRequest(nullptr, 1, nullptr, nullptr, 0) != QX_NO_STEAM,
  };
  QX_SteamAPI_Shutdown();
  for (const bool each : reachesSteam) {
    if (each != reachesSteam[0]) return 2;
  }
  return reachesSteam[0] ? 1 : 0;
}
