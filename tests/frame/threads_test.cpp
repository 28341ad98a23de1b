// Finds state that threads share without meaning to, and a settings file that another process can
// read half written.

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
const int kRounds = test::kTriesEverything ? 10 : 1;
const int kStarts = test::kTriesEverything ? 8 : 2;

std::atomic<int> failures{0};

void CallEverything(int number) {
  const test::Caller caller(number);
  for (int round = 0; round < kRounds; ++round) {
    // The next lookup creates it again, while the others read it.
    if (number == 0) std::remove("config.json");
    for (const test::ExportCall& exported : test::EveryExport()) {
      // One thread initialises Steam, and a client takes half a second.
      if (exported.name == "QX_SteamAPI_Init") continue;
      if (exported.name == "QX_CreateProcess" && round != 0) continue;
      caller.Prepare();
      if (!(exported.call(caller) == exported.success)) ++failures;
    }
  }
}

TEST_F(Threads, CallEverythingAtOnce) {
  test::UseScriptedSteam().isShared = true;
  test::UseScriptedDirect3D().isShared = true;
  test::Caller(0).Prepare();
  test::StandardOutputOf([] { test::RunInThreads(kThreads, CallEverything); });
  EXPECT_EQ(failures, 0);
}

// Each process also removes the file, so that the other one finds none.
TEST_F(Threads, OfTwoProcessesMakeTheSettingsFile) {
  for (int i = 0; i < kStarts; ++i) {
    std::remove("config.json");
    test::RunInThreads(2, [](int /*number*/) {
      if (test::RunProgram(test::ProgramBeside("settings_child") + " 50") != 0) ++failures;
    });
    ASSERT_EQ(failures, 0) << "start " << i;
  }
}

}  // namespace
}  // namespace launcher
