// The native layer, if it could differ from Windows without another test noticing: backslashes
// before quotes, paths of the network that would lead to the root, and a process that stays.

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include "platform/posix/command_line.h"
#include "platform/win32.h"
#include "support/system.h"

namespace launcher::posix {
namespace {

// The rules and most examples are from Microsoft's page on CommandLineToArgvW.
TEST(NativeLayer, SplitsCommandLinesAsWindowsDoes) {
  const std::pair<const char*, std::vector<std::string>> cases[] = {
      {"", {}},
      {"p a\\\\\\b d\"e f\"g\th ", {"p", "a\\\\\\b", "de fg", "h"}},
      {"p a\\\\\\\"b c\\", {"p", "a\\\"b", "c\\"}},
      {"p a\\\\\\\\\"b c\" d", {"p", "a\\\\b c", "d"}},
      {"\"C:\\the game\\p\\\" a", {"C:\\the game\\p\\", "a"}},  // no backslash rule for the program
  };
  for (const auto& [line, texts] : cases) EXPECT_EQ(SplitCommandLine(std::string(line)), texts);
}

TEST(NativeLayer, RefusesWhatIsNoFileOrProgram) {
  const int firstFree = dup(0);
  close(firstFree);
  WIN32_FIND_DATAA entry = {};
  for (const char* const pattern : {"\\\\*.*", "//*.*", "\\\\server\\share\\*.*", "C:\\*.*", "."}) {
    EXPECT_EQ(FindFirstFileA(pattern, &entry), INVALID_HANDLE_VALUE) << pattern;
  }
  EXPECT_EQ(_fsopen(".", "r", _SH_DENYNO), nullptr);
  EXPECT_EQ(OpenProcess(PROCESS_VM_READ, FALSE, 0x7FFFFFFF), nullptr);
  EXPECT_EQ(test::RunProgram("no_program"), -1);
  EXPECT_EQ(waitpid(-1, nullptr, WNOHANG), -1);
  EXPECT_EQ(dup(0), firstFree);
}

}  // namespace
}  // namespace launcher::posix
