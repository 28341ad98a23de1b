// For faults of QX_CheckCert: names compared in part, without case or with a wildcard, a name taken
// for the other, a lookup that is left out or comes too early.

#include <gtest/gtest.h>

#include <string>

#include "launcher_dll.h"
#include "support/captured_output.h"
#include "support/data_file.h"
#include "support/scratch_directory.h"

namespace launcher {
namespace {

using ServerName = test::ScratchTest;

TEST_F(ServerName, IsTrustedByTheTextItself) {
  const std::string longest(1023, 'h');
  const std::string tooLong(1024, 'h');
  const std::string service = "*.orvane.example";
  struct Case {
    std::string certificateName;
    std::string hostName;
    int result;
    int lookups;                // of the QA host, and then of the CI host
    std::string setting = "x";  // which is replaced
    std::string value = "x";
  };
  const std::string qa = "qa-api.orvane.example";
  const std::string ci = "ci-api.orvane.example";
  const Case cases[] = {
      {"", qa, 1, 1},
      {"other", ci, 1, 2},
      {service, "other", 1, 2},
      {"ci-game-api.orvane.example", "", 1, 2},
      {"", "", 0, 2},
      {"api.orvane.example", "api.orvane.example", 0, 2},
      {"*.orvane.exampl", "qa-api.orvane.exampl", 0, 2},
      {"*.orvane.example.", "qa-api.orvane.example.", 0, 2},
      {"*.ORVANE.example", "QA-api.orvane.example", 0, 2},
      {qa, service, 0, 2},  // each in its place
      {"", "elsewhere.example", 1, 2, ci, "elsewhere.example"},
      {"", ci, 0, 2, ci, "elsewhere.example"},
      {"", longest, 1, 1, qa, longest},
      {"", tooLong, 0, 2, qa, tooLong},
      {"", ci, 1, 2, qa, tooLong},
      {"", qa, 0, 2, "{", "no JSON"},
      {service, "", 1, 2, "{", "no JSON"},
  };
  for (const Case& tried : cases) {
    SCOPED_TRACE(tried.certificateName + ", " + tried.hostName);
    test::WriteSettings(tried.setting, tried.value);
    EXPECT_EQ(test::StandardOutputOf([&] {
                EXPECT_EQ(QX_CheckCert(tried.certificateName.c_str(), tried.hostName.c_str()),
                          tried.result);
              }),
              test::CallLine(5000) + (tried.lookups == 2 ? test::CallLine(5001) : ""));
  }
}

}  // namespace
}  // namespace launcher
