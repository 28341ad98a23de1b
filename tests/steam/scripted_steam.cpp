#include "steam/scripted_steam.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <sstream>
#include <string_view>

#include "platform/steam_api.h"

namespace launcher::test {
namespace {

SteamScript script;

template <class... Arguments>
void Note(const char* name, const Arguments&... arguments) {
  if (!script.notesCalls) return;
  std::ostringstream call;
  call << name;
  ((call << ' ' << arguments), ...);
  script.calls.push_back(call.str());
}

// Returns the result, or 0, false or null if this call is to fail.
template <class Result>
Result Give(Result result) {
  return script.failures.IsDue() ? Result() : result;
}

// The same for a call that is noted.
template <class Result, class... Arguments>
Result Give(Result result, const char* name, const Arguments&... arguments) {
  Note(name, arguments...);
  return std::strcmp(name, script.failing) == 0 ? Result() : Give(result);
}

// All interfaces.
class Steam final : public ISteamUser,
                    public ISteamFriends,
                    public ISteamApps,
                    public ISteamRemoteStorage,
                    public ISteamHTTP {
  bool BLoggedOn() override { return Give(script.succeeds); }
  std::uint64_t GetSteamID() override { return Give(script.steamId); }

  bool GetUserDataFolder(char* buffer, int capacity) override {
    if (!Give(script.folder != nullptr, "GetUserDataFolder", capacity)) return false;
    const auto size = static_cast<std::size_t>(capacity);
    std::snprintf(buffer, size, "%s", script.folder);
    if (!script.terminatesFolder) std::memset(buffer, 'f', size);
    return true;
  }

  std::uint32_t GetAuthSessionTicket(void* ticket, int capacity, std::uint32_t* size) override {
    const auto handle = Give(1U, "GetAuthSessionTicket", capacity, *size);
    const std::size_t count = std::min(script.ticket.size(), static_cast<std::size_t>(capacity));
    std::copy_n(script.ticket.begin(), count, static_cast<std::uint8_t*>(ticket));
    *size = static_cast<std::uint32_t>(script.ticket.size());
    return handle;
  }

  const char* GetPersonaName() override { return Give(script.personaName); }
  const char* GetCurrentGameLanguage() override { return Give(script.language); }
  const char* GetAvailableGameLanguages() override { return Give(script.languages); }

  bool FileWrite(const char* name, const void* data, std::int32_t size) override {
    return Give(script.succeeds, "FileWrite", name, static_cast<const char*>(data), size);
  }
  std::int32_t FileRead(const char* name, void* buffer, std::int32_t size) override {
    std::memset(buffer, 'r', static_cast<std::size_t>(size));
    return Give(script.number, "FileRead", name, size);
  }
  bool FileForget(const char* name) override { return Give(script.succeeds, "FileForget", name); }
  bool FileDelete(const char* name) override { return Give(script.succeeds, "FileDelete", name); }
  bool FileExists(const char* name) override { return Give(script.succeeds, "FileExists", name); }
  std::int32_t GetFileSize(const char* name) override { return Give(script.number, "Size", name); }
  std::int32_t GetFileCount() override { return Give(script.number); }
  const char* GetFileNameAndSize(int index, std::int32_t* size) override {
    return Give(script.fileName, "GetFileNameAndSize", index, *size);
  }
  bool IsCloudEnabledForAccount() override { return Give(script.succeeds, "ForAccount"); }
  bool IsCloudEnabledForApp() override { return Give(script.succeeds, "ForApp"); }
  void SetCloudEnabledForApp(std::int32_t on) override { Note("SetCloudEnabledForApp", on); }

  std::uint32_t CreateHTTPRequest(int method, const char* url) override {
    const auto request = Give(1U, "Create", method, url);
    if (request != 0 && !script.isShared) ++script.openRequests;
    return request;
  }
  bool SetHTTPRequestRawPostBody(std::uint32_t request, const char* contentType, std::uint8_t* body,
                                 std::uint32_t size) override {
    return Give(script.succeeds, "SetBody", request, contentType,
                std::string_view(reinterpret_cast<char*>(body), size));
  }
  bool SendHTTPRequest(std::uint32_t request, std::uint64_t* call) override {
    return Give(true, "Send", request, call != nullptr);
  }
  bool GetHTTPResponseHeaderSize(std::uint32_t request, const char* name,
                                 std::uint32_t* size) override {
    *size = script.contentLength;
    return Give(true, "GetHeaderSize", request, name);
  }
  bool GetHTTPResponseBodyData(std::uint32_t request, std::uint8_t* buffer,
                               std::uint32_t size) override {
    std::copy_n(script.body.begin(), std::min<std::size_t>(size, script.body.size()), buffer);
    return Give(true, "GetBody", request, size);
  }
  bool ReleaseHTTPRequest(std::uint32_t request) override {
    if (!script.isShared) --script.openRequests;
    return Give(script.succeeds, "Release", request);
  }
};

Steam steam;

Steam* Interface() { return Give(script.hasInterfaces) ? &steam : nullptr; }

}  // namespace
}  // namespace launcher::test

using namespace launcher::test;

extern "C" {

// How the test reaches the script.
SteamScript* GetSteamScript() { return &script; }

bool STEAM_API_CALL SteamAPI_Init() { return Give(script.succeeds); }
void STEAM_API_CALL SteamAPI_Shutdown() { Note("Shutdown"); }
bool STEAM_API_CALL SteamAPI_IsSteamRunning() { return Give(script.succeeds); }
bool STEAM_API_CALL SteamAPI_RestartAppIfNecessary(std::uint32_t appId) {
  return Give(script.succeeds, "Restart", appId);
}

ISteamUser* STEAM_API_CALL SteamUser() { return Interface(); }
ISteamFriends* STEAM_API_CALL SteamFriends() { return Interface(); }
ISteamApps* STEAM_API_CALL SteamApps() { return Interface(); }
ISteamRemoteStorage* STEAM_API_CALL SteamRemoteStorage() { return Interface(); }
ISteamHTTP* STEAM_API_CALL SteamHTTP() { return Interface(); }

}  // extern "C"
