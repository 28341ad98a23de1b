// What the native layer promises beyond what the library's own tests show.

#include <gtest/gtest.h>
#include <sys/time.h>
#include <sys/wait.h>

#include <cerrno>
#include <csignal>
#include <string>
#include <vector>

#include "platform/posix/command_line.h"
#include "platform/posix/faults.h"
#include "platform/win32.h"
#include "support/data_file.h"
#include "support/scratch_directory.h"

namespace launcher::posix {
namespace {

// The rules and the examples are those of Microsoft's page on CommandLineToArgvW.
TEST(NativeLayer, SplitsCommandLinesAsWindowsDoes) {
  const std::pair<const char*, std::vector<std::string>> cases[] = {
      {"", {}},
      {"program", {"program"}},
      {"\"C:\\the game\\client.exe\" 00001a2b", {"C:\\the game\\client.exe", "00001a2b"}},
      {"p a  b\tc ", {"p", "a", "b", "c"}},
      {"p \"a b c\" d e", {"p", "a b c", "d", "e"}},
      {"p \"ab\\\"c\" \"\\\\\" d", {"p", "ab\"c", "\\", "d"}},
      {"p a\\\\\\b d\"e f\"g h", {"p", "a\\\\\\b", "de fg", "h"}},
      {"p a\\\\\\\"b c d", {"p", "a\\\"b", "c", "d"}},
      {"p a\\\\\\\\\"b c\" d e", {"p", "a\\\\b c", "d", "e"}},
      {"p \"\" x", {"p", "", "x"}},
      {"p a\\", {"p", "a\\"}},
      {"\"p\\\" a", {"p\\", "a"}},  // the program's name knows no backslash rule
  };
  for (const auto& [line, texts] : cases) EXPECT_EQ(SplitCommandLine(std::string(line)), texts);
}

TEST(NativeLayer, PlacesBlocksWhereAnAddressOf32BitsReaches) {
  const HANDLE self = OpenProcess(PROCESS_VM_READ, FALSE, GetCurrentProcessId());
  for (int i = 0; i < 100; ++i) {
    void* const block =
        VirtualAllocEx(self, nullptr, 1 << 20, MEM_RESERVE | MEM_COMMIT, PAGE_READWRITE);
    ASSERT_NE(block, nullptr);
    EXPECT_LT(reinterpret_cast<std::uintptr_t>(block), std::uintptr_t{1} << 32);
    EXPECT_TRUE(VirtualFreeEx(self, block, 0, MEM_RELEASE));
    EXPECT_FALSE(VirtualFreeEx(self, block, 0, MEM_RELEASE)) << "a second time";
  }
  CloseHandle(self);
  EXPECT_EQ(OpenObjectCount(), 0);
}

TEST(NativeLayer, RefusesMemoryThatIsNotThere) {
  const HANDLE self = OpenProcess(PROCESS_VM_READ, FALSE, GetCurrentProcessId());
  char byte = 0;
  EXPECT_FALSE(ReadProcessMemory(self, reinterpret_cast<void*>(16), &byte, 1, nullptr));
  EXPECT_EQ(GetLastError(), kErrorNoAccess);
  EXPECT_FALSE(WriteProcessMemory(self, reinterpret_cast<void*>(16), &byte, 1, nullptr));
  CloseHandle(self);
}

// Neither the network, where these patterns lead on Windows, nor the root, which they would be
// here.
TEST(NativeLayer, ListsDirectoriesOnly) {
  WIN32_FIND_DATAA entry = {};
  for (const char* const pattern :
       {"\\\\*.*", "//*.*", "\\\\server\\share\\*.*", "C:\\*.*", ".\\*", "."}) {
    EXPECT_EQ(FindFirstFileA(pattern, &entry), INVALID_HANDLE_VALUE) << pattern;
  }
}

TEST(NativeLayer, OpensNoProcessThatIsNotThere) {
  EXPECT_EQ(OpenProcess(PROCESS_VM_READ, FALSE, 0x7FFFFFFF), nullptr);
}

TEST(NativeLayer, LeavesNoZombieOfAFailedStart) {
  struct sigaction interrupt = {};  // without SA_RESTART
  interrupt.sa_handler = [](int) {};
  struct sigaction before = {};
  sigaction(SIGALRM, &interrupt, &before);
  const itimerval often = {{0, 200}, {0, 200}};  // microseconds
  setitimer(ITIMER_REAL, &often, nullptr);
  for (int i = 0; i < 100; ++i) {
    STARTUPINFOA startup = {};
    startup.cb = sizeof startup;
    PROCESS_INFORMATION started = {};
    char line[] = "no program";
    EXPECT_FALSE(CreateProcessA(nullptr, line, nullptr, nullptr, FALSE, CREATE_NEW_CONSOLE, nullptr,
                                nullptr, &startup, &started));
  }
  const itimerval never = {};
  setitimer(ITIMER_REAL, &never, nullptr);
  sigaction(SIGALRM, &before, nullptr);
  EXPECT_EQ(waitpid(-1, nullptr, WNOHANG), -1);
  EXPECT_EQ(errno, ECHILD);
}

using NativeLayerFiles = test::ScratchTest;

TEST_F(NativeLayerFiles, AreNoDirectories) {
  std::filesystem::create_directory("sub");
  EXPECT_EQ(_fsopen("sub", "r", _SH_DENYNO), nullptr);
}

TEST_F(NativeLayerFiles, TakeABackslashBetweenNames) {
  std::filesystem::create_directory("sub");
  test::WriteFile("sub/a", "a");
  EXPECT_TRUE(DeleteFileA("sub\\a"));
  EXPECT_FALSE(DeleteFileA("sub\\a")) << "a second time";
}

}  // namespace
}  // namespace launcher::posix
