#include "config/new_text_file.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <filesystem>

#include "platform/win32.h"
#include "support/data_file.h"
#include "support/scratch_directory.h"
#include "support/system.h"

namespace launcher {
namespace {

using NewTextFile = test::ScratchTest;

TEST_F(NewTextFile, IsWrittenWithThePlatformsLineEnds) {
  EXPECT_TRUE(CreateTextFile("a.txt", "one\ntwo\n"));
  EXPECT_EQ(test::ReadFile("a.txt"), std::string("one") + test::kLineEnd + "two" + test::kLineEnd);
  EXPECT_EQ(test::ScratchDirectory::FileCount(), 1u);
}

TEST_F(NewTextFile, ReplacesNothing) {
  test::WriteFile("a.txt", "kept");
  EXPECT_FALSE(CreateTextFile("a.txt", "new"));
  EXPECT_EQ(test::ReadFile("a.txt"), "kept");
  EXPECT_EQ(test::ScratchDirectory::FileCount(), 1u);
}

TEST_F(NewTextFile, LeavesNothingWhereItCannotBeMade) {
  EXPECT_FALSE(CreateTextFile("no_such_directory/a.txt", "new"));
  EXPECT_EQ(test::ScratchDirectory::FileCount(), 0u);
}

// Else two that start at the same moment would write the same file.
TEST_F(NewTextFile, IsWrittenUnderANameOfItsThread) {
  char name[40];
  std::snprintf(name, sizeof name, "a.txt.%08lx-%08lx.tmp",
                static_cast<unsigned long>(GetCurrentProcessId()),
                static_cast<unsigned long>(GetCurrentThreadId()));
  std::filesystem::create_directory(name);
  EXPECT_FALSE(CreateTextFile("a.txt", "new"));
  EXPECT_EQ(test::ScratchDirectory::FileCount(), 1u);
}

}  // namespace
}  // namespace launcher
