// New files that get their name when they are complete. Finds a file of somebody else that is
// replaced or written to, one that stays after a failure, and a line end of another system.

#include "platform/new_file.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "support/data_file.h"
#include "support/scratch_directory.h"
#include "support/system.h"

namespace launcher {
namespace {

using Existing = NewFile::Existing;
using NewFileTest = test::ScratchTest;

const SystemPath kPlace = SystemPathOf("place");

SystemError Make(const std::string& text, Existing existing) {
  NewFile file;
  SystemError error = file.CreateBeside(kPlace);
  if (error == 0) error = file.WriteText(text);
  if (error == 0) error = file.Flush();
  return error == 0 ? file.MoveTo(kPlace, existing) : error;
}

TEST_F(NewFileTest, ReplacesOnlyFilesAndOnlyIfToldTo) {
  EXPECT_EQ(Make("one\ntwo\n", Existing::kStays), 0);
  EXPECT_EQ(test::ReadFile("place"), std::string("one") + test::kLineEnd + "two" + test::kLineEnd);
  EXPECT_TRUE(MeansThatItExists(Make("new", Existing::kStays)));
  EXPECT_EQ(test::ReadFile("place").substr(0, 3), "one");
  for (const Existing existing : {Existing::kReplaced, Existing::kReplacedWithOwnMode}) {
    EXPECT_EQ(Make("new", existing), 0);
    EXPECT_EQ(test::ReadFile("place"), "new");
  }
  std::filesystem::remove("place");
  std::filesystem::create_directory("place");
  for (const Existing existing : {Existing::kStays, Existing::kReplaced}) {
    EXPECT_NE(Make("new", existing), 0);
  }
  EXPECT_EQ(test::ScratchDirectory::FileCount(), 1u);
}

TEST_F(NewFileTest, IsNewAndGoesWithoutMoveTo) {
  test::WriteFile("place", "kept");
  {
    NewFile file;
    EXPECT_TRUE(MeansThatItExists(file.Create(kPlace)));
    EXPECT_NE(file.CreateBeside(SystemPathOf("no_such_directory/place")), 0);
    ASSERT_EQ(file.CreateBeside(kPlace), 0);
    ASSERT_EQ(file.CreateBeside(kPlace), 0) << "which removes the first one";
    EXPECT_EQ(test::ScratchDirectory::FileCount(), 2u);
  }
  EXPECT_EQ(test::ScratchDirectory::FileCount(), 1u);
  EXPECT_EQ(test::ReadFile("place"), "kept");
}

// Killed processes that had the same numbers leave such names.
TEST_F(NewFileTest, TakesAnotherNameIfOneExists) {
  for (int i = 0; i < 10; ++i) {
    NewFile file;
    ASSERT_EQ(file.CreateBeside(kPlace), 0);
    const SystemPath taken = file.Temporary();
    EXPECT_LE(taken.size(), sizeof "config.json" - 1);
    file.Abandon();
    std::filesystem::create_directory(taken.c_str());
  }
  EXPECT_EQ(test::ScratchDirectory::FileCount(), 10u);
}

}  // namespace
}  // namespace launcher
