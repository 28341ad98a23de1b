#include <filesystem>

#include "support/system.h"

namespace launcher::test {

const char* const kLineEnd = "\n";

std::string ProgramBeside(const std::string& name) {
  return (std::filesystem::read_symlink("/proc/self/exe").parent_path() / name).string();
}

int OpenHandleCount() {
  int count = 0;
  for (const auto& entry : std::filesystem::directory_iterator("/proc/self/fd")) {
    count += entry.path().empty() ? 0 : 1;
  }
  return count;
}

}  // namespace launcher::test
