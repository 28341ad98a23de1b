// The native layer, where it could differ from Windows without another test noticing: quotes and
// backslashes, addresses above 4 GiB, a bad address that ends the program, paths, and processes.

#include <gtest/gtest.h>
#include <sys/wait.h>

#include <cerrno>
#include <string>
#include <vector>

#include "platform/posix/command_line.h"
#include "platform/posix/faults.h"
#include "platform/win32.h"
#include "support/data_file.h"
#include "support/scratch_directory.h"

namespace launcher::posix {
namespace {

// The rules and most examples are from Microsoft's page on CommandLineToArgvW.
TEST(NativeLayer, SplitsCommandLinesAsWindowsDoes) {
  const std::pair<const char*, std::vector<std::string>> cases[] = {
      {"", {}},
      {"p a  b\tc ", {"p", "a", "b", "c"}},
      {"p \"a b c\" d e", {"p", "a b c", "d", "e"}},
      {"p \"ab\\\"c\" \"\\\\\" d", {"p", "ab\"c", "\\", "d"}},
      {"p a\\\\\\b d\"e f\"g h", {"p", "a\\\\\\b", "de fg", "h"}},
      {"p a\\\\\\\"b c d", {"p", "a\\\"b", "c", "d"}},
      {"p a\\\\\\\\\"b c\" d e", {"p", "a\\\\b c", "d", "e"}},
      {"p \"\" x a\\", {"p", "", "x", "a\\"}},
      {"\"C:\\the game\\p\\\" a", {"C:\\the game\\p\\", "a"}},  // no backslash rule for the program
  };
  for (const auto& [line, texts] : cases) EXPECT_EQ(SplitCommandLine(std::string(line)), texts);
}

TEST(NativeLayer, KeepsBlocksBelow4GibAndRefusesOtherMemory) {
  const HANDLE self = OpenProcess(PROCESS_VM_READ, FALSE, GetCurrentProcessId());
  void* const block =
      VirtualAllocEx(self, nullptr, 1 << 20, MEM_RESERVE | MEM_COMMIT, PAGE_READWRITE);
  ASSERT_NE(block, nullptr);
  EXPECT_LT(reinterpret_cast<std::uintptr_t>(block), std::uintptr_t{1} << 32);
  EXPECT_TRUE(VirtualFreeEx(self, block, 0, MEM_RELEASE));
  EXPECT_FALSE(VirtualFreeEx(self, block, 0, MEM_RELEASE));
  char byte = 0;
  EXPECT_FALSE(ReadProcessMemory(self, block, &byte, 1, nullptr));
  EXPECT_EQ(GetLastError(), kErrorNoAccess);
  EXPECT_FALSE(WriteProcessMemory(self, block, &byte, 1, nullptr));
  CloseHandle(self);
  EXPECT_EQ(OpenObjectCount(), 0);
}

TEST(NativeLayer, LeavesNoZombieOfAFailedStart) {
  STARTUPINFOA startup = {};
  startup.cb = sizeof startup;
  PROCESS_INFORMATION started = {};
  char line[] = "no program";
  EXPECT_FALSE(CreateProcessA(nullptr, line, nullptr, nullptr, FALSE, CREATE_NEW_CONSOLE, nullptr,
                              nullptr, &startup, &started));
  EXPECT_EQ(waitpid(-1, nullptr, WNOHANG), -1);
  EXPECT_EQ(errno, ECHILD);
  EXPECT_EQ(OpenProcess(PROCESS_VM_READ, FALSE, 0x7FFFFFFF), nullptr);
}

using NativeLayerFiles = test::ScratchTest;

TEST_F(NativeLayerFiles, HaveTheNamesOfWindows) {
  std::filesystem::create_directory("sub");
  test::WriteFile("sub/a", "a");
  EXPECT_EQ(_fsopen("sub", "r", _SH_DENYNO), nullptr);
  EXPECT_TRUE(DeleteFileA("sub\\a"));
  EXPECT_FALSE(DeleteFileA("sub\\a"));
  // On Windows the first ones are in the network; here they must not be the root.
  WIN32_FIND_DATAA entry = {};
  for (const char* const pattern : {"\\\\*.*", "//*.*", "\\\\server\\share\\*.*", "C:\\*.*", "."}) {
    EXPECT_EQ(FindFirstFileA(pattern, &entry), INVALID_HANDLE_VALUE) << pattern;
  }
}

}  // namespace
}  // namespace launcher::posix
