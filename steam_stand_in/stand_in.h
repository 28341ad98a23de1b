// The function that the stand-in exports in addition to those of the Steam client library.

#ifndef LAUNCHER_STEAM_STAND_IN_STAND_IN_H_
#define LAUNCHER_STEAM_STAND_IN_STAND_IN_H_

#include <cstdint>

#include "platform/steam_api.h"

// True if these bytes are a whole ticket that this process got since SteamAPI_Init.
extern "C" bool STEAM_API_CALL StandInVerifyTicket(const void* ticket, std::uint32_t size);

#endif  // LAUNCHER_STEAM_STAND_IN_STAND_IN_H_
