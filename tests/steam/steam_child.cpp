// The exit code counts the exports that return something else than without Steam.

#include <algorithm>

#include "launcher_dll.h"

int main() {
  char text[8] = "before";
  const bool reachSteam[] = {
      QX_SteamAPI_Init() == 1,
      QX_SteamAPI_IsSteamRunning() == 1,
      QX_SteamAPI_RestartAppIfNecessary(1) == QX_SUCCEEDED,
      QX_SteamAPI_IsLoggedOn() == 1,
      QX_SteamAPI_GetAvailableGameLanguages(text, 8) != QX_NO_STEAM,
      QX_SteamAPI_GetUserDataFolder(text, 8) != QX_NO_STEAM,
      QX_SteamAPI_RemoteStorageGetFileCount() != QX_FAILED,
      QX_SteamAPI_HTTPRequest(nullptr, 1, nullptr, nullptr, 0) != QX_NO_STEAM,
  };
  QX_SteamAPI_Shutdown();
  return static_cast<int>(std::count(reachSteam, reachSteam + 8, true));
}
