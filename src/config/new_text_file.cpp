// A file is written under a name of its own and then moved to its place, which the file system does
// in one step.

#include "config/new_text_file.h"

#include "platform/owners.h"
#include "platform/win32.h"

namespace launcher {
namespace {

// Beside `path`, since a move between volumes is a copy. No other thread that runs has this name.
std::string TemporaryPath(const char* path) {
  char suffix[32];
  std::snprintf(suffix, sizeof suffix, ".%08lx-%08lx.tmp",
                static_cast<unsigned long>(GetCurrentProcessId()),
                static_cast<unsigned long>(GetCurrentThreadId()));
  return std::string(path) + suffix;
}

bool WriteAndClose(OwnedFile file, const std::string& text) {
  const bool wrote = std::fwrite(text.data(), 1, text.size(), file.get()) == text.size();
  // The last bytes are written on closing, and that can fail as well.
  return std::fclose(file.release()) == 0 && wrote;
}

}  // namespace

bool CreateTextFile(const char* path, const std::string& text) {
  const std::string temporaryPath = TemporaryPath(path);
  OwnedFile file{_fsopen(temporaryPath.c_str(), "w", _SH_DENYNO)};
  if (!file) return false;

  constexpr DWORD kReplaceNothing = 0;
  if (WriteAndClose(std::move(file), text) &&
      MoveFileExA(temporaryPath.c_str(), path, kReplaceNothing)) {
    return true;
  }
  DeleteFileA(temporaryPath.c_str());
  return false;
}

}  // namespace launcher
