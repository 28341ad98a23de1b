// The exported functions and their interfaces. They check the arguments and catch all exceptions.
//
// The interface objects and the texts that they return are never freed, since a caller may keep a
// pointer to one when its session ends. Without a session each call fails.
//
// Any thread may call.

#include "steam_stand_in/stand_in.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <limits>
#include <memory>
#include <mutex>
#include <optional>
#include <set>
#include <string>
#include <utility>

#include "platform/mutex.h"
#include "platform/steam_api.h"
#include "steam_stand_in/stand_in_session.h"

namespace launcher::stand_in {
namespace {

// Guards the session and all that belongs to it. Nobody holds it during an HTTP transfer.
Mutex mutex;
using Lock = std::lock_guard<Mutex>;

// Shared with the HTTP transfers that are under way.
std::shared_ptr<Session> session;

template <class Result, class Body>
Result Guarded(Result otherwise, Body body) noexcept {
  try {
    return body();
  } catch (...) {
    return otherwise;
  }
}

// Calls `body` with the session. Returns `otherwise` if there is no session or `body` throws.
template <class Result, class Body>
Result InSession(Result otherwise, Body body) noexcept {
  const Lock lock(mutex);
  if (!session) return otherwise;
  return Guarded(otherwise, [&] { return body(*session); });
}

// Returns a copy of the text that is never freed: another thread may end the session while a caller
// reads it. Call it with the mutex locked.
const char* Kept(const std::string& text) {
  static auto* const texts = new std::set<std::string>;
  return texts->insert(text).first->c_str();
}

// Returns null if there is no session.
template <class Interface>
Interface* OfSession(Interface* object) {
  const Lock lock(mutex);
  return session ? object : nullptr;
}

constexpr std::int32_t kLargestSize = std::numeric_limits<std::int32_t>::max();

// The interfaces have sizes of 32 bits.
std::int32_t ShortSize(std::uint64_t size) {
  return static_cast<std::int32_t>(std::min<std::uint64_t>(size, kLargestSize));
}

class User final : public ISteamUser {
 public:
  bool BLoggedOn() override {
    return InSession(false, [](Session& current) { return current.settings.loggedOn; });
  }

  std::uint64_t GetSteamID() override {
    return InSession(std::uint64_t{0}, [](Session& current) { return current.settings.accountId; });
  }

  bool GetUserDataFolder(char* buffer, int capacity) override {
    return InSession(false, [&](Session& current) {
      const Path folder = current.accountFolder / "local";
      const std::optional<std::string> text = NarrowText(folder);
      if (buffer == nullptr || capacity <= 0 || !text ||
          text->size() >= static_cast<std::size_t>(capacity)) {
        return false;
      }
      std::filesystem::create_directories(folder);
      std::memcpy(buffer, text->c_str(), text->size() + 1);
      return true;
    });
  }

  std::uint32_t GetAuthSessionTicket(void* ticket, int capacity, std::uint32_t* size) override {
    constexpr std::uint32_t kNoTicket = 0;
    return InSession(kNoTicket, [&](Session& current) {
      if (!current.settings.loggedOn || ticket == nullptr || size == nullptr || capacity < 0 ||
          static_cast<std::size_t>(capacity) < Tickets::kSize) {
        return kNoTicket;
      }
      const std::uint32_t handle = current.tickets.Issue(ticket);
      if (handle != kNoTicket) *size = Tickets::kSize;
      return handle;
    });
  }
};

class Friends final : public ISteamFriends {
 public:
  const char* GetPersonaName() override {
    return InSession("", [](Session& current) { return Kept(current.settings.personaName); });
  }
};

class Apps final : public ISteamApps {
 public:
  const char* GetCurrentGameLanguage() override {
    return InSession("", [](Session& current) { return Kept(current.settings.currentLanguage); });
  }

  const char* GetAvailableGameLanguages() override {
    return InSession("",
                     [](Session& current) { return Kept(current.settings.availableLanguages); });
  }
};

class RemoteStorage final : public ISteamRemoteStorage {
 public:
  bool FileWrite(const char* name, const void* data, std::int32_t size) override {
    return InSession(false, [&](Session& current) {
      return data != nullptr && size >= 0 &&
             current.cloud.Write(name, data, static_cast<std::size_t>(size));
    });
  }

  std::int32_t FileRead(const char* name, void* buffer, std::int32_t size) override {
    return InSession(std::int32_t{0}, [&](Session& current) {
      if (buffer == nullptr || size <= 0) return std::int32_t{0};
      return ShortSize(current.cloud.Read(name, buffer, static_cast<std::size_t>(size)));
    });
  }

  bool FileForget(const char* name) override {
    return InSession(false, [&](Session& current) { return current.cloud.Forget(name); });
  }

  bool FileDelete(const char* name) override {
    return InSession(false, [&](Session& current) { return current.cloud.Delete(name); });
  }

  bool FileExists(const char* name) override {
    return InSession(false, [&](Session& current) { return current.cloud.Size(name).has_value(); });
  }

  std::int32_t GetFileSize(const char* name) override {
    return InSession(std::int32_t{0}, [&](Session& current) {
      return ShortSize(current.cloud.Size(name).value_or(0));
    });
  }

  std::int32_t GetFileCount() override {
    return InSession(std::int32_t{0},
                     [](Session& current) { return ShortSize(current.cloud.Count()); });
  }

  const char* GetFileNameAndSize(int index, std::int32_t* size) override {
    if (size != nullptr) *size = 0;
    return InSession("", [&](Session& current) {
      const CloudFile* const file =
          index < 0 ? nullptr : current.cloud.At(static_cast<std::size_t>(index));
      if (file == nullptr) return "";
      const char* const name = Kept(file->name);
      if (size != nullptr) *size = ShortSize(file->size);
      return name;
    });
  }

  bool IsCloudEnabledForAccount() override {
    return InSession(false, [](Session& current) { return current.cloud.IsEnabledForAccount(); });
  }

  bool IsCloudEnabledForApp() override {
    return InSession(false, [](Session& current) { return current.cloud.IsEnabledForApp(); });
  }

  void SetCloudEnabledForApp(std::int32_t enabled) override {
    InSession(false, [&](Session& current) {
      current.cloud.EnableForApp(enabled != 0);
      return true;
    });
  }
};

class Http final : public ISteamHTTP {
 public:
  std::uint32_t CreateHTTPRequest(int method, const char* url) override {
    return InSession(std::uint32_t{0}, [&](Session& current) {
      return url == nullptr ? 0 : current.http.Create(method, url);
    });
  }

  bool SetHTTPRequestRawPostBody(std::uint32_t request, const char* contentType, std::uint8_t* body,
                                 std::uint32_t size) override {
    return InSession(false, [&](Session& current) {
      return contentType != nullptr && body != nullptr &&
             current.http.SetBody(request, contentType, body, size);
    });
  }

  bool SendHTTPRequest(std::uint32_t request, std::uint64_t* call) override {
    return Guarded(false, [&] {
      std::shared_ptr<Session> current;
      std::optional<HttpRequest> toSend;
      {
        const Lock lock(mutex);
        current = session;
        if (current) toSend = current->http.BeginSending(request);
      }
      if (!toSend) return false;
      std::optional<HttpResponse> response = Fetch(*toSend, current->http.Limits());
      const Lock lock(mutex);
      // The session may have ended during the transfer.
      return session == current && current->http.EndSending(request, std::move(response), call);
    });
  }

  bool GetHTTPResponseHeaderSize(std::uint32_t request, const char* name,
                                 std::uint32_t* size) override {
    return InSession(false, [&](Session& current) {
      if (name == nullptr || size == nullptr) return false;
      const std::optional<std::uint32_t> found = current.http.HeaderSize(request, name);
      if (found) *size = *found;
      return found.has_value();
    });
  }

  bool GetHTTPResponseBodyData(std::uint32_t request, std::uint8_t* buffer,
                               std::uint32_t size) override {
    return InSession(false, [&](Session& current) {
      return (buffer != nullptr || size == 0) && current.http.CopyBody(request, buffer, size);
    });
  }

  bool ReleaseHTTPRequest(std::uint32_t request) override {
    return InSession(false, [&](Session& current) { return current.http.Release(request); });
  }
};

User user;
Friends friends;
Apps apps;
RemoteStorage remoteStorage;
Http http;

// The session's settings, or those of the file before a session: SteamAPI_IsSteamRunning and
// SteamAPI_RestartAppIfNecessary need no session. None if the file is wrong.
std::optional<SteamSettings> SettingsNow() noexcept {
  const Lock lock(mutex);
  return Guarded(std::optional<SteamSettings>(), [] {
    return std::optional<SteamSettings>(session ? session->settings
                                                : LoadSteamSettings(StandInFolder()));
  });
}

// Creates a session if the settings permit one, else throws the reason.
std::shared_ptr<Session> NewSession() {
  const Path folder = StandInFolder();
  const SteamSettings settings = LoadSteamSettings(folder);
  if (!settings.running) throw SteamSettingsError("the settings say that Steam is not running");
  if (!settings.subscribed) {
    throw SteamSettingsError("the settings say that the account has no licence");
  }

  auto created = std::make_shared<Session>(folder, settings);
  // A game starts even if its cloud files cannot be compared.
  Guarded(false, [&] {
    created->cloud.CatchUp();
    return true;
  });
  return created;
}

}  // namespace
}  // namespace launcher::stand_in

using namespace launcher::stand_in;

bool SteamAPI_Init() {
  const Lock lock(mutex);
  if (session) return true;
  try {
    session = NewSession();
    return true;
  } catch (const std::exception& error) {
    std::fprintf(stderr, "Steam stand-in: %s\n", error.what());
  } catch (...) {
    std::fprintf(stderr, "Steam stand-in: no session\n");
  }
  return false;
}

void SteamAPI_Shutdown() {
  const Lock lock(mutex);
  session.reset();
}

bool SteamAPI_IsSteamRunning() {
  const std::optional<SteamSettings> settings = SettingsNow();
  return settings && settings->running;
}

// The application's id is not used: the stand-in starts no applications.
bool SteamAPI_RestartAppIfNecessary(std::uint32_t /*appId*/) {
  const std::optional<SteamSettings> settings = SettingsNow();
  return settings && !(settings->subscribed && settings->startedBySteam);
}

ISteamUser* SteamUser() { return OfSession(&user); }
ISteamFriends* SteamFriends() { return OfSession(&friends); }
ISteamApps* SteamApps() { return OfSession(&apps); }
ISteamRemoteStorage* SteamRemoteStorage() { return OfSession(&remoteStorage); }
ISteamHTTP* SteamHTTP() { return OfSession(&http); }

bool StandInVerifyTicket(const void* ticket, std::uint32_t size) {
  return InSession(false, [&](Session& current) {
    return ticket != nullptr && current.tickets.IsIssued(ticket, size);
  });
}
