// Fails every call and every request for memory of each export, one after the other, alone and with
// all that follow. Finds a wrong result, an output that should have stayed as it was, an object or
// a block that is not released, a temporary file that stays, and an exception that gets out.

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <map>
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

using test::ExportCall;
using test::FaultKind;
using test::Outcome;

constexpr char kMemory[] = "memory";
constexpr std::size_t kStackSize = 256 << 10;

class FailureWalk : public test::ScratchTest {
 protected:
  FailureWalk() {
    // What the runtime takes for its first exception stays.
    test::WriteFile("config.json", "no JSON");
    test::StandardErrorOf([] { EXPECT_EQ(QX_IsStaging(), 0); });
    caller_.Prepare();
  }

  int OpenCount() const {
    return test::OpenObjectCount() + steam_.openRequests + direct3D_.openObjects;
  }

  // Returns how many there were.
  static int RemoveTemporaryFiles() {
    int count = 0;
    for (const auto& entry : std::filesystem::directory_iterator(".")) {
      if (entry.path().extension() != ".new") continue;
      ++count;
      std::filesystem::remove(entry.path());
    }
    return count;
  }

  // Fails the first call, then the second, and so on. Returns how many there are.
  int Walk(const ExportCall& walked, const FaultKind& kind, bool andAllAfter, bool hasSettings) {
    const bool failsMemory = kind.name == kMemory;
    const std::vector<Outcome>& others = failsMemory ? walked.outOfMemory : walked.failures;
    // The parser of the settings is what asks for memory so often.
    const int step = failsMemory && !test::kTriesEverything ? 9 : 1;
    for (int n = 1; n < 3000; n += n < 10 ? 1 : step) {
      SCOPED_TRACE(walked.name + ", " + kind.name + ", failure " + std::to_string(n) +
                   (andAllAfter ? " and all after" : ""));
      caller_.Prepare();
      QX_SteamAPI_Init();
      if (!hasSettings) std::filesystem::remove("config.json");
      const int openBefore = OpenCount();
      Outcome outcome = {};
      bool hasFailed = false;
      // In a new thread, because the runtime prepares for exceptions at the first one of a thread.
      test::RunInThread(kStackSize, [&] {
        kind.start(n, andAllAfter);
        outcome = walked.call(caller_);
        hasFailed = kind.stop();
      });
      EXPECT_EQ(OpenCount(), openBefore);
      // If everything fails, a temporary file cannot be removed either.
      const int leftCount = RemoveTemporaryFiles();
      EXPECT_TRUE(andAllAfter || leftCount == 0);
      if (!hasFailed) {
        EXPECT_EQ(outcome, walked.success);
        return n - 1;
      }
      EXPECT_TRUE(outcome == walked.success ||
                  std::count(others.begin(), others.end(), outcome) != 0)
          << outcome;
    }
    ADD_FAILURE() << walked.name << " never succeeds";
    return 0;
  }

  test::SteamScript& steam_ = test::UseScriptedSteam();
  test::Direct3DScript& direct3D_ = test::UseScriptedDirect3D();
  test::Caller caller_{0};
};

// For exports_json_test.py.
TEST_F(FailureWalk, AllowsDocumentedResults) {
  for (const ExportCall& walked : test::EveryExport()) {
    std::vector<Outcome> allowed = {walked.success};
    allowed.insert(allowed.end(), walked.failures.begin(), walked.failures.end());
    allowed.insert(allowed.end(), walked.outOfMemory.begin(), walked.outOfMemory.end());
    for (const Outcome& outcome : allowed) {
      std::printf("allowed: %s %d\n", walked.name.c_str(), static_cast<int>(outcome.result));
    }
  }
}

TEST_F(FailureWalk, FindsDocumentedResultsAndNothingOpen) {
  std::vector<FaultKind> kinds = test::FaultKinds();
  kinds.push_back(test::PlannedFaults("Steam", steam_.failures));
  kinds.push_back(test::PlannedFaults("Direct3D", direct3D_.failures));
  std::map<std::string, int> digestCalls;
  for (const FaultKind& kind : kinds) {
    int uses = 0;
    for (const ExportCall& walked : test::EveryExport()) {
      // Each failure starts a client.
      const bool isSlow = kind.name == kMemory && walked.name == "QX_CreateProcess";
      const bool isDigest = walked.name.rfind("file_cipher_", 0) == 0;
      if (isSlow && !test::kTriesEverything) continue;
      if (kind.name == "calls without CNG" && !isDigest) continue;
      std::string printed;  // with the failures of this test
      test::StandardErrorOf([&] {
        printed = test::StandardOutputOf([&] {
          for (const bool andAllAfter : {false, true}) {
            const int count = Walk(walked, kind, andAllAfter, false);
            if (isDigest && !andAllAfter) digestCalls[kind.name] += count;
            uses += count;
            const bool readsSettings = std::filesystem::exists("config.json");
            if (readsSettings &&
                (test::kTriesEverything || walked.name == "QX_LoadStringToMemory")) {
              uses += Walk(walked, kind, andAllAfter, true);
            }
          }
        });
      });
      ASSERT_FALSE(HasFailure()) << printed;
    }
    EXPECT_GT(uses, 0) << kind.name;
  }
  EXPECT_GT(digestCalls["calls without CNG"], digestCalls["calls"]) << "CryptoAPI was not called";
}

// An exception needs memory too, and the message of a parse error even more.
TEST_F(FailureWalk, ReportsThatThereIsNoMemoryAtAll) {
  for (const char* const settings : {"{}", "no JSON"}) {
    test::WriteFile("config.json", settings);
    char text[16] = "untouched";
    ResultCode loaded = 1;
    std::int32_t isStaging = 1;
    test::StandardErrorOf([&] {
      test::RunInThread(kStackSize, [&] {
        const FaultKind memory = test::FaultKinds().back();
        memory.start(1, true);
        loaded = QX_LoadString(1001, text, sizeof text);
        isStaging = QX_IsStaging();
        memory.stop();
      });
    });
    EXPECT_EQ(loaded, QX_OUT_OF_MEMORY);
    EXPECT_STREQ(text, "untouched");
    EXPECT_EQ(isStaging, 0);
  }
}

}  // namespace
}  // namespace launcher
