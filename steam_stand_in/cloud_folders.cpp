// The game's folder and the cloud's folder hold each file under its own name. A file is written in
// a third folder on the same volume and then moved, so that nobody sees half a file.

#include "steam_stand_in/cloud_folders.h"

#include <algorithm>
#include <cstdlib>
#include <numeric>

#include "platform/new_file.h"
#include "steam_stand_in/cloud_name.h"

namespace launcher::stand_in {
namespace {

namespace fs = std::filesystem;

// The path of a file of this name below `root`. None if the name is refused, or if a part of the
// path is a link, which could lead outside `root`.
std::optional<Path> PathBelow(const Path& root, const char* name) {
  const std::optional<std::string> cloudName = CloudName(name);
  if (!cloudName) return std::nullopt;
  Path path = root;
  for (const Path& component : fs::u8path(*cloudName)) {
    path /= component;
    if (IsLink(path)) return std::nullopt;
  }
  return path;
}

std::optional<std::uint64_t> FileSize(const Path& path) {
  std::error_code error;
  if (!fs::is_regular_file(path, error)) return std::nullopt;
  const std::uint64_t size = fs::file_size(path, error);
  if (error) return std::nullopt;
  return size;
}

void AddFiles(const Path& folder, const std::string& prefix, std::vector<CloudFile>* files) {
  std::error_code error;
  for (const fs::directory_entry& entry : fs::directory_iterator(folder, error)) {
    const std::string name = prefix + entry.path().filename().u8string();
    // Skips what cannot be a cloud file and was put here by hand.
    if (!CloudName(name.c_str()) || IsLink(entry.path())) continue;
    if (fs::is_directory(entry.path(), error)) {
      AddFiles(entry.path(), name + '/', files);
    } else if (const auto size = FileSize(entry.path())) {
      files->push_back({name, *size});
    }
  }
}

std::vector<CloudFile> FilesBelow(const Path& root) {
  std::vector<CloudFile> files;
  AddFiles(root, "", &files);
  std::sort(files.begin(), files.end(),
            [](const CloudFile& a, const CloudFile& b) { return a.name < b.name; });
  return files;
}

// A file under a temporary name, with its whole content on the disk. The destructor removes it,
// unless MoveTo succeeded.
class StagedFile {
 public:
  StagedFile(const Path& folder, const void* data, std::size_t size) {
    static unsigned long lastNumber = 0;
    std::error_code error;
    fs::create_directories(folder, error);
    const Path path =
        folder / (std::to_string(OwnProcessId()) + '-' + std::to_string(++lastNumber));
    isWhole_ =
        file_.Create(path.c_str()) == 0 && file_.Write(data, size) == 0 && file_.Flush() == 0;
  }

  bool IsWhole() const { return isWhole_; }

  bool MoveTo(const Path& target) {
    std::error_code error;
    fs::create_directories(target.parent_path(), error);
    return file_.MoveTo(target.c_str(), NewFile::Existing::kReplaced) == 0;
  }

 private:
  NewFile file_;
  bool isWhole_ = false;
};

// Keeps the files of running processes, which may still write them: a file's name begins with the
// id of its process. This process writes none now, so one with its id is from an earlier process.
void RemoveLeftovers(const Path& staging) {
  std::error_code error;
  for (const fs::directory_entry& entry : fs::directory_iterator(staging, error)) {
    const std::string name = entry.path().filename().u8string();
    const unsigned long writer = std::strtoul(name.c_str(), nullptr, 10);
    if (writer == OwnProcessId() || !IsProcessRunning(writer)) fs::remove(entry.path(), error);
  }
}

// Also removes the folders that are empty then: otherwise no file could have the name of one.
bool RemoveFile(const Path& path, const Path& root) {
  std::error_code error;
  if (!fs::remove(path, error)) return false;
  for (Path folder = path.parent_path(); folder != root; folder = folder.parent_path()) {
    if (!fs::remove(folder, error)) break;
  }
  return true;
}

bool IsSameFile(const Path& a, const Path& b) {
  return FileSize(a) == FileSize(b) && ReadWhole(a) == ReadWhole(b);
}

}  // namespace

CloudFolders::CloudFolders(const Path& accountFolder, const SteamSettings& settings)
    : local_(accountFolder / "remote"),
      cloud_(accountFolder / "cloud"),
      staging_(accountFolder / "staging"),
      isEnabledForAccount_(settings.cloudEnabledForAccount),
      isEnabledForApp_(settings.cloudEnabledForApp),
      quotaSize_(settings.quotaBytes) {}

void CloudFolders::CatchUp() {
  RemoveLeftovers(staging_);
  if (!ReachesCloud()) return;
  // A local file without a copy stays out of the cloud, as after Forget.
  for (const CloudFile& file : FilesBelow(cloud_)) {
    const std::optional<Path> local = PathBelow(local_, file.name.c_str());
    const Path copy = cloud_ / fs::u8path(file.name);
    if (!local || IsSameFile(*local, copy)) continue;

    const std::optional<std::uint64_t> localSize = FileSize(*local);
    if (localSize && !FitsQuota(copy, *localSize)) continue;
    const std::optional<std::string> content = ReadWhole(localSize ? *local : copy);
    if (!content) continue;
    StagedFile staged(staging_, content->data(), content->size());
    if (staged.IsWhole()) staged.MoveTo(localSize ? copy : *local);
  }
}

// The bytes of `copy` do not count, since the new file replaces it.
bool CloudFolders::FitsQuota(const Path& copy, std::uint64_t size) const {
  const std::vector<CloudFile> files = FilesBelow(cloud_);
  const std::uint64_t used =
      std::accumulate(files.begin(), files.end(), std::uint64_t{0},
                      [](std::uint64_t sum, const CloudFile& file) { return sum + file.size; });
  const std::uint64_t kept = used - std::min(used, FileSize(copy).value_or(0));
  return kept <= quotaSize_ && size <= quotaSize_ - kept;
}

bool CloudFolders::Write(const char* name, const void* data, std::size_t size) {
  const std::optional<Path> local = PathBelow(local_, name);
  const std::optional<Path> copy = PathBelow(cloud_, name);
  if (!local || !copy) return false;
  if (ReachesCloud() && !FitsQuota(*copy, size)) return false;

  // Both are written before either is moved, because a full disk shows here.
  StagedFile forLocal(staging_, data, size);
  if (!forLocal.IsWhole()) return false;
  std::optional<StagedFile> forCloud;
  if (ReachesCloud() && !forCloud.emplace(staging_, data, size).IsWhole()) return false;

  if (!forLocal.MoveTo(*local)) return false;
  list_.reset();
  // The write has succeeded, whatever becomes of the copy. If an older copy stays, CatchUp replaces
  // it when the next session starts.
  if (forCloud) forCloud->MoveTo(*copy);
  return true;
}

std::size_t CloudFolders::Read(const char* name, void* buffer, std::size_t capacity) const {
  const std::optional<Path> local = PathBelow(local_, name);
  if (!local || !FileSize(*local)) return 0;
  return ReadStart(*local, buffer, capacity).value_or(0);
}

bool CloudFolders::Forget(const char* name) {
  const std::optional<Path> copy = PathBelow(cloud_, name);
  if (!Size(name) || !copy) return false;
  return !FileSize(*copy) || RemoveFile(*copy, cloud_);
}

// Removes the copy first. If the process ends in between, a local file without a copy counts as
// forgotten; a copy without a local file would be fetched again.
bool CloudFolders::Delete(const char* name) {
  if (!Forget(name)) return false;
  list_.reset();
  return RemoveFile(*PathBelow(local_, name), local_);
}

std::optional<std::uint64_t> CloudFolders::Size(const char* name) const {
  const std::optional<Path> local = PathBelow(local_, name);
  if (!local) return std::nullopt;
  return FileSize(*local);
}

std::size_t CloudFolders::Count() {
  list_.reset();
  return List().size();
}

const CloudFile* CloudFolders::At(std::size_t index) {
  const std::vector<CloudFile>& files = List();
  return index < files.size() ? &files[index] : nullptr;
}

const std::vector<CloudFile>& CloudFolders::List() {
  if (!list_) list_ = FilesBelow(local_);
  return *list_;
}

}  // namespace launcher::stand_in
