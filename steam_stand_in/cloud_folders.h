// Cloud files: each user has a folder that the game works with, and a folder in place of the cloud.

#ifndef LAUNCHER_STEAM_STAND_IN_CLOUD_FOLDERS_H_
#define LAUNCHER_STEAM_STAND_IN_CLOUD_FOLDERS_H_

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "steam_stand_in/files.h"
#include "steam_stand_in/steam_settings.h"

namespace launcher::stand_in {

struct CloudFile {
  std::string name;
  std::uint64_t size;
};

// Names are as the caller gives them. A name that CloudName refuses counts as a missing file.
class CloudFolders {
 public:
  CloudFolders(const Path& accountFolder, const SteamSettings& settings);

  // Does what Steam does when a game starts: replaces a copy in the cloud that differs from the
  // local file, and fetches a file that is missing here. Also removes what killed processes left.
  void CatchUp();

  bool Write(const char* name, const void* data, std::size_t size);
  std::size_t Read(const char* name, void* buffer, std::size_t capacity) const;
  // Removes the file from the cloud only.
  bool Forget(const char* name);
  bool Delete(const char* name);
  std::optional<std::uint64_t> Size(const char* name) const;

  // Makes the list that `At` uses. After a change by this process `At` makes a new list.
  std::size_t Count();
  // Null if the index is out of range.
  const CloudFile* At(std::size_t index);

  bool IsEnabledForAccount() const { return isEnabledForAccount_; }
  bool IsEnabledForApp() const { return isEnabledForApp_; }
  void EnableForApp(bool isEnabled) { isEnabledForApp_ = isEnabled; }

 private:
  bool ReachesCloud() const { return isEnabledForAccount_ && isEnabledForApp_; }
  bool FitsQuota(const Path& copy, std::uint64_t size) const;
  const std::vector<CloudFile>& List();

  Path local_;
  Path cloud_;
  Path staging_;
  bool isEnabledForAccount_;
  bool isEnabledForApp_;
  std::uint64_t quotaSize_;
  std::optional<std::vector<CloudFile>> list_;  // of the local files, in the order of their names
};

}  // namespace launcher::stand_in

#endif  // LAUNCHER_STEAM_STAND_IN_CLOUD_FOLDERS_H_
