// Whole files in the folder that Steam has for each user of this machine. The file name becomes
// part of the path unchanged: it can also name a file in another folder.

#include <cstddef>
#include <cstdint>
#include <cstdio>

#include "frame/bounded_text.h"
#include "launcher_dll.h"
#include "platform/owners.h"
#include "platform/steam_api.h"
#include "platform/win32.h"

namespace launcher {
namespace {

constexpr int kPathCapacity = 260;  // MAX_PATH, terminator included
// The largest size in bytes that a signed 32-bit number holds.
constexpr std::int64_t kMaxFileSize = 0x7FFFFFFF;

// Writes the path of a user's file into the `capacity` bytes at `path`. Returns false if Steam has
// no folder or the path does not fit.
bool FormPath(ISteamUser& user, const char* fileName, char* path, int capacity) {
  if (!user.GetUserDataFolder(path, capacity)) return false;
  const auto size = static_cast<std::size_t>(capacity);
  return AppendText(path, size, "\\") && AppendText(path, size, fileName);
}

// A user's file, for the exports that open it.
class UserFile {
 public:
  UserFile(ISteamUser& user, const char* fileName)
      : hasPath_(FormPath(user, fileName, path_, kPathCapacity)) {}

  bool HasPath() const { return hasPath_; }

  // Returns true, with the size in bytes, if the path exists, even as a folder. By _stat64, since
  // 32 bits do not hold the size of every file.
  bool Find(std::int64_t& size) const {
    struct __stat64 status = {};
    if (_stat64(path_, &status) != 0) return false;
    size = status.st_size;
    return true;
  }

  // Denies nothing: others may use the file at the same time.
  OwnedFile Open(const char* mode) const { return OwnedFile(_fsopen(path_, mode, _SH_DENYNO)); }

 private:
  // Zero, so that nothing uninitialised becomes a path. Declared before hasPath_, whose initialiser
  // writes the path.
  char path_[kPathCapacity] = {};
  bool hasPath_;
};

}  // namespace
}  // namespace launcher

ResultCode QX_CALL QX_SteamAPI_GetUserDataFolder(char* destination, std::int32_t capacity) {
  if (destination == nullptr || capacity <= 0) return QX_BAD_ARGUMENT;
  ISteamUser* const user = SteamUser();
  if (user == nullptr) return QX_NO_STEAM;

  // Unlike in the other exports success is 1, and 0 means that Steam refused.
  return user->GetUserDataFolder(destination, capacity) ? 1 : 0;
}

ResultCode QX_CALL QX_SteamAPI_CatUserFilePath(char* destination, std::int32_t capacity,
                                               const char* fileName) {
  if (destination == nullptr || capacity <= 0 || fileName == nullptr) return QX_BAD_ARGUMENT;
  ISteamUser* const user = SteamUser();
  if (user == nullptr) return QX_NO_STEAM;

  return launcher::FormPath(*user, fileName, destination, capacity) ? QX_SUCCEEDED : QX_FAILED;
}

std::int32_t QX_CALL QX_SteamAPI_IsFileExist(const char* fileName) {
  if (fileName == nullptr) return 0;
  ISteamUser* const user = SteamUser();
  if (user == nullptr) return 0;

  const launcher::UserFile file(*user, fileName);
  std::int64_t size = 0;
  return file.HasPath() && file.Find(size) ? 1 : 0;
}

ResultCode QX_CALL QX_SteamAPI_ReadFile(const char* fileName, void* buffer,
                                        std::uint32_t capacity) {
  if (fileName == nullptr || buffer == nullptr || capacity == 0) return QX_BAD_ARGUMENT;
  ISteamUser* const user = SteamUser();
  if (user == nullptr) return QX_NO_STEAM;

  const launcher::UserFile file(*user, fileName);
  if (!file.HasPath()) return QX_FAILED;
  std::int64_t size = 0;
  if (!file.Find(size)) return QX_NOT_FOUND;
  // Nothing is read of a file that is empty, huge or larger than the buffer.
  if (size <= 0 || size > launcher::kMaxFileSize) return QX_READ_FAILED;
  if (size > capacity) return QX_BAD_ARGUMENT;

  const launcher::OwnedFile stream = file.Open("rb");
  if (!stream) return QX_OPEN_FAILED;
  // As one item: a file that has become shorter since is a failure, not a part of a file.
  return std::fread(buffer, static_cast<std::size_t>(size), 1, stream.get()) == 0 ? QX_READ_FAILED
                                                                                  : QX_SUCCEEDED;
}

ResultCode QX_CALL QX_SteamAPI_WriteFile(const char* fileName, const void* data,
                                         std::uint32_t size) {
  if (fileName == nullptr || data == nullptr || size == 0) return QX_BAD_ARGUMENT;
  ISteamUser* const user = SteamUser();
  if (user == nullptr) return QX_NO_STEAM;

  const launcher::UserFile file(*user, fileName);
  if (!file.HasPath()) return QX_FAILED;
  const launcher::OwnedFile stream = file.Open("wb");
  if (!stream) return QX_OPEN_FAILED;
  // Not buffered, so that a full disk fails the write and not only the close, whose result is not
  // used.
  std::setvbuf(stream.get(), nullptr, _IONBF, 0);
  return std::fwrite(data, size, 1, stream.get()) == 1 ? QX_SUCCEEDED : QX_WRITE_FAILED;
}
