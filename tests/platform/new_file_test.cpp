#include "platform/new_file.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <string>

#include "support/data_file.h"
#include "support/scratch_directory.h"
#include "support/system.h"

namespace launcher {
namespace {

using Existing = NewFile::Existing;

class NewFileTest : public test::ScratchTest {
 protected:
  // Creates the file "place" with this text.
  static SystemError Make(const std::string& text, Existing existing) {
    NewFile file;
    const SystemPath place = SystemPathOf("place");
    SystemError error = file.CreateBeside(place);
    if (error == 0) error = file.WriteText(text);
    if (error == 0) error = file.Flush();
    if (error == 0) error = file.MoveTo(place, existing);
    return error;
  }
};

TEST_F(NewFileTest, HasTheSystemsLineEnds) {
  EXPECT_EQ(Make("one\ntwo\n", Existing::kStays), 0);
  EXPECT_EQ(test::ReadFile("place"), std::string("one") + test::kLineEnd + "two" + test::kLineEnd);
  EXPECT_EQ(test::ScratchDirectory::FileCount(), 1u);
}

TEST_F(NewFileTest, ReplacesOnlyIfToldTo) {
  test::WriteFile("place", "old");
  EXPECT_NE(Make("new", Existing::kStays), 0);
  EXPECT_EQ(test::ReadFile("place"), "old");
  EXPECT_EQ(Make("new", Existing::kReplaced), 0);
  EXPECT_EQ(test::ReadFile("place"), "new");
  EXPECT_EQ(test::ScratchDirectory::FileCount(), 1u);
}

TEST_F(NewFileTest, LeavesNothingWithoutMoveTo) {
  NewFile file;
  EXPECT_NE(file.CreateBeside(SystemPathOf("no_such_directory/place")), 0);
  ASSERT_EQ(file.CreateBeside(SystemPathOf("place")), 0);
  EXPECT_EQ(test::ScratchDirectory::FileCount(), 1u);
  file.Abandon();
  EXPECT_EQ(test::ScratchDirectory::FileCount(), 0u);
}

TEST_F(NewFileTest, WritesThroughNothingThatHasTheTemporaryName) {
  const SystemPath name = SystemPathOf("planted");
  test::WriteFile("planted", "kept");
  NewFile file;
  EXPECT_NE(file.Create(name), 0);
  EXPECT_EQ(test::ReadFile("planted"), "kept");
}

TEST_F(NewFileTest, DoesNotTakeTheNumberOfAnotherOpenFile) {
  NewFile first;
  NewFile second;
  ASSERT_EQ(first.CreateBeside(SystemPathOf("place")), 0);
  ASSERT_EQ(second.CreateBeside(SystemPathOf("place")), 0);
  const auto number = [](const NewFile& file) {
    const SystemPath digits = file.Temporary().substr(1, 6);
    return std::stol(std::string(digits.begin(), digits.end()), nullptr, 16);
  };
  // The next number would be that of a second try.
  EXPECT_GT(std::abs(number(first) - number(second)), 1);
}

// Files of killed processes, which may have had the same numbers.
TEST_F(NewFileTest, TakesAnotherNameIfOneExists) {
  std::vector<SystemPath> taken;
  for (int i = 0; i < 100; ++i) {
    NewFile file;
    ASSERT_EQ(file.CreateBeside(SystemPathOf("place")), 0);
    taken.push_back(file.Temporary());
    EXPECT_LE(taken.back().size(), std::string("config.json").size());
    file.Abandon();
    std::filesystem::create_directory(taken.back().c_str());
  }
  EXPECT_EQ(Make("new", Existing::kStays), 0);
}

}  // namespace
}  // namespace launcher
