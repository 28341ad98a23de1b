#include <gtest/gtest.h>

#include <string>

#include "launcher_dll.h"
#include "support/captured_output.h"
#include "support/data_file.h"
#include "support/scratch_directory.h"

namespace launcher {
namespace {

using test::CallLine;
using test::WriteSettings;

class ServerName : public test::ScratchTest {
 protected:
  ServerName() { test::WriteFile("config.json", test::ReadDataFile("default_config.json")); }

  // Holds the answer, and which lookups it took.
  static void Expect(int answer, const std::string& certificateName, const std::string& hostName,
                     const std::string& printed) {
    SCOPED_TRACE(certificateName.substr(0, 50) + ", " + hostName.substr(0, 50));
    EXPECT_EQ(test::StandardOutputOf([&] {
                EXPECT_EQ(QX_CheckCert(certificateName.c_str(), hostName.c_str()), answer);
              }),
              printed);
  }
};

const std::string kOne = CallLine(5000);
const std::string kBoth = CallLine(5000) + CallLine(5001);

TEST_F(ServerName, IsTrustedByTheTextItself) {
  Expect(1, "", "qa-api.orvane.example", kOne);
  Expect(1, "other", "ci-api.orvane.example", kBoth);
  Expect(1, "*.orvane.example", "other", kBoth);
  Expect(1, "ci-game-api.orvane.example", "", kBoth);
  Expect(0, "", "", kBoth);
  Expect(0, "api.orvane.example", "api.orvane.example", kBoth);
  Expect(0, "*.orvane.exampl", "qa-api.orvane.exampl", kBoth);
  Expect(0, "*.orvane.example.", "qa-api.orvane.example.", kBoth);
  Expect(0, "*.ORVANE.example", "QA-api.orvane.example", kBoth);
  Expect(0, "qa-api.orvane.example", "*.orvane.example", kBoth);  // each in its place
}

TEST_F(ServerName, GoesByTheSettingsOfTheMoment) {
  WriteSettings("ci-api.orvane.example", "elsewhere.example");
  Expect(1, "", "elsewhere.example", kBoth);
  Expect(0, "", "ci-api.orvane.example", kBoth);

  const std::string longest(1023, 'h');
  WriteSettings("qa-api.orvane.example", longest);
  Expect(1, "", longest, kOne);
  const std::string tooLong(1024, 'h');
  WriteSettings("qa-api.orvane.example", tooLong);
  Expect(0, "", tooLong, kBoth);
  Expect(1, "", "ci-api.orvane.example", kBoth);

  test::WriteFile("config.json", "{}");
  Expect(0, "", "qa-api.orvane.example", kBoth);
  Expect(1, "*.orvane.example", "", kBoth);
}

}  // namespace
}  // namespace launcher
