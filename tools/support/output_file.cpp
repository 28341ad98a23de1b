#include "support/output_file.h"

#include <filesystem>
#include <mutex>
#include <set>
#include <utility>

#include "platform/mutex.h"

namespace launcher {
namespace {

// The temporary files that exist now. Never destroyed, since threads may outlive it.
struct Temporaries {
  Mutex lock;
  std::set<SystemPath> paths;
};
Temporaries& OpenTemporaries() {
  static auto* const temporaries = new Temporaries;
  return *temporaries;
}

void Remember(const SystemPath& path) {
  const std::lock_guard<Mutex> guard(OpenTemporaries().lock);
  OpenTemporaries().paths.insert(path);
}

void Forget(const SystemPath& path) {
  const std::lock_guard<Mutex> guard(OpenTemporaries().lock);
  OpenTemporaries().paths.erase(path);
}

}  // namespace

SystemError OutputFile::Open(const std::string& path) {
  Abandon();
  const SystemError deviceError = OpenDevice(path, &device_);
  if (deviceError != 0 || device_ != kNone) return deviceError;
  place_ = SystemPathOf(ResolvedPath(path).c_str());
  const SystemError error = file_.CreateBeside(place_);
  if (error == 0) Remember(file_.Temporary());
  return error;
}

SystemError OutputFile::Write(const void* data, std::size_t size) {
  return device_ != kNone ? WriteToDevice(device_, data, size) : file_.Write(data, size);
}

SystemError OutputFile::Commit(NewFile::Existing existing, bool isSafe) {
  if (device_ != kNone) return CloseDevice(std::exchange(device_, kNone));
  if (isSafe) {
    if (const SystemError error = file_.Flush(); error != 0) return error;
  }
  const SystemPath temporary = file_.Temporary();
  const SystemError error = file_.MoveTo(place_, existing);
  if (error == 0) Forget(temporary);
  return error;
}

void OutputFile::Abandon() {
  if (device_ != kNone) CloseDevice(std::exchange(device_, kNone));
  // No copy of the path: a destructor must not need memory.
  const std::lock_guard<Mutex> guard(OpenTemporaries().lock);
  OpenTemporaries().paths.erase(file_.Temporary());
  file_.Abandon();
}

SystemError WriteOutputFile(const std::string& path, const std::string& bytes,
                            NewFile::Existing existing, bool isSafe) {
  OutputFile file;
  SystemError error = file.Open(path);
  if (error == 0) error = file.Write(bytes.data(), bytes.size());
  if (error == 0) error = file.Commit(existing, isSafe);
  return error;
}

void AbandonOutputFiles() {
  const std::lock_guard<Mutex> guard(OpenTemporaries().lock);
  std::error_code ignored;
  for (const SystemPath& path : OpenTemporaries().paths) {
    std::filesystem::remove(path.c_str(), ignored);
  }
}

}  // namespace launcher
