// Fails every call and every request for memory of each export, one after the other, first only
// that one, then that one and all later ones. Finds a wrong result, an output that should not have
// changed, an object or a block that is not released, a temporary file that stays, and an exception
// that leaves an export.

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <string>
#include <vector>

#include "frame/every_export.h"
#include "launcher_dll.h"
#include "support/captured_output.h"
#include "support/data_file.h"
#include "support/faults.h"
#include "support/scratch_directory.h"
#include "support/system.h"

namespace launcher {
namespace {

namespace fs = std::filesystem;
using test::ExportCall;
using test::FaultKind;
using test::Outcome;

class FailureWalk : public test::ScratchTest {
 protected:
  FailureWalk() {
    // The runtime's memory for its first exception is never freed.
    test::WriteFile("config.json", "no JSON");
    EXPECT_EQ(QX_IsStaging(), 0);
    fs::remove("config.json");
  }

  int OpenCount() const {
    return test::OpenObjectCount() + steam_.openRequests + direct3D_.openObjects;
  }

  // Fails the first call, then the second, and so on. Returns how many there are. Success is always
  // accepted, so a failure that an export ignores is noticed only if an output changes.
  int Walk(const ExportCall& walked, const FaultKind& kind, bool andAllAfter, bool hasSettings) {
    const bool failsMemory = kind.name == "memory";
    const std::vector<Outcome>& others = failsMemory ? walked.outOfMemory : walked.failures;
    // Only the parser of the settings requests memory so often.
    const int step = failsMemory && !test::kTriesEverything ? 9 : 1;
    for (int n = 1; n < 3000; n += n < 10 ? 1 : step) {
      SCOPED_TRACE(walked.name + ", " + kind.name + ", failure " + std::to_string(n) +
                   (andAllAfter ? " and all after" : ""));
      caller_.Prepare();
      if (!hasSettings) fs::remove("config.json");
      const int openBefore = OpenCount();
      Outcome outcome = {};
      bool hasFailed = false;
      // In a new thread, because the runtime prepares for exceptions at the first one of a thread.
      test::RunInThread(0, [&] {
        kind.start(n, andAllAfter);
        outcome = walked.call(caller_);
        hasFailed = kind.stop();
      });
      EXPECT_EQ(OpenCount(), openBefore);
      bool leavesFile = false;
      for (const auto& entry : fs::directory_iterator(".")) {
        if (entry.path().extension() == ".new") leavesFile = fs::remove(entry.path());
      }
      // If everything fails, a temporary file cannot be removed either.
      EXPECT_TRUE(andAllAfter || !leavesFile);
      if (!hasFailed) {
        EXPECT_EQ(outcome, walked.success);
        return n - 1;
      }
      EXPECT_TRUE(outcome == walked.success ||
                  std::count(others.begin(), others.end(), outcome) != 0)
          << outcome;
    }
    ADD_FAILURE();  // it never succeeds
    return 0;
  }

  test::SteamScript& steam_ = test::UseScriptedSteam();
  test::Direct3DScript& direct3D_ = test::UseScriptedDirect3D();
  test::Caller caller_{0};
};

TEST_F(FailureWalk, FindsDocumentedResultsAndNothingOpen) {
  std::vector<FaultKind> kinds = test::FaultKinds();
  kinds.push_back(test::PlannedFaults("Steam", steam_.failures));
  kinds.push_back(test::PlannedFaults("Direct3D", direct3D_.failures));
  for (const FaultKind& kind : kinds) {
    int uses = 0;
    for (const ExportCall& walked : test::kEveryExport) {
      // Starts a client for each failure: slow.
      if (!test::kTriesEverything && walked.name == "QX_CreateProcess") continue;
      const std::string printed = test::StandardOutputOf([&] {
        for (const bool andAllAfter : {false, true}) {
          uses += Walk(walked, kind, andAllAfter, false);
          const bool readsSettings = test::kTriesEverything && fs::exists("config.json");
          if (readsSettings) uses += Walk(walked, kind, andAllAfter, true);
        }
      });
      ASSERT_FALSE(HasFailure()) << printed;
    }
    EXPECT_GT(uses, 0) << kind.name;
  }
}

// An exception needs memory too, and the message of a parse error needs more.
TEST_F(FailureWalk, ReportsThatThereIsNoMemoryAtAll) {
  for (const char* const settings : {"{}", "no JSON"}) {
    test::WriteFile("config.json", settings);
    char text[16] = "untouched";
    ResultCode loaded = 1;
    std::int32_t isStaging = 1;
    test::RunInThread(0, [&] {
      const FaultKind memory = test::FaultKinds().back();
      memory.start(1, true);
      loaded = QX_LoadString(1001, text, sizeof text);
      isStaging = QX_IsStaging();
      memory.stop();
    });
    EXPECT_EQ(loaded, QX_OUT_OF_MEMORY);
    EXPECT_STREQ(text, "untouched");
    EXPECT_EQ(isStaging, 0);
  }
}

}  // namespace
}  // namespace launcher
