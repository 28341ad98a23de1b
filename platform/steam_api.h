// What the library needs of the Steam client library, steam_api.dll (natively libsteam_api.so).
//
// The binary interface is fixed, since other builds of that library replace the stand-in:
// undecorated cdecl functions, and abstract classes with these virtual functions in this order. A
// new function goes to the end of its class. All memory that a function returns belongs to Steam;
// sizes and capacities are in bytes.

#ifndef LAUNCHER_PLATFORM_STEAM_API_H_
#define LAUNCHER_PLATFORM_STEAM_API_H_

#include <cstdint>

#if defined(_WIN32)
#define STEAM_API_CALL __cdecl
#else
#define STEAM_API_CALL
#endif

// No class has a virtual destructor, which would be one more virtual function: an interface always
// belongs to the Steam client library.
class ISteamUser {
 public:
  virtual bool BLoggedOn() = 0;
  virtual std::uint64_t GetSteamID() = 0;
  virtual bool GetUserDataFolder(char* buffer, int capacity) = 0;
  // Writes the ticket and its size. Returns a handle, 0 for no ticket.
  virtual std::uint32_t GetAuthSessionTicket(void* ticket, int capacity, std::uint32_t* size) = 0;

 protected:
  ~ISteamUser() = default;
};

class ISteamFriends {
 public:
  virtual const char* GetPersonaName() = 0;

 protected:
  ~ISteamFriends() = default;
};

class ISteamApps {
 public:
  virtual const char* GetCurrentGameLanguage() = 0;
  virtual const char* GetAvailableGameLanguages() = 0;

 protected:
  ~ISteamApps() = default;
};

class ISteamRemoteStorage {
 public:
  virtual bool FileWrite(const char* name, const void* data, std::int32_t size) = 0;
  virtual std::int32_t FileRead(const char* name, void* buffer, std::int32_t size) = 0;
  virtual bool FileForget(const char* name) = 0;
  virtual bool FileDelete(const char* name) = 0;
  virtual bool FileExists(const char* name) = 0;
  virtual std::int32_t GetFileSize(const char* name) = 0;
  virtual std::int32_t GetFileCount() = 0;
  virtual const char* GetFileNameAndSize(int index, std::int32_t* size) = 0;
  virtual bool IsCloudEnabledForAccount() = 0;
  virtual bool IsCloudEnabledForApp() = 0;
  virtual void SetCloudEnabledForApp(std::int32_t enabled) = 0;

 protected:
  ~ISteamRemoteStorage() = default;
};

class ISteamHTTP {
 public:
  // `method` is 1 GET, 2 HEAD, 3 POST, 4 PUT, 5 DELETE, 6 OPTIONS or 7 PATCH. Returns a handle, 0
  // on failure.
  virtual std::uint32_t CreateHTTPRequest(int method, const char* url) = 0;
  virtual bool SetHTTPRequestRawPostBody(std::uint32_t request, const char* contentType,
                                         std::uint8_t* body, std::uint32_t size) = 0;
  // Returns after the response is complete.
  virtual bool SendHTTPRequest(std::uint32_t request, std::uint64_t* call) = 0;
  // For "Content-Length" the size is the number of body bytes received, however the server sent
  // them.
  virtual bool GetHTTPResponseHeaderSize(std::uint32_t request, const char* name,
                                         std::uint32_t* size) = 0;
  virtual bool GetHTTPResponseBodyData(std::uint32_t request, std::uint8_t* buffer,
                                       std::uint32_t size) = 0;
  virtual bool ReleaseHTTPRequest(std::uint32_t request) = 0;

 protected:
  ~ISteamHTTP() = default;
};

extern "C" {
bool STEAM_API_CALL SteamAPI_Init();
void STEAM_API_CALL SteamAPI_Shutdown();
bool STEAM_API_CALL SteamAPI_IsSteamRunning();
bool STEAM_API_CALL SteamAPI_RestartAppIfNecessary(std::uint32_t appId);

// Null if the interface is not available.
ISteamUser* STEAM_API_CALL SteamUser();
ISteamFriends* STEAM_API_CALL SteamFriends();
ISteamApps* STEAM_API_CALL SteamApps();
ISteamRemoteStorage* STEAM_API_CALL SteamRemoteStorage();
ISteamHTTP* STEAM_API_CALL SteamHTTP();
}

#endif  // LAUNCHER_PLATFORM_STEAM_API_H_
