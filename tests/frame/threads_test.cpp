// The library at work in many threads, and in several processes.

#include <gtest/gtest.h>

#include <atomic>
#include <cstdio>
#include <string>

#include "frame/every_export.h"
#include "support/captured_output.h"
#include "support/run_program.h"
#include "support/scratch_directory.h"
#include "support/system.h"

namespace launcher {
namespace {

using Threads = test::ScratchTest;

const int kThreads = test::kTriesEverything ? 8 : 4;
constexpr int kLoadsAStart = 50;
const int kRounds = test::kTriesEverything ? 10 : 1;
const int kStarts = test::kTriesEverything ? 20 : 2;

std::atomic<int> failures{0};

void CallEverything(int number) {
  const test::Caller caller(number);
  for (int round = 0; round < kRounds; ++round) {
    // Whoever comes next makes it anew, and the others read it meanwhile.
    if (number == 0) std::remove("config.json");
    for (const test::ExportCall& exported : test::EveryExport()) {
      // A client takes half a second.
      if (!exported.isShared || (round != 0 && exported.name == std::string("QX_CreateProcess"))) {
        continue;
      }
      if (exported.usesFiles) caller.Prepare();
      if (exported.call(caller) != exported.success) ++failures;
    }
  }
}

TEST_F(Threads, CallEverythingAtOnce) {
  test::UseScriptedSteam().isShared = true;
  test::UseScriptedDirect3D().isShared = true;
  test::StandardOutputOf([] { test::RunInThreads(kThreads, CallEverything); });
  EXPECT_EQ(failures, 0);
}

// Each process removes the file itself too, so that the other finds none.
TEST_F(Threads, OfTwoProcessesMakeTheSettingsFile) {
  for (int i = 0; i < kStarts; ++i) {
    std::remove("config.json");
    test::RunInThreads(2, [](int /*number*/) {
      const std::string loads = std::to_string(kLoadsAStart);
      if (test::RunProgram(test::ProgramBeside("settings_child") + ' ' + loads) != 0) ++failures;
    });
    ASSERT_EQ(failures, 0) << "start " << i;
  }
}

}  // namespace
}  // namespace launcher
