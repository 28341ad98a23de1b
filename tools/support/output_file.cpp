#include "support/output_file.h"

#include <mutex>
#include <set>

#include "platform/mutex.h"
#include "support/process.h"

namespace launcher {
namespace {

namespace fs = std::filesystem;

// The temporary files that exist now. Never destroyed, since threads may still run at the end.
struct Temporaries {
  Mutex lock;
  std::set<SystemPath> paths;
};
Temporaries& OpenTemporaries() {
  static auto* const temporaries = new Temporaries;
  return *temporaries;
}

}  // namespace

fs::path PathOf(const std::string& text) {
  const SystemPath path = SystemPathOf(text.c_str());
  return path.c_str();
}

bool HasFileAt(const std::string& path) {
  std::error_code ignored;
  return fs::exists(fs::symlink_status(PathOf(path), ignored)) && !IsDevice(path);
}

SystemError WriteToStream(std::FILE* stream, const void* data, std::size_t size) {
  const bool isWritten = std::fwrite(data, 1, size, stream) == size && std::fflush(stream) == 0;
  return isWritten ? 0 : LastFileError();
}

SystemError OutputFile::Open(const std::string& path) {
  Abandon();
  std::error_code ignored;
  fs::path place = PathOf(path);
  // Opening a directory fails with the system's own error.
  if (IsDevice(path) || fs::is_directory(place, ignored)) {
    device_.reset(std::fopen(path.c_str(), "wb"));
    return device_ ? 0 : LastFileError();
  }
  if (fs::is_symlink(place, ignored) && fs::exists(place, ignored)) {
    place = fs::canonical(place, ignored);
  }
  place_ = place.c_str();
  const SystemError error = file_.CreateBeside(place_);
  if (error != 0) return error;
  const std::lock_guard<Mutex> guard(OpenTemporaries().lock);
  OpenTemporaries().paths.insert(file_.Temporary());
  return 0;
}

void OutputFile::TakeAfter(const fs::path& source) {
  std::error_code error;
  const fs::file_status status = fs::status(source, error);
  if (device_ || !fs::is_regular_file(status)) return;
  const fs::file_time_type time = fs::last_write_time(source, error);
  if (!error) time_ = time;
  SetPermissions(file_.Temporary().c_str(), status.permissions());
}

SystemError OutputFile::Write(const void* data, std::size_t size) {
  return device_ ? WriteToStream(device_.get(), data, size) : file_.Write(data, size);
}

SystemError OutputFile::Commit(NewFile::Existing existing, bool isSafe) {
  if (device_) return std::fclose(device_.release()) == 0 ? 0 : LastFileError();
  if (isSafe) {
    if (const SystemError error = file_.Flush(); error != 0) return error;
  }
  const SystemPath temporary = file_.Temporary();
  // With a time, TakeAfter has also set the permissions.
  if (time_ && existing == NewFile::Existing::kReplaced) {
    existing = NewFile::Existing::kReplacedWithOwnMode;
  }
  if (const SystemError error = file_.MoveTo(place_, existing); error != 0) return error;
  std::error_code ignored;
  if (time_) fs::last_write_time(place_.c_str(), *time_, ignored);
  const std::lock_guard<Mutex> guard(OpenTemporaries().lock);
  OpenTemporaries().paths.erase(temporary);
  return 0;
}

void OutputFile::Abandon() {
  device_.reset();
  time_.reset();
  // Makes no copy of the path: the destructor calls this, and must not need memory.
  const std::lock_guard<Mutex> guard(OpenTemporaries().lock);
  OpenTemporaries().paths.erase(file_.Temporary());
  file_.Abandon();
}

SystemError WriteOutputFile(const std::string& path, const std::string& bytes,
                            NewFile::Existing existing) {
  OutputFile file;
  SystemError error = file.Open(path);
  if (error == 0) error = file.Write(bytes.data(), bytes.size());
  if (error == 0) error = file.Commit(existing);
  return error;
}

void AbandonOutputFiles() {
  const std::lock_guard<Mutex> guard(OpenTemporaries().lock);
  std::error_code ignored;
  for (const SystemPath& path : OpenTemporaries().paths) fs::remove(path.c_str(), ignored);
}

}  // namespace launcher
