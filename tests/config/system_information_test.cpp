#include <gtest/gtest.h>

#include <string>

#include "launcher_dll.h"
#include "support/captured_output.h"
#include "support/data_file.h"
#include "support/guarded_buffer.h"
#include "support/scratch_directory.h"

namespace launcher {
namespace {

using test::GuardedBuffer;
using SystemInformationRecord = test::ScratchTest;

ResultCode Fill(const GuardedBuffer& buffer, std::uint32_t size) {
  return QX_GetSystemInformation(reinterpret_cast<SystemInformation*>(buffer.Data()), size);
}

std::string Record(std::string buildName, std::string vendorName) {
  buildName.resize(32);
  vendorName.resize(128);
  return std::string("\0\0\0\0\2\0\0\0\5\0\0\0\0\0\0\0", 16) + buildName + vendorName;
}

TEST_F(SystemInformationRecord, IsOneHundredAndSeventySixBytes) {
  for (const std::uint32_t size : {176u, 177u, 0xFFFFFFFFu}) {
    const GuardedBuffer buffer(176);
    EXPECT_EQ(Fill(buffer, size), QX_SUCCEEDED);
    EXPECT_EQ(buffer.Content(), test::BytesOf(Record("Release", "Tervane Inc.")));
  }
}

TEST_F(SystemInformationRecord, LooksTwoTextsUp) {
  const GuardedBuffer buffer(176);
  EXPECT_EQ(test::StandardOutputOf([&] { Fill(buffer, 176); }),
            test::CallLine(10) + "Created default config: config.json\n" + test::CallLine(0));
}

TEST_F(SystemInformationRecord, HasEmptyTextsWhereTheSettingsDoNotLoad) {
  test::WriteFile("config.json", "{}");
  const GuardedBuffer buffer(176);
  EXPECT_EQ(Fill(buffer, 176), QX_SUCCEEDED);
  EXPECT_EQ(buffer.Content(), test::BytesOf(Record("", "")));
}

TEST_F(SystemInformationRecord, IsRefusedWhereThereIsNoRoom) {
  const GuardedBuffer buffer(175);
  EXPECT_EQ(test::StandardOutputOf([&] {
              EXPECT_EQ(Fill(buffer, 175), QX_BAD_ARGUMENT);
              EXPECT_EQ(QX_GetSystemInformation(nullptr, 176), QX_BAD_ARGUMENT);
            }),
            "");
  EXPECT_TRUE(buffer.IsUntouched());
}

}  // namespace
}  // namespace launcher
