// QX_CommandLineToArgvA answers for the process that calls it, so launch_child calls it.

#include <gtest/gtest.h>

#include <string>

#include "launch/launch_child.h"
#include "launcher_dll.h"
#include "support/data_file.h"
#include "support/run_program.h"
#include "support/scratch_directory.h"
#include "support/system.h"

namespace launcher {
namespace {

class ArgumentVector : public test::ScratchTest {
 protected:
  const std::string child_ = test::ProgramBeside("launch_child");

  // What the child makes of its arguments, of which `capacity` is the first.
  std::string Answer(std::uint32_t capacity, const std::string& arguments) const {
    test::RunProgram('"' + child_ + "\" " + std::to_string(capacity) + arguments);
    return test::ReadFile(test::kArgumentsFile);
  }
};

TEST_F(ArgumentVector, IsSplitByTheSystemsRules) {
  const std::string start = child_ + "\n9999\n";
  EXPECT_EQ(Answer(9999, ""), "0 2\n" + start);
  EXPECT_EQ(Answer(9999, " a b"), "0 4\n" + start + "a\nb\n");
  EXPECT_EQ(Answer(9999, "  \"one two\" \"\" \"say \\\"x\\\"\" c\\\\d"),
            "0 6\n" + start + "one two\n\nsay \"x\"\nc\\\\d\n");
  EXPECT_EQ(Answer(9999, " J\xC3\xB6rg"), "0 3\n" + start + "J\xC3\xB6rg\n") << "more than ASCII";
}

TEST_F(ArgumentVector, IsLimitedByItsLengthInCharacters) {
  // The path, the capacity's four digits and an argument of three, each with a terminator.
  const auto total = static_cast<std::uint32_t>(child_.size() + 1 + 5 + 4);
  ASSERT_LT(total, 1000u);
  const std::string digits = std::to_string(1000 + total);  // four digits too
  EXPECT_EQ(Answer(1000 + total, " abc"), "0 3\n" + child_ + "\n" + digits + "\nabc\n");

  // With padding that brings the length to the capacity, and then one further.
  const std::string padding(1000 - total, 'p');
  EXPECT_EQ(Answer(1000, " abc" + padding).substr(0, 4), "0 3\n");
  EXPECT_EQ(Answer(1000, " abc" + padding + "p"), "-2 3\n");
}

}  // namespace
}  // namespace launcher
