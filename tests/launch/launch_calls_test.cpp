// For faults that need a system call to fail: a client that counts as ended while it runs, a block
// or a handle that stays, an output written by a call that fails.

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <string>
#include <vector>

#include "launch/launch_child.h"
#include "launcher_dll.h"
#include "platform/posix/faults.h"
#include "support/data_file.h"
#include "support/run_program.h"
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
  // Ends after several looks at it.
  const test::LaunchHeader header = {0, 200, 4};
  std::uint8_t block[sizeof header + 4] = {};
  std::memcpy(block, &header, sizeof header);
  for (const char* const call : {"none", "GetExitCodeProcess"}) {
    sleeps.clear();
    posix::FailCall(call, 1, true);
    EXPECT_EQ(QX_CreateProcess(child.c_str(), block, sizeof block), QX_SUCCEEDED) << call;
    posix::StopFailing();
    EXPECT_GE(sleeps.size(), 2u);
    EXPECT_EQ(std::count(sleeps.begin(), sleeps.end(), 500u), std::ptrdiff_t(sleeps.size()));
    EXPECT_TRUE(std::filesystem::remove(test::kDataFile)) << "kept to the end";
    EXPECT_EQ(posix::OpenObjectCount(), 0);
  }
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

}  // namespace
}  // namespace launcher
