#include "support/scratch_directory.h"

#include <iterator>
#include <string>

#include "platform/win32.h"

namespace launcher::test {

namespace fs = std::filesystem;

ScratchDirectory::ScratchDirectory()
    : previous_(fs::current_path()),
      own_(previous_ / ("scratch-" + std::to_string(GetCurrentProcessId()))) {
  fs::remove_all(own_);
  fs::create_directory(own_);
  fs::current_path(own_);
}

ScratchDirectory::~ScratchDirectory() {
  fs::current_path(previous_);
  std::error_code ignored;
  fs::remove_all(own_, ignored);
}

std::size_t ScratchDirectory::FileCount() {
  const auto count = std::distance(fs::directory_iterator("."), fs::directory_iterator());
  return static_cast<std::size_t>(count);
}

}  // namespace launcher::test
