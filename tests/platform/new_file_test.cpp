// New files that get their name when they are complete. Finds a file of somebody else that is
// replaced or written to, one that stays after a failure, and a line end of another system.

#include "platform/new_file.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "support/data_file.h"
#include "support/scratch_directory.h"
#include "support/system.h"

namespace launcher {
namespace {

using Existing = NewFile::Existing;
using NewFileTest = test::ScratchTest;

TEST_F(NewFileTest, ReplacesOnlyFilesAndOnlyOnRequest) {
  const SystemPath place = SystemPathOf("place");
  const auto make = [&](const std::string& text, Existing existing) {
    NewFile file;
    EXPECT_EQ(file.CreateBeside(place), 0);
    EXPECT_LE(file.Temporary().size(), 11u);
    EXPECT_EQ(file.WriteText(text) + file.Flush(), 0);
    return file.MoveTo(place, existing);
  };
  EXPECT_EQ(make("one\ntwo\n", Existing::kStays), 0);
  EXPECT_EQ(test::ReadFile("place"), std::string("one") + test::kLineEnd + "two" + test::kLineEnd);
  EXPECT_TRUE(MeansThatItExists(make("new", Existing::kStays)));
  EXPECT_EQ(make("new", Existing::kReplaced), 0);
  EXPECT_EQ(test::ReadFile("place"), "new");
  EXPECT_EQ(make("new", Existing::kReplacedWithOwnMode), 0);
  std::filesystem::remove("place");
  std::filesystem::create_directory("place");
  EXPECT_NE(make("new", Existing::kStays), 0);
  EXPECT_NE(make("new", Existing::kReplaced), 0);
  EXPECT_EQ(test::ScratchDirectory::FileCount(), 1u);
}

// Killed processes that had the same numbers leave such names.
TEST_F(NewFileTest, TakesAFreeNameAndIsRemovedWithoutMoveTo) {
  for (std::size_t i = 0; i < 10; ++i) {
    NewFile file;
    ASSERT_EQ(file.CreateBeside(SystemPathOf("place")), 0);
    const SystemPath taken = file.Temporary();
    ASSERT_EQ(file.CreateBeside(SystemPathOf("place")), 0);
    EXPECT_EQ(test::ScratchDirectory::FileCount(), i + 1);
    file.Abandon();
    std::filesystem::create_directory(taken.c_str());
    EXPECT_TRUE(MeansThatItExists(NewFile().Create(taken)));
  }
  EXPECT_EQ(test::ScratchDirectory::FileCount(), 10u);
}

}  // namespace
}  // namespace launcher
