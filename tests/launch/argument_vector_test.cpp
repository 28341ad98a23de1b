// For faults of QX_CommandLineToArgvA: arguments split or packed wrongly, a limit in bytes in place
// of characters, or of one too few. It reads the line of its process, so launch_child calls it.

#include <gtest/gtest.h>

#include <string>

#include "launch/launch_child.h"
#include "support/data_file.h"
#include "support/scratch_directory.h"
#include "support/system.h"

namespace launcher {
namespace {

using ArgumentVector = test::ScratchTest;

TEST_F(ArgumentVector, IsPackedIfTheCallerAllowsItsLengthInCharacters) {
  const std::string child = test::ProgramBeside("launch_child");
  // The path, a capacity of four digits and this, each with a terminator, make 1000.
  const std::string longest(1000 - (child.size() + 1 + 5 + 1), 'p');
  struct Case {
    std::string arguments;  // the first is the capacity
    std::string expected;   // result, count and texts; the first text is the child's path
  };
  const Case cases[] = {
      {"9999", "0 2\n" + child + "\n9999\n"},
      {"9999 a J\xC3\xB6rg", "0 4\n" + child + "\n9999\na\nJ\xC3\xB6rg\n"},
      {"9999  \"one two\" \"\" \"say \\\"x\\\"\" c\\\\d",
       "0 6\n" + child + "\n9999\none two\n\nsay \"x\"\nc\\\\d\n"},
      {"1000 " + longest, "0 3\n" + child + "\n1000\n" + longest + "\n"},
      {"1000 " + longest + "p", "-2 3\n"},
      {"0", "-2 2\n"},
  };
  for (const Case& tried : cases) {
    test::RunProgram('"' + child + "\" " + tried.arguments);
    EXPECT_EQ(test::ReadFile(test::kArgumentsFile), tried.expected);
  }
}

}  // namespace
}  // namespace launcher
