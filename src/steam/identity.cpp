// The user's identity: login, id, name, ticket.

#include <cstdint>

#include "frame/bounded_text.h"
#include "launcher_dll.h"
#include "platform/steam_api.h"

namespace launcher {
namespace {

// In bytes; no ticket of Steam is longer.
constexpr int kTicketCapacity = 1024;

// Writes 2 * size characters and a terminator.
void WriteHex(char* text, const std::uint8_t* bytes, std::uint32_t size) {
  constexpr char kDigits[] = "0123456789ABCDEF";
  for (std::uint32_t i = 0; i < size; ++i) {
    *text++ = kDigits[bytes[i] >> 4];
    *text++ = kDigits[bytes[i] & 0xF];
  }
  *text = '\0';
}

}  // namespace
}  // namespace launcher

std::uint8_t QX_CALL QX_SteamAPI_IsLoggedOn() {
  ISteamUser* const user = SteamUser();
  return user != nullptr && user->BLoggedOn() ? 1 : 0;
}

std::uint64_t QX_CALL QX_SteamAPI_GetSteamIDConvertToUint64() {
  ISteamUser* const user = SteamUser();
  return user != nullptr ? user->GetSteamID() : 0;
}

ResultCode QX_CALL QX_SteamAPI_GetPersonaName(char* destination, std::uint32_t capacity) {
  if (destination == nullptr || capacity == 0) return QX_BAD_ARGUMENT;

  // Without Steam there is no name, but the call succeeds and leaves destination unwritten.
  ISteamFriends* const friends = SteamFriends();
  if (friends == nullptr) return QX_SUCCEEDED;

  return launcher::CopyText(destination, capacity, friends->GetPersonaName()) ? QX_SUCCEEDED
                                                                              : QX_BAD_ARGUMENT;
}

std::int32_t QX_CALL QX_SteamAPI_GetSteamAuthTicket(char* destination, std::uint32_t capacity) {
  using namespace launcher;
  ISteamUser* const user = SteamUser();
  if (user == nullptr) return QX_FAILED;

  std::uint8_t ticket[kTicketCapacity];
  std::uint32_t size = 0;
  // The handle is not kept: the ticket is valid until Steam shuts down.
  if (user->GetAuthSessionTicket(ticket, kTicketCapacity, &size) == 0) return QX_FAILED;
  // Steam reports the size. If it were wrong, WriteHex would read beyond the buffer.
  if (size > sizeof ticket) return QX_FAILED;

  // Only now: a call with a bad destination requests a ticket too.
  if (destination == nullptr || capacity == 0) return QX_FAILED;
  const std::uint32_t length = 2 * size;
  if (capacity <= length) return QX_FAILED;

  WriteHex(destination, ticket, size);
  return static_cast<std::int32_t>(length);
}
