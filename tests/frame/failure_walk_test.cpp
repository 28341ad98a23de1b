// Whatever an export calls fails in turn, once alone and once with all that comes after it, until
// the call comes through. The result is then a documented one, the outputs are as documented,
// nothing stays open, and no exception gets out.

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
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

// What all do that read the settings.
const std::string kPlainLookup = "QX_LoadStringToMemory";
const std::string kStart = "QX_CreateProcess";
// What make a digest.
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

  // Fails the first use, then the second, and so on. Answers how many there are.
  static int Walk(const ExportCall& walked, const FaultKind& kind, bool andAllAfter,
                  bool hasSettings) {
    const test::Caller caller(0);
    // What asks for memory so often is the settings' parser.
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

  // For the test that holds them against the list of exports.
  static void WriteAllowedResults(const char* path) {
    std::ofstream file(path);
    for (const ExportCall& call : test::EveryExport()) {
      file << call.name << ' ' << call.success << '\n';
      for (const auto& others : {call.failures, call.outOfMemory}) {
        for (const std::int64_t result : others) {
          if (result != test::kOtherOutput) file << call.name << ' ' << result << '\n';
        }
      }
    }
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
  if (const char* const path = std::getenv("RECORDED_RESULTS")) WriteAllowedResults(path);
}

TEST_F(FailureWalk, ComesThroughWhateverFails) {
  // What the runtime takes for its first exception stays.
  test::WriteFile("config.json", "no JSON");
  test::StandardErrorOf([] { EXPECT_EQ(QX_IsStaging(), 0); });
  test::Caller(0).Prepare();

  for (const FaultKind& kind : AllKinds()) {
    int uses = 0;
    for (const ExportCall& walked : test::EveryExport()) {
      // It starts a client for each request that fails; its texts are looked up by others too.
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
