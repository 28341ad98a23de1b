// For faults of the small exports: names of a server compared in part, without case or with a
// wildcard, a lookup that is left out or comes too early, a constant that changes, a number of
// another seed, and a Direct3D of the system that is not found or is read wrongly.

#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <string>

#include "launcher_dll.h"
#include "support/captured_output.h"
#include "support/data_file.h"
#include "support/scratch_directory.h"
#include "support/system.h"

namespace launcher {
namespace {

using HostExports = test::ScratchTest;

TEST_F(HostExports, TrustAServerByTheTextsThemselves) {
  const std::string longest(1023, 'h');
  const std::string qa = "qa-api.orvane.example";
  const std::string ci = "ci-api.orvane.example";
  struct Case {
    std::string certificateName;
    std::string hostName;
    int result;
    int lookups = 2;            // of the QA host, and then of the CI host
    std::string setting = "x";  // which is replaced
    std::string value = "x";
  };
  const Case cases[] = {
      {"", qa, 1, 1},
      {"other", ci, 1},
      {"*.orvane.example", "other", 1},
      {"ci-game-api.orvane.example", "", 1},
      {"*.orvane.exampl", "qa-api.orvane.exampl", 0},
      {"orvane.example", "api.orvane.example", 0},
      {"ci-game-api.orvane.example.", "qa-api.orvane.example.", 0},
      {"*.ORVANE.example", "QA-api.orvane.example", 0},
      {qa, "*.orvane.example", 0},  // each in the other's place
      {"", "elsewhere.example", 1, 2, ci, "elsewhere.example"},
      {"", longest, 1, 1, qa, longest},
      {"", longest + 'h', 0, 2, qa, longest + 'h'},
      {"*.orvane.example", qa, 1, 2, "{", "no JSON"},
      {"", qa, 0, 2, "{", "no JSON"},
  };
  for (const Case& tried : cases) {
    SCOPED_TRACE(tried.certificateName + ", " + tried.hostName);
    test::WriteSettings(tried.setting, tried.value);
    int result = -1;
    const std::string printed = test::StandardOutputOf(
        [&] { result = QX_CheckCert(tried.certificateName.c_str(), tried.hostName.c_str()); });
    EXPECT_EQ(result, tried.result);
    EXPECT_EQ(printed, test::CallLine(5000) + (tried.lookups == 2 ? test::CallLine(5001) : ""));
  }
}

// Before any call draws a number.
const std::int32_t valueAtStart = QX_GetIllegalValue();

TEST_F(HostExports, ReturnConstantsAndANumberDrawnByTheSecond) {
  EXPECT_EQ(QX_ExistClient(), 1);
  EXPECT_EQ(QX_SteamAPI_GetMirvelURL(1, 2, 3), 0);
  EXPECT_EQ(QX_Unzip(0, 1, 1, 1), QX_SUCCEEDED);
  EXPECT_EQ(QX_Unzip(1, 0, 1, 1), QX_BAD_ARGUMENT);
  EXPECT_EQ(QX_Unzip(1, 1, 0, 1), QX_BAD_ARGUMENT);
  EXPECT_EQ(QX_Unzip(1, 1, 1, 0), QX_BAD_ARGUMENT);

  EXPECT_EQ(valueAtStart, 0);
  std::time_t before = 0;
  std::int32_t drawn = 0;
  do {  // within one second, most likely at once
    before = std::time(nullptr);
    QX_ResetIllegalValue();
    drawn = QX_ResetIllegalValue();  // not the next number, but the first again
  } while (std::time(nullptr) != before);
  // This program and the library share the runtime, natively and on Windows.
  std::srand(static_cast<unsigned>(before));
  EXPECT_EQ(drawn, std::rand());
  EXPECT_EQ(QX_GetIllegalValue(), drawn);
}

TEST_F(HostExports, ListAModeOfTheSystemThatChecksOut) {
  char text[65536] = "";
  QX_EnumDisplayMode(0, 0, text, sizeof text);
  int width = 0, height = 0;
  unsigned rate = 0;
  std::sscanf(text, "{ \"DisplayMode\": [ {\"Width\": %d, \"Height\": %d, \"Hz\": %u}", &width,
              &height, &rate);
  EXPECT_EQ(rate != 0, test::kHasDirect3D) << text;
  EXPECT_EQ(QX_CheckDisplayMode(0, 0, width, height, rate) == QX_SUCCEEDED, test::kHasDirect3D);
  EXPECT_EQ(QX_EnumDisplayMode(1000, 0, text, sizeof text), 0u);
}

}  // namespace
}  // namespace launcher
