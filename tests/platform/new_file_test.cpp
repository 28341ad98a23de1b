// New files that get their name when they are complete. Finds a file of somebody else that is
// written to, one that stays without MoveTo, and a name longer than that of the settings. The tests
// of bfbr replace files.

#include "platform/new_file.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "support/scratch_directory.h"

namespace launcher {
namespace {

using NewFileTest = test::ScratchTest;

// Killed processes that had the same numbers leave such names.
TEST_F(NewFileTest, TakesAFreeNameAndIsRemovedWithoutMoveTo) {
  for (std::size_t i = 0; i < 10; ++i) {
    NewFile file;
    ASSERT_EQ(file.CreateBeside(SystemPathOf("place")), 0);
    const SystemPath taken = file.Temporary();
    EXPECT_LE(taken.size(), 11u);
    ASSERT_EQ(file.CreateBeside(SystemPathOf("place")), 0);
    EXPECT_EQ(test::ScratchDirectory::FileCount(), i + 1);
    file.Abandon();
    std::filesystem::create_directory(taken.c_str());
    EXPECT_TRUE(MeansThatItExists(NewFile().Create(taken)));
  }
}

}  // namespace
}  // namespace launcher
