// For each export, every call of the system and every allocation fails in turn, alone and with all
// that come after it, until the export succeeds. The result must be a documented one, the outputs
// must be as documented, nothing may stay open, and no exception may leave the export.

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <set>
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

// What every export that reads the settings does.
const std::string kPlainLookup = "QX_LoadStringToMemory";
const std::string kStart = "QX_CreateProcess";
// The exports that compute a digest.
const std::set<std::string> kDigests = {"file_cipher_encode", "file_cipher_decode"};

class FailureWalk : public test::ScratchTest {
 protected:
  FailureWalk() {
    Steam().failures.Stop();
    Direct3D().failures.Stop();
  }

  static test::SteamScript& Steam() {
    static test::SteamScript& script = test::UseScriptedSteam();
    return script;
  }
  static test::Direct3DScript& Direct3D() {
    static test::Direct3DScript& script = test::UseScriptedDirect3D();
    return script;
  }

  static std::vector<FaultKind> AllKinds() {
    std::vector<FaultKind> kinds = test::FaultKinds();
    kinds.push_back({"Steam", false, false,
                     [](int n, bool andAllAfter) { Steam().failures.Start(n, andAllAfter); },
                     [] { return Steam().failures.Stop(); }});
    kinds.push_back({"Direct3D", false, false,
                     [](int n, bool andAllAfter) { Direct3D().failures.Start(n, andAllAfter); },
                     [] { return Direct3D().failures.Stop(); }});
    return kinds;
  }

  static int OpenCount() {
    return test::OpenObjectCount() + Steam().openRequests + Direct3D().openObjects;
  }

  // Returns how many there were.
  static int RemoveTemporaryFiles() {
    int count = 0;
    for (const auto& entry : std::filesystem::directory_iterator(".")) {
      if (entry.path().extension() == ".new") {
        ++count;
        std::filesystem::remove(entry.path());
      }
    }
    return count;
  }

  static bool IsDocumented(std::int64_t result, const ExportCall& walked, const FaultKind& kind) {
    const auto& others = kind.failsMemory ? walked.outOfMemory : walked.failures;
    return result == walked.success || std::count(others.begin(), others.end(), result) != 0;
  }

  // Fails the first use, then the second, and so on. Returns the number of uses.
  static int Walk(const ExportCall& walked, const FaultKind& kind, bool andAllAfter,
                  bool hasSettings) {
    const test::Caller caller(0);
    // The parser of the settings asks for memory very often.
    const int step = kind.failsMemory && !test::kTriesEverything ? 9 : 1;
    for (int n = 1; n < 3000; n += n < 10 ? 1 : step) {
      SCOPED_TRACE(walked.name + std::string(", ") + kind.name + ", failure " + std::to_string(n) +
                   (andAllAfter ? " and all after" : ""));
      if (walked.usesFiles) caller.Prepare();
      QX_SteamAPI_Init();
      if (!hasSettings) std::filesystem::remove("config.json");
      const int openBefore = OpenCount();
      kind.start(n, andAllAfter);
      const std::int64_t result = walked.call(caller);
      const bool hasFailed = kind.stop();
      EXPECT_EQ(OpenCount(), openBefore);
      // If everything fails, a temporary file cannot be removed either.
      const int leftCount = RemoveTemporaryFiles();
      EXPECT_TRUE(andAllAfter || leftCount == 0);
      EXPECT_TRUE(IsDocumented(result, walked, kind)) << "the result " << result;
      if (hasFailed) continue;
      EXPECT_EQ(result, walked.success);
      return n - 1;
    }
    ADD_FAILURE() << walked.name << " never comes through";
    return 0;
  }

  // A file is not written, and moved to its place, where there is one.
  static int WalkWithAndWithoutSettings(const ExportCall& walked, const FaultKind& kind,
                                        bool andAllAfter) {
    const int uses = Walk(walked, kind, andAllAfter, false);
    const bool readsSettings = std::filesystem::exists("config.json") &&
                               (test::kTriesEverything || walked.name == kPlainLookup);
    return readsSettings ? uses + Walk(walked, kind, andAllAfter, true) : uses;
  }
};

TEST_F(FailureWalk, TakesEveryExport) {
  const std::set<std::string> exports = {
#define EXPORT(ordinal, name, size) #name,
#include "export_table.inc"
#undef EXPORT
  };
  std::set<std::string> walked;
  for (const ExportCall& call : test::EveryExport()) walked.insert(call.name);
  EXPECT_EQ(walked, exports);
  // For exports_json_test.py.
  for (const ExportCall& call : test::EveryExport()) {
    std::printf("allowed: %s %lld\n", call.name, static_cast<long long>(call.success));
    for (const auto& others : {call.failures, call.outOfMemory}) {
      for (const std::int64_t result : others) {
        if (result == test::kOtherOutput) continue;
        std::printf("allowed: %s %lld\n", call.name, static_cast<long long>(result));
      }
    }
  }
}

// At the first exception of a thread the runtime itself needs memory, and ends the process if it
// gets none.
TEST_F(FailureWalk, NeedsNoMemoryInANewThread) {
  for (const char* const settings : {"", "{}", "not JSON"}) {
    if (*settings != '\0') test::WriteFile("config.json", settings);
    test::StandardErrorOf([] {
      test::StandardOutputOf([] {
        test::RunInThreads(1, [](int /*number*/) {
          char untouched = 0;
          char* text = &untouched;
          for (const FaultKind& kind : test::FaultKinds()) {
            if (!kind.failsMemory) continue;
            kind.start(1, true);
            const ResultCode loaded = QX_LoadStringToMemory(1001, &text);
            const std::int32_t isStaging = QX_IsStaging();
            kind.stop();
            EXPECT_EQ(loaded, QX_OUT_OF_MEMORY);
            EXPECT_EQ(text, &untouched);
            EXPECT_EQ(isStaging, 0);
          }
        });
      });
    });
  }
}

TEST_F(FailureWalk, ComesThroughWhateverFails) {
  // The memory of the runtime's first exception is never released.
  test::WriteFile("config.json", "no JSON");
  test::StandardErrorOf([] { EXPECT_EQ(QX_IsStaging(), 0); });
  test::Caller(0).Prepare();

  for (const FaultKind& kind : AllKinds()) {
    int uses = 0;
    for (const ExportCall& walked : test::EveryExport()) {
      // It starts a client for each allocation that fails; other exports look up texts too.
      if (kind.failsMemory && !test::kTriesEverything && walked.name == kStart) continue;
      if (kind.isOfDigests && kDigests.count(walked.name) == 0) continue;
      std::string printed;
      test::StandardErrorOf([&] {
        printed = test::StandardOutputOf([&] {
          uses += WalkWithAndWithoutSettings(walked, kind, false);
          uses += WalkWithAndWithoutSettings(walked, kind, true);
        });
      });
      ASSERT_FALSE(HasFailure()) << printed;
    }
    EXPECT_GT(uses, 0) << kind.name;
    RecordProperty(kind.name, uses);
  }

  const std::set<std::string> failed = test::FailedCalls();
  for (const char* const call :
       {"BCryptCreateHash", "BCryptHashData", "BCryptFinishHash", "BCryptDestroyHash",
        "CryptAcquireContextA", "CryptCreateHash", "CryptHashData", "CryptGetHashParam",
        "CryptDestroyHash", "CryptReleaseContext"}) {
    EXPECT_EQ(failed.count(call), 1u) << call;
  }
}

}  // namespace
}  // namespace launcher
