// The link to the Steam client: whether it runs, its start and its end.

#include <cstdint>

#include "launcher_dll.h"
#include "platform/steam_api.h"
#include "steam/apps_interface.h"

namespace launcher {

ISteamApps* steamAppsInterface = nullptr;

}  // namespace launcher

std::int32_t QX_CALL QX_SteamAPI_Init() {
  if (!SteamAPI_Init()) return 0;

  launcher::steamAppsInterface = SteamApps();
  return launcher::steamAppsInterface != nullptr ? 1 : 0;
}

void QX_CALL QX_SteamAPI_Shutdown() { SteamAPI_Shutdown(); }

std::int32_t QX_CALL QX_SteamAPI_IsSteamRunning() { return SteamAPI_IsSteamRunning() ? 1 : 0; }

// Success is that Steam starts the game again: the caller then ends.
ResultCode QX_CALL QX_SteamAPI_RestartAppIfNecessary(std::uint32_t appId) {
  return SteamAPI_RestartAppIfNecessary(appId) ? QX_SUCCEEDED : QX_FAILED;
}
