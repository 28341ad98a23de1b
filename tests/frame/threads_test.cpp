// Finds state that threads share without meaning to, and a settings file that another reader can
// find half written.

#include <gtest/gtest.h>

#include <atomic>
#include <cstdio>

#include "frame/every_export.h"
#include "support/captured_output.h"
#include "support/scratch_directory.h"
#include "support/system.h"

namespace launcher {
namespace {

using Threads = test::ScratchTest;

const int kThreads = test::kTriesEverything ? 8 : 4;
const int kRounds = test::kTriesEverything ? 10 : 2;

std::atomic<int> failures{0};

void CallEverything(int number) {
  const test::Caller caller(number);
  for (int round = 0; round < kRounds; ++round) {
    for (const test::ExportCall& exported : test::kEveryExport) {
      // A client takes half a second.
      if (exported.name == "QX_CreateProcess" && round != 0) continue;
      caller.Prepare();
      // The next lookup creates it again, while others read it.
      if (number < 2) std::remove("config.json");
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

}  // namespace
}  // namespace launcher
