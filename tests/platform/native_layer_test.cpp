// The native layer, if it could differ from Windows without another test noticing: backslashes
// before quotes, paths of the network that would lead to the root, a process that stays, and a pipe
// that a file replaces.

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include "platform/new_file.h"
#include "platform/posix/command_line.h"
#include "platform/win32.h"
#include "support/scratch_directory.h"
#include "support/system.h"

namespace launcher::posix {
namespace {

using NativeLayer = test::ScratchTest;

// The rules and most examples are from Microsoft's page on CommandLineToArgvW. They do not count
// for the program.
TEST_F(NativeLayer, SplitsCommandLinesAsWindowsDoes) {
  const std::string line = R"("C:\a game\p\" a\\\b d"e f"g h a\\\"b a\\\\"c d" e\ )";
  const std::vector<std::string> texts = {R"(C:\a game\p\)", R"(a\\\b)",  "de fg", "h",
                                          R"(a\"b)",         R"(a\\c d)", R"(e\)"};
  EXPECT_EQ(SplitCommandLine(line), texts);
}

TEST_F(NativeLayer, RefusesWhatIsNone) {
  const int firstFree = dup(0);
  close(firstFree);
  WIN32_FIND_DATAA entry;
  for (const char* const pattern : {"\\\\*.*", "//*.*", "\\\\server\\share\\*.*", "C:\\*.*", "."}) {
    EXPECT_EQ(FindFirstFileA(pattern, &entry), INVALID_HANDLE_VALUE);
  }
  EXPECT_EQ(_fsopen(".", "r", _SH_DENYNO), nullptr);
  EXPECT_EQ(OpenProcess(PROCESS_VM_READ, FALSE, 0x7FFFFFFF), nullptr);
  EXPECT_EQ(test::RunProgram("none"), -1);
  EXPECT_EQ(waitpid(-1, nullptr, WNOHANG), -1);
  mkfifo("pipe", 0600);
  NewFile file;
  EXPECT_EQ(file.CreateBeside("pipe"), 0);
  EXPECT_TRUE(MeansThatItExists(file.MoveTo("pipe", NewFile::Existing::kReplaced)));
  file.Abandon();
  EXPECT_EQ(dup(0), firstFree);
}

}  // namespace
}  // namespace launcher::posix
