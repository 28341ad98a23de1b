#include "steam/scripted_steam.h"

#include <algorithm>
#include <cstring>

#include "platform/steam_api.h"

namespace launcher::test {
namespace {

SteamScript script;

std::string Text(const char* text) { return text != nullptr ? text : "null"; }
template <class Number>
std::string Text(Number number) {
  return std::to_string(number);
}

template <class... Arguments>
void Note(const char* name, Arguments... arguments) {
  if (!script.notesCalls) return;
  std::string call = name;
  ((call += ' ' + Text(arguments)), ...);
  script.calls.push_back(call);
}

// What is answered, unless this call is to fail.
template <class Answer>
Answer Give(Answer answer) {
  return script.failures.IsDue() ? Answer() : answer;
}

class User final : public ISteamUser {
  bool BLoggedOn() override { return Give(script.answer); }
  std::uint64_t GetSteamID() override { return Give(script.steamId); }

  bool GetUserDataFolder(char* buffer, int capacity) override {
    Note("GetUserDataFolder", capacity);
    if (script.folder == nullptr || !Give(true)) return false;
    const auto size = static_cast<std::size_t>(capacity);
    if (!script.terminatesFolder) {
      std::memset(buffer, 'f', size);
    } else if (std::strlen(script.folder) < size) {
      std::strcpy(buffer, script.folder);
    }
    return true;
  }

  std::uint32_t GetAuthSessionTicket(void* ticket, int capacity, std::uint32_t* size) override {
    Note("GetAuthSessionTicket", capacity, *size);
    std::copy_n(script.ticket.begin(),
                std::min(script.ticket.size(), static_cast<std::size_t>(capacity)),
                static_cast<std::uint8_t*>(ticket));
    *size = static_cast<std::uint32_t>(script.ticket.size());
    return Give(script.ticketHandle);
  }
};

class Friends final : public ISteamFriends {
  const char* GetPersonaName() override { return Give(script.personaName); }
};

class Apps final : public ISteamApps {
  const char* GetCurrentGameLanguage() override { return Give(script.language); }
  const char* GetAvailableGameLanguages() override { return Give(script.languages); }
};

class Storage final : public ISteamRemoteStorage {
  bool FileWrite(const char* name, const void* data, std::int32_t size) override {
    Note("FileWrite", name, static_cast<const char*>(data), size);
    return Give(script.answer);
  }
  std::int32_t FileRead(const char* name, void* buffer, std::int32_t size) override {
    Note("FileRead", name, size);
    std::memset(buffer, 'r', static_cast<std::size_t>(size));
    return Give(script.number);
  }
  bool FileForget(const char* name) override { return Answer("FileForget", name); }
  bool FileDelete(const char* name) override { return Answer("FileDelete", name); }
  bool FileExists(const char* name) override { return Answer("FileExists", name); }
  std::int32_t GetFileSize(const char* name) override {
    Note("GetFileSize", name);
    return Give(script.number);
  }
  std::int32_t GetFileCount() override { return Give(script.number); }
  const char* GetFileNameAndSize(int index, std::int32_t* size) override {
    Note("GetFileNameAndSize", index, *size);
    return Give(script.fileName);
  }
  bool IsCloudEnabledForAccount() override { return Answer("IsCloudEnabledForAccount", "-"); }
  bool IsCloudEnabledForApp() override { return Answer("IsCloudEnabledForApp", "-"); }
  void SetCloudEnabledForApp(std::int32_t enabled) override {
    Note("SetCloudEnabledForApp", enabled);
  }

  static bool Answer(const char* function, const char* name) {
    Note(function, name);
    return Give(script.answer);
  }
};

class Http final : public ISteamHTTP {
  std::uint32_t CreateHTTPRequest(int method, const char* url) override {
    Note("Create", method, url);
    const std::uint32_t request = Give(script.request);
    if (request != 0 && !script.isShared) ++script.openRequests;
    return request;
  }
  bool SetHTTPRequestRawPostBody(std::uint32_t request, const char* contentType, std::uint8_t* body,
                                 std::uint32_t size) override {
    if (script.notesCalls) {
      Note("SetBody", request, contentType, std::string(body, body + size).c_str());
    }
    return Give(script.answer);
  }
  bool SendHTTPRequest(std::uint32_t request, std::uint64_t* call) override {
    Note("Send", request, call != nullptr);
    return Give(script.sends);
  }
  bool GetHTTPResponseHeaderSize(std::uint32_t request, const char* name,
                                 std::uint32_t* size) override {
    Note("GetHeaderSize", request, name);
    *size = script.contentLength;
    return Give(script.hasContentLength);
  }
  bool GetHTTPResponseBodyData(std::uint32_t request, std::uint8_t* buffer,
                               std::uint32_t size) override {
    Note("GetBody", request, size);
    std::copy_n(script.body.begin(), std::min<std::size_t>(size, script.body.size()), buffer);
    return Give(script.hasBody);
  }
  bool ReleaseHTTPRequest(std::uint32_t request) override {
    Note("Release", request);
    if (!script.isShared) --script.openRequests;
    return Give(script.answer);
  }
};

User user;
Friends friends;
Apps apps;
Storage storage;
Http http;

}  // namespace
}  // namespace launcher::test

using namespace launcher::test;

extern "C" {

// How the test reaches the script.
SteamScript* GetSteamScript() { return &script; }

bool STEAM_API_CALL SteamAPI_Init() { return Give(script.answer); }
void STEAM_API_CALL SteamAPI_Shutdown() { Note("Shutdown"); }
bool STEAM_API_CALL SteamAPI_IsSteamRunning() { return Give(script.answer); }
bool STEAM_API_CALL SteamAPI_RestartAppIfNecessary(std::uint32_t appId) {
  Note("Restart", appId);
  return Give(script.answer);
}

ISteamUser* STEAM_API_CALL SteamUser() { return Give(script.hasUser) ? &user : nullptr; }
ISteamFriends* STEAM_API_CALL SteamFriends() {
  return Give(script.hasFriends) ? &friends : nullptr;
}
ISteamApps* STEAM_API_CALL SteamApps() { return Give(script.hasApps) ? &apps : nullptr; }
ISteamRemoteStorage* STEAM_API_CALL SteamRemoteStorage() {
  return Give(script.hasStorage) ? &storage : nullptr;
}
ISteamHTTP* STEAM_API_CALL SteamHTTP() { return Give(script.hasHttp) ? &http : nullptr; }

}  // extern "C"
