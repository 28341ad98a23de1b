// Cloud files: for each user a folder that the game works with, and one that plays the cloud.

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

// Names are as the caller gives them; one that is refused is a file that is not there.
class CloudFolders {
 public:
  CloudFolders(const Path& accountFolder, const SteamSettings& settings);

  // What Steam does when a game starts: the cloud gets what was changed without it, and what is
  // missing here is fetched from it. Also removes what killed writers left.
  void CatchUp();

  bool Write(const char* name, const void* data, std::size_t size);
  std::size_t Read(const char* name, void* buffer, std::size_t capacity) const;
  // The file stays here and leaves the cloud.
  bool Forget(const char* name);
  bool Delete(const char* name);
  std::optional<std::uint64_t> Size(const char* name) const;

  // The list that the index of `At` counts in is taken here, and again after a change by this
  // process.
  std::size_t Count();
  // Null for an index that is not there.
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
