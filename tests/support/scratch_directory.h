// A directory of a test's own.

#ifndef LAUNCHER_TESTS_SUPPORT_SCRATCH_DIRECTORY_H_
#define LAUNCHER_TESTS_SUPPORT_SCRATCH_DIRECTORY_H_

#include <gtest/gtest.h>

#include <filesystem>

namespace launcher::test {

// Makes an empty directory and works in it; goes back and removes it at the end.
class ScratchDirectory {
 public:
  ScratchDirectory();
  ~ScratchDirectory();

  // The names in it.
  static std::size_t FileCount();

 private:
  std::filesystem::path previous_;
  std::filesystem::path own_;
};

// A test that reads and writes files in its current directory.
struct ScratchTest : testing::Test {
  ScratchDirectory scratch;
};

}  // namespace launcher::test

#endif  // LAUNCHER_TESTS_SUPPORT_SCRATCH_DIRECTORY_H_
