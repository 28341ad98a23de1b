// The session with the Steam client, and the languages of the game.

#include <cstdint>

#include "frame/bounded_text.h"
#include "launcher_dll.h"
#include "platform/steam_api.h"

namespace launcher {
namespace {

// The result of SteamApps in the last QX_SteamAPI_Init that reached Steam; null before that. Only
// the language exports use it. QX_SteamAPI_Shutdown does not clear it, so after that call no
// language export may be called until QX_SteamAPI_Init has succeeded again. It has no lock: callers
// must not run these exports at the same time.
ISteamApps* steamAppsInterface = nullptr;

}  // namespace
}  // namespace launcher

using launcher::steamAppsInterface;

std::int32_t QX_CALL QX_SteamAPI_Init() {
  // If Steam does not start, an earlier interface stays in use.
  if (!SteamAPI_Init()) return 0;

  steamAppsInterface = SteamApps();
  return steamAppsInterface != nullptr ? 1 : 0;
}

void QX_CALL QX_SteamAPI_Shutdown() { SteamAPI_Shutdown(); }

std::int32_t QX_CALL QX_SteamAPI_IsSteamRunning() { return SteamAPI_IsSteamRunning() ? 1 : 0; }

// QX_SUCCEEDED means that Steam starts the game again, so the caller must end.
ResultCode QX_CALL QX_SteamAPI_RestartAppIfNecessary(std::uint32_t appId) {
  return SteamAPI_RestartAppIfNecessary(appId) ? QX_SUCCEEDED : QX_FAILED;
}

ResultCode QX_CALL QX_SteamAPI_GetAvailableGameLanguages(char* destination,
                                                         std::uint32_t capacity) {
  if (destination == nullptr || capacity == 0) return QX_BAD_ARGUMENT;
  if (steamAppsInterface == nullptr) return QX_NO_STEAM;

  // The call succeeds even if the list does not fit: the caller then gets an empty one.
  launcher::CopyText(destination, capacity, steamAppsInterface->GetAvailableGameLanguages());
  return QX_SUCCEEDED;
}

ResultCode QX_CALL QX_SteamAPI_GetCurrentGameLanguage(char* destination, std::uint32_t capacity) {
  if (destination == nullptr || capacity == 0) return QX_BAD_ARGUMENT;
  if (steamAppsInterface == nullptr) return QX_NO_STEAM;

  const char* const language = steamAppsInterface->GetCurrentGameLanguage();
  if (language == nullptr || *language == '\0') return QX_NOT_FOUND;

  // QX_OUT_OF_MEMORY is also the code for a copy that does not fit, in this export only.
  return launcher::CopyText(destination, capacity, language) ? QX_SUCCEEDED : QX_OUT_OF_MEMORY;
}
