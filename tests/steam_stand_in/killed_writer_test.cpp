// A writer that is killed at any moment leaves each file as it was or as it is to be.

#include <algorithm>
#include <chrono>
#include <iterator>
#include <random>
#include <set>
#include <thread>

#include "steam_stand_in/stand_in_test.h"
#include "steam_stand_in/versions.h"
#include "support/system.h"

namespace launcher {
namespace {

namespace fs = std::filesystem;
using Clock = std::chrono::steady_clock;

constexpr int kRounds = LAUNCHER_KILL_ROUNDS;

const fs::path kAccount = "stand_in/7";

std::ptrdiff_t StagedCount() {
  std::error_code error;
  return std::distance(fs::directory_iterator(kAccount / "staging", error),
                       fs::directory_iterator());
}

void Wait(Clock::duration time) {
  const Clock::time_point end = Clock::now() + time;
  while (Clock::now() < end) std::this_thread::yield();
}

class KilledWriter : public test::StandInTest {
 protected:
  static test::Child StartWriter(int version) {
    return {test::ProgramBeside("steam_stand_in_writer"), std::to_string(version)};
  }
};

TEST_F(KilledWriter, LeavesWholeFiles) {
  WriteSettings(R"({"accountId": 7})");
  std::minstd_rand random(1);
  std::uniform_int_distribution<int> microseconds(0, 20'000);
  std::set<std::string> contents;
  int killedInMidWrite = 0;
  for (int round = 0; round < kRounds; ++round) {
    SCOPED_TRACE(round);
    std::error_code ignored;
    const std::uintmax_t sizeBefore = fs::file_size(kAccount / "remote/save", ignored);
    test::Child writer = StartWriter(round * 5);
    // Versions differ in size. The first writer must also have made the copy in the cloud.
    while (fs::file_size(kAccount / "remote/save", ignored) == sizeBefore ||
           !fs::exists(kAccount / "cloud/save")) {
      Wait(std::chrono::milliseconds(1));
    }
    Wait(std::chrono::microseconds(microseconds(random)));
    ASSERT_TRUE(writer.Kill());

    killedInMidWrite += StagedCount() > 0 ? 1 : 0;
    const std::string content = test::ReadFile((kAccount / "remote/save").string());
    ASSERT_TRUE(test::IsVersion(content));
    ASSERT_TRUE(test::IsVersion(test::ReadFile((kAccount / "cloud/save").string())));
    contents.insert(content);
  }
#if !defined(_WIN32)  // Windows itself removes most of what a killed writer leaves.
  EXPECT_GT(killedInMidWrite, 0) << "no kill came while a file was written";
#endif
  EXPECT_GT(contents.size(), 2u);

  ASSERT_TRUE(SteamAPI_Init());
  EXPECT_EQ(StagedCount(), 0);
  EXPECT_EQ(SteamRemoteStorage()->GetFileCount(), 1);
  EXPECT_EQ(test::ReadFile((kAccount / "remote/save").string()),
            test::ReadFile((kAccount / "cloud/save").string()));
}

}  // namespace
}  // namespace launcher
