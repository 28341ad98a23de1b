// For faults of the small exports: names of a server compared in part, without case or with a
// wildcard, a lookup that is left out or comes too early, a constant that changes, a number of
// another seed.

#include <gtest/gtest.h>

#include <cstdlib>
#include <ctime>
#include <string>

#include "launcher_dll.h"
#include "support/captured_output.h"
#include "support/data_file.h"
#include "support/scratch_directory.h"

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

}  // namespace
}  // namespace launcher
