// For faults of starting a client that it does not show itself: it counts as ended while it runs, a
// block or a handle stays, a line is cut or its enciphered form has another size. And for faults of
// QX_CommandLineToArgvA: a limit in bytes or one too few, an output written by a call that fails.

#include <gtest/gtest.h>
#include <sys/wait.h>

#include <cstring>
#include <string>
#include <tuple>
#include <vector>

#include "launch/launch_child.h"
#include "launch/launch_line.h"
#include "launcher_dll.h"
#include "platform/owners.h"
#include "platform/posix/faults.h"
#include "support/data_file.h"
#include "support/scratch_directory.h"
#include "support/system.h"

namespace {

std::vector<DWORD> sleeps;
bool seemsActive = false;
std::wstring commandLine;

}  // namespace

// The linker's --wrap redirects the library's calls to the functions with __wrap.
extern "C" {

void __real__Z5Sleepj(DWORD milliseconds);
void __wrap__Z5Sleepj(DWORD milliseconds) {
  sleeps.push_back(milliseconds);
  if (sleeps.size() == 1000) seemsActive = false;  // or a fault would wait for ever
  __real__Z5Sleepj(milliseconds / 10);
}

// Natively no client ends with 259, which is STILL_ACTIVE.
BOOL __real__Z18GetExitCodeProcessPvPj(HANDLE process, DWORD* exitCode);
BOOL __wrap__Z18GetExitCodeProcessPvPj(HANDLE process, DWORD* exitCode) {
  const BOOL result = __real__Z18GetExitCodeProcessPvPj(process, exitCode);
  if (seemsActive) *exitCode = STILL_ACTIVE;
  return result;
}

wchar_t* __wrap__Z15GetCommandLineWv() { return commandLine.data(); }

}  // extern "C"

namespace launcher {
namespace {

using LaunchCalls = test::ScratchTest;

TEST_F(LaunchCalls, WaitForTheClientWithoutItsExitCode) {
  const std::string child = test::ProgramBeside("launch_child");
  // Ends after several looks at it, unless the machine is very busy.
  const test::LaunchHeader header = {0, 200, 4};
  std::uint8_t block[sizeof header + 4] = {};
  std::memcpy(block, &header, sizeof header);
  for (const bool hasExitCode : {true, false}) {
    sleeps.clear();
    seemsActive = hasExitCode;
    posix::FailCall(hasExitCode ? "none" : "GetExitCodeProcess", 1, true);
    EXPECT_EQ(QX_CreateProcess(child.c_str(), block, sizeof block), QX_SUCCEEDED) << hasExitCode;
    posix::StopFailing();
    EXPECT_EQ(seemsActive, hasExitCode);
    EXPECT_FALSE(sleeps.empty());
    EXPECT_EQ(sleeps, std::vector<DWORD>(sleeps.size(), 500));
    EXPECT_TRUE(std::filesystem::remove(test::kDataFile));
    EXPECT_EQ(posix::OpenObjectCount(), 0);
  }
  // Nothing is known of the client: to wait for it would take for ever.
  posix::FailCall("GetExitCodeProcess", 1, true);
  posix::FailEveryCall("WaitForSingleObject");
  EXPECT_EQ(QX_CreateProcess("/bin/true", nullptr, 0), QX_SUCCEEDED);
  posix::StopFailing();
  EXPECT_GT(waitpid(-1, nullptr, 0), 0);
}

TEST_F(LaunchCalls, PackArgumentsWithinALengthInCharacters) {
  const std::tuple<const wchar_t*, std::uint32_t, std::string> cases[] = {
      {L"c", 2, std::string("c\0", 2)},
      {L"\"a b\"  \"\" J\u00F6rg", 10, std::string("a b\0\0J\xC3\xB6rg\0", 11)},
  };
  for (const auto& [line, length, texts] : cases) {
    commandLine = line;
    std::int32_t count = -1;
    char* block = nullptr;
    EXPECT_EQ(QX_CommandLineToArgvA(&block, length - 1, &count), QX_BAD_ARGUMENT);
    for (int n = 1; n <= 2 * count; ++n) {  // each argument is converted twice
      posix::FailCall("WideCharToMultiByte", n);
      EXPECT_EQ(QX_CommandLineToArgvA(&block, length, &count), QX_FAILED);
    }
    EXPECT_EQ(block, nullptr);
    EXPECT_EQ(QX_CommandLineToArgvA(&block, length, &count), QX_SUCCEEDED);
    EXPECT_EQ(std::string(block, texts.size()), texts);
    EXPECT_EQ(count, length == 2 ? 1 : 3);
    LocalFree(block);
    EXPECT_EQ(posix::OpenObjectCount(), 0);
  }
}

TEST_F(LaunchCalls, PutSixteenDigitsAtTheEndOfTheLine) {
  char line[kLaunchLineCapacity];
  FormatLaunchLine(line, "C:\\a game\\c.exe", 0x1A2B, 0x00ABCDEF);
  EXPECT_STREQ(line, "\"C:\\a game\\c.exe\" 00001a2b00abcdef");
}

TEST_F(LaunchCalls, EncipherTheSignedLineOrZeroBytes) {
  for (const std::size_t length : {1u, 2026u, 2027u}) {
    const std::string line(length, 'l');
    std::string expected = length > 2026 ? "" : "/* QTRMWO_Kd3Z_HLvN */" + line;
    expected.resize(2048);
    std::uint8_t block[kEncipheredLineSize];
    EXPECT_TRUE(EncipherLaunchLine(block, line.c_str()));
    std::uint32_t size = 0, offset = 0;
    EXPECT_EQ(QX_Decode(block, sizeof block, &size, &offset, 0), QX_SUCCEEDED);
    EXPECT_EQ(std::string(block + offset, block + offset + size), expected);
  }
}

}  // namespace
}  // namespace launcher
