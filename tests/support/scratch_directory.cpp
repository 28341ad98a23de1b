#include "support/scratch_directory.h"

#include <iterator>
#include <string>

#include "platform/win32.h"

namespace launcher::test {

namespace fs = std::filesystem;

ScratchDirectory::ScratchDirectory() : previous_(fs::current_path()) {
  // On Windows a directory stays as long as a process works in it, and a client's console may for a
  // while: each gets a name that is free.
  const std::string name = "scratch-" + std::to_string(GetCurrentProcessId()) + '-';
  int number = 0;
  do {
    own_ = previous_ / (name + std::to_string(++number));
  } while (!fs::create_directory(own_));
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
