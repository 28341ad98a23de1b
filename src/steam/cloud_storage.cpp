// The user's files in the Steam Cloud. Each export gets the interface again, since Steam can start
// or end between two calls. A bad argument is reported before a missing interface. The results for
// both differ from export to export.

#include <cstdint>

#include "frame/bounded_text.h"
#include "launcher_dll.h"
#include "platform/steam_api.h"

ResultCode QX_CALL QX_SteamAPI_RemoteStorageFileWrite(const char* name, const void* data,
                                                      std::int32_t size) {
  if (name == nullptr || data == nullptr || size <= 0) return QX_BAD_ARGUMENT;
  ISteamRemoteStorage* const storage = SteamRemoteStorage();
  if (storage == nullptr) return QX_NO_STEAM;
  return storage->FileWrite(name, data, size) ? QX_SUCCEEDED : QX_FAILED;
}

// The size is not checked, not even for 0 or a negative number: Steam decides.
std::int32_t QX_CALL QX_SteamAPI_RemoteStorageFileRead(const char* name, void* buffer,
                                                       std::int32_t size) {
  if (name == nullptr || buffer == nullptr) return QX_BAD_ARGUMENT;
  ISteamRemoteStorage* const storage = SteamRemoteStorage();
  if (storage == nullptr) return QX_NO_STEAM;
  return storage->FileRead(name, buffer, size);
}

ResultCode QX_CALL QX_SteamAPI_RemoteStorageFileDelete(const char* name) {
  if (name == nullptr) return QX_BAD_ARGUMENT;
  ISteamRemoteStorage* const storage = SteamRemoteStorage();
  return storage != nullptr && storage->FileDelete(name) ? QX_SUCCEEDED : QX_FAILED;
}

std::int32_t QX_CALL QX_SteamAPI_RemoteStorageFileExist(const char* name) {
  if (name == nullptr) return 0;
  ISteamRemoteStorage* const storage = SteamRemoteStorage();
  return storage != nullptr && storage->FileExists(name) ? 1 : 0;
}

std::int32_t QX_CALL QX_SteamAPI_RemoteStorageFileForget(const char* name) {
  if (name == nullptr) return 0;
  ISteamRemoteStorage* const storage = SteamRemoteStorage();
  return storage != nullptr && storage->FileForget(name) ? 1 : 0;
}

std::int32_t QX_CALL QX_SteamAPI_RemoteStorageGetFileSize(const char* name) {
  if (name == nullptr) return 0;
  ISteamRemoteStorage* const storage = SteamRemoteStorage();
  return storage != nullptr ? storage->GetFileSize(name) : 0;
}

// Without Steam a negative number, which is no valid count.
std::int32_t QX_CALL QX_SteamAPI_RemoteStorageGetFileCount() {
  ISteamRemoteStorage* const storage = SteamRemoteStorage();
  return storage != nullptr ? storage->GetFileCount() : QX_FAILED;
}

ResultCode QX_CALL QX_SteamAPI_RemoteStorageGetFileName(std::int32_t index, char* destination,
                                                        std::uint32_t capacity) {
  if (destination == nullptr || capacity == 0) return QX_BAD_ARGUMENT;
  ISteamRemoteStorage* const storage = SteamRemoteStorage();
  if (storage == nullptr) return QX_FAILED;

  std::int32_t size = 0;  // required by Steam, not reported to the caller
  // The call succeeds even if the name does not fit or Steam has none (null). The caller then gets
  // an empty name.
  launcher::CopyText(destination, capacity, storage->GetFileNameAndSize(index, &size));
  return QX_SUCCEEDED;
}

std::int32_t QX_CALL QX_SteamAPI_RemoteStorageIsCloudEnabledForAccount() {
  ISteamRemoteStorage* const storage = SteamRemoteStorage();
  return storage != nullptr && storage->IsCloudEnabledForAccount() ? 1 : 0;
}

std::int32_t QX_CALL QX_SteamAPI_RemoteStorageIsCloudEnabledForApp() {
  ISteamRemoteStorage* const storage = SteamRemoteStorage();
  return storage != nullptr && storage->IsCloudEnabledForApp() ? 1 : 0;
}

// Inverted result: 1 means that Steam is missing and nothing was done. `enabled` is passed on
// whole, not reduced to 0 or 1.
std::uint8_t QX_CALL QX_SteamAPI_RemoteStorageSetCloudEnabledForApp(std::int32_t enabled) {
  ISteamRemoteStorage* const storage = SteamRemoteStorage();
  if (storage == nullptr) return 1;
  storage->SetCloudEnabledForApp(enabled);
  return 0;
}
