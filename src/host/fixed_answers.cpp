// Exports that are kept for older launchers; nothing is behind them.

#include <cstdint>

#include "launcher_dll.h"

std::uint8_t QX_CALL QX_ExistClient() { return 1; }

ResultCode QX_CALL QX_Unzip(std::uint32_t /*first*/, std::uint32_t second, std::uint32_t third,
                            std::uint32_t fourth) {
  return second != 0 && third != 0 && fourth != 0 ? QX_SUCCEEDED : QX_BAD_ARGUMENT;
}

std::int32_t QX_CALL QX_SteamAPI_GetMirvelURL(std::uint32_t /*first*/, std::uint32_t /*second*/,
                                              std::uint32_t /*third*/) {
  return 0;
}
