// The functions of steam_api.h. Each calls the function of the same name in the Steam client
// library. If the library is missing, Steam does not run and gives no interface.

#include "platform/late_library.h"
#include "platform/steam_api.h"

namespace {

#if defined(_WIN32)
constexpr char kLibrary[] = "steam_api.dll";
#else
constexpr char kLibrary[] = "libsteam_api.so";
#endif

// Calls the library's function `name`, which has the type of `self`; that parameter only lets the
// compiler deduce the type. If there is no such function, returns nothing, false or null.
template <class Result, class... Arguments>
Result PassOn(Result(STEAM_API_CALL* /*self*/)(Arguments...), const char* name,
              Arguments... arguments) {
  using Function = Result(STEAM_API_CALL*)(Arguments...);
  const auto function = reinterpret_cast<Function>(
      launcher::FindLateFunction(kLibrary, name, launcher::LateFolders::kOwnToo));
  return function != nullptr ? function(arguments...) : Result();
}

}  // namespace

bool STEAM_API_CALL SteamAPI_Init() { return PassOn(SteamAPI_Init, __func__); }
void STEAM_API_CALL SteamAPI_Shutdown() { PassOn(SteamAPI_Shutdown, __func__); }
bool STEAM_API_CALL SteamAPI_IsSteamRunning() { return PassOn(SteamAPI_IsSteamRunning, __func__); }
bool STEAM_API_CALL SteamAPI_RestartAppIfNecessary(std::uint32_t appId) {
  return PassOn(SteamAPI_RestartAppIfNecessary, __func__, appId);
}

ISteamUser* STEAM_API_CALL SteamUser() { return PassOn(SteamUser, __func__); }
ISteamFriends* STEAM_API_CALL SteamFriends() { return PassOn(SteamFriends, __func__); }
ISteamApps* STEAM_API_CALL SteamApps() { return PassOn(SteamApps, __func__); }
ISteamRemoteStorage* STEAM_API_CALL SteamRemoteStorage() {
  return PassOn(SteamRemoteStorage, __func__);
}
ISteamHTTP* STEAM_API_CALL SteamHTTP() { return PassOn(SteamHTTP, __func__); }
