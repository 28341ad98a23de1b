// For faults of QX_GetSystemInformation: a field at another place, a size off by one, a lookup
// whose failure is reported.

#include <gtest/gtest.h>

#include <string>

#include "launcher_dll.h"
#include "support/captured_output.h"
#include "support/data_file.h"
#include "support/guarded_buffer.h"
#include "support/scratch_directory.h"

namespace launcher {
namespace {

using SystemInformationRecord = test::ScratchTest;

TEST_F(SystemInformationRecord, IsOneHundredAndSeventySixBytes) {
  const auto record = [](std::string buildName, std::string vendorName) {
    buildName.resize(32);
    vendorName.resize(128);
    return std::string("\0\0\0\0\2\0\0\0\5\0\0\0\0\0\0\0", 16) + buildName + vendorName;
  };
  const std::string texts = record("Release", "Tervane Inc.");
  const std::string lookups =
      test::CallLine(10) + "Created default config: config.json\n" + test::CallLine(0);
  struct Case {
    std::uint32_t size;
    ResultCode result;
    std::string expected;
    std::string printed;
  };
  const Case cases[] = {
      {175, QX_BAD_ARGUMENT, std::string(176, '\xCD'), ""},
      {176, QX_SUCCEEDED, texts, lookups},
      {177, QX_SUCCEEDED, texts, lookups},
      {0xFFFFFFFF, QX_SUCCEEDED, texts, lookups},
  };
  for (const Case& tried : cases) {
    const test::GuardedBuffer buffer(176);
    auto* const data = reinterpret_cast<SystemInformation*>(buffer.Data());
    EXPECT_EQ(test::StandardOutputOf([&] {
                EXPECT_EQ(QX_GetSystemInformation(data, tried.size), tried.result);
                EXPECT_EQ(QX_GetSystemInformation(nullptr, tried.size), QX_BAD_ARGUMENT);
              }),
              tried.printed);
    EXPECT_EQ(std::string(buffer.Text(), 176), tried.expected) << tried.size;
    std::filesystem::remove("config.json");
  }
  test::WriteFile("config.json", "{}");
  SystemInformation data;
  EXPECT_EQ(QX_GetSystemInformation(&data, sizeof data), QX_SUCCEEDED) << "no texts";
  EXPECT_EQ(std::string(reinterpret_cast<char*>(&data), sizeof data), record("", ""));
}

}  // namespace
}  // namespace launcher
