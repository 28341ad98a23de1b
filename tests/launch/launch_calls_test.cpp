// For faults of starting a client that it does not show itself: it counts as ended while it runs, a
// block or a handle stays, an output is written by a call that fails, a line is cut or its
// enciphered form has another size.

#include <gtest/gtest.h>
#include <sys/wait.h>

#include <algorithm>
#include <cstring>
#include <string>
#include <vector>

#include "launch/launch_child.h"
#include "launch/launch_line.h"
#include "launcher_dll.h"
#include "platform/posix/faults.h"
#include "support/data_file.h"
#include "support/scratch_directory.h"
#include "support/system.h"

namespace {

std::vector<DWORD> sleeps;

}  // namespace

// The linker's --wrap redirects the library's calls of Sleep to the first of these.
extern "C" void __real__Z5Sleepj(DWORD milliseconds);
extern "C" void __wrap__Z5Sleepj(DWORD milliseconds) {
  sleeps.push_back(milliseconds);
  __real__Z5Sleepj(milliseconds / 10);
}

namespace launcher {
namespace {

using LaunchCalls = test::ScratchTest;

TEST_F(LaunchCalls, WaitForTheClientWithoutItsExitCode) {
  const std::string child = test::ProgramBeside("launch_child");
  // Ends after several looks at it, unless the machine is very busy.
  const test::LaunchHeader header = {0, 200, 4};
  std::uint8_t block[sizeof header + 4] = {};
  std::memcpy(block, &header, sizeof header);
  for (const char* const call : {"none", "GetExitCodeProcess"}) {
    sleeps.clear();
    posix::FailCall(call, 1, true);
    EXPECT_EQ(QX_CreateProcess(child.c_str(), block, sizeof block), QX_SUCCEEDED) << call;
    posix::StopFailing();
    EXPECT_FALSE(sleeps.empty());
    EXPECT_EQ(std::count(sleeps.begin(), sleeps.end(), 500u), std::ptrdiff_t(sleeps.size()));
    EXPECT_TRUE(std::filesystem::remove(test::kDataFile)) << "kept to the end";
    EXPECT_EQ(posix::OpenObjectCount(), 0);
  }
  // Nothing is known of the client: to wait for it would take for ever.
  posix::FailCall("GetExitCodeProcess", 1, true);
  posix::FailEveryCall("WaitForSingleObject");
  EXPECT_EQ(QX_CreateProcess("/bin/true", nullptr, 0), QX_SUCCEEDED);
  posix::StopFailing();
  EXPECT_GT(waitpid(-1, nullptr, 0), 0) << "the client was started";
}

// Natively every system takes UTF-8, with more bytes than characters.
TEST_F(LaunchCalls, CountTheArgumentsInCharacters) {
  const std::string child = test::ProgramBeside("launch_child");
  const std::string capacity = std::to_string(child.size() + 1 + 5 + 3);
  const std::string padded = std::string(4 - capacity.size(), '0') + capacity;
  test::RunProgram('"' + child + "\" " + padded + " \xC3\xB6\xC3\xB6");
  EXPECT_EQ(test::ReadFile(test::kArgumentsFile),
            "0 3\n" + child + '\n' + padded + "\n\xC3\xB6\xC3\xB6\n");
}

TEST(ArgumentCalls, LeaveTheBlockAloneIfOneFails) {
  std::int32_t count = 0;
  char* block = nullptr;
  ASSERT_EQ(QX_CommandLineToArgvA(&block, 10000, &count), QX_SUCCEEDED);
  LocalFree(block);
  block = nullptr;
  // Two conversions of each argument.
  for (int n = 1; n <= 2 * count; ++n) {
    posix::FailCall("WideCharToMultiByte", n);
    EXPECT_EQ(QX_CommandLineToArgvA(&block, 10000, &count), QX_FAILED);
    EXPECT_TRUE(posix::StopFailing());
  }
  EXPECT_EQ(block, nullptr);
  EXPECT_EQ(posix::OpenObjectCount(), 0);
}

TEST(LaunchLine, EndsInSixteenDigits) {
  const std::string longest(kMaxClientPathLength, 'p');
  struct Case {
    std::string path;
    std::uint32_t processId;
    std::uint32_t address;
    std::string line;
  };
  const Case cases[] = {
      {"C:\\a game\\c.exe", 0x1A2B, 0x00ABCDEF, "\"C:\\a game\\c.exe\" 00001a2b00abcdef"},
      {"c", 0xFFFFFFFF, 0, "\"c\" ffffffff00000000"},
      {longest, 0x12345678, 0x9ABCDEF0, '"' + longest + "\" 123456789abcdef0"},
  };
  for (const Case& tried : cases) {
    char line[kLaunchLineCapacity];
    FormatLaunchLine(line, tried.path.c_str(), tried.processId, tried.address);
    EXPECT_EQ(line, tried.line);
  }
}

TEST_F(LaunchCalls, EncipherTheSignedLineOrZeroBytes) {
  for (const std::size_t length : {1u, 500u, 2026u, 2027u}) {
    const std::string line(length, 'l');
    std::string expected = length > 2026 ? "" : "/* QTRMWO_Kd3Z_HLvN */" + line;
    expected.resize(2048);
    std::uint8_t block[kEncipheredLineSize];
    EXPECT_TRUE(EncipherLaunchLine(block, line.c_str()));
    std::uint32_t size = 0;
    std::uint32_t offset = 0;
    EXPECT_EQ(QX_Decode(block, sizeof block, &size, &offset, 0), QX_SUCCEEDED);
    EXPECT_EQ(std::string(block + offset, block + offset + size), expected);
  }
}

}  // namespace
}  // namespace launcher
