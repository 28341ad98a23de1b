// The languages of the game, as Steam knows them. Both exports read the interface that
// QX_SteamAPI_Init stored.

#include <cstdint>

#include "frame/bounded_text.h"
#include "launcher_dll.h"
#include "steam/apps_interface.h"

using launcher::steamAppsInterface;

ResultCode QX_CALL QX_SteamAPI_GetAvailableGameLanguages(char* destination,
                                                         std::uint32_t capacity) {
  if (destination == nullptr || capacity == 0) return QX_BAD_ARGUMENT;
  if (steamAppsInterface == nullptr) return QX_NO_STEAM;

  // A list that does not fit is an empty one, and success.
  launcher::CopyText(destination, capacity, steamAppsInterface->GetAvailableGameLanguages());
  return QX_SUCCEEDED;
}

ResultCode QX_CALL QX_SteamAPI_GetCurrentGameLanguage(char* destination, std::uint32_t capacity) {
  if (destination == nullptr || capacity == 0) return QX_BAD_ARGUMENT;
  if (steamAppsInterface == nullptr) return QX_NO_STEAM;

  const char* const language = steamAppsInterface->GetCurrentGameLanguage();
  if (language == nullptr || *language == '\0') return QX_NOT_FOUND;

  return launcher::CopyText(destination, capacity, language) ? QX_SUCCEEDED : QX_OUT_OF_MEMORY;
}
