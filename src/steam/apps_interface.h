// The one thing that the Steam bridge keeps between calls.

#ifndef LAUNCHER_STEAM_APPS_INTERFACE_H_
#define LAUNCHER_STEAM_APPS_INTERFACE_H_

#include "platform/steam_api.h"

namespace launcher {

// What SteamApps gave at the last QX_SteamAPI_Init that reached Steam; null before. Shutdown leaves
// it, and no language call may follow until Steam is up again.
extern ISteamApps* steamAppsInterface;

}  // namespace launcher

#endif  // LAUNCHER_STEAM_APPS_INTERFACE_H_
