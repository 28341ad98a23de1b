// What the stand-in offers beside the Steam client library's own functions.

#ifndef LAUNCHER_STEAM_STAND_IN_STAND_IN_H_
#define LAUNCHER_STEAM_STAND_IN_STAND_IN_H_

#include <cstdint>

#include "platform/steam_api.h"

// Whether the stand-in handed this ticket out, whole, in this process and since SteamAPI_Init.
extern "C" bool STEAM_API_CALL StandInVerifyTicket(const void* ticket, std::uint32_t size);

#endif  // LAUNCHER_STEAM_STAND_IN_STAND_IN_H_
