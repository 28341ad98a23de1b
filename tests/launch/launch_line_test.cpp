#include "launch/launch_line.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "launcher_dll.h"
#include "support/bytes.h"
#include "support/scratch_directory.h"

namespace launcher {
namespace {

using test::Bytes;

std::string LineOf(const std::string& path, std::uint32_t processId, std::uint32_t address) {
  char line[kLaunchLineCapacity];
  FormatLaunchLine(line, path.c_str(), processId, address);
  return line;
}

TEST(LaunchLine, EndsInSixteenDigits) {
  EXPECT_EQ(LineOf("C:\\the game\\client.exe", 0x1A2B, 0x00ABCDEF),
            "\"C:\\the game\\client.exe\" 00001a2b00abcdef");
  EXPECT_EQ(LineOf("c", 0xFFFFFFFF, 0), "\"c\" ffffffff00000000");
}

TEST(LaunchLine, HasRoomForTheLongestPath) {
  const std::string path(kMaxClientPathLength, 'p');
  EXPECT_EQ(LineOf(path, 0x12345678, 0x9ABCDEF0), '"' + path + "\" 123456789abcdef0");
}

class EncipheredLine : public test::ScratchTest {
 protected:
  static std::string Payload(const std::string& line) {
    std::uint8_t block[kEncipheredLineSize];
    EXPECT_TRUE(EncipherLaunchLine(block, line.c_str()));
    std::uint32_t size = 0;
    std::uint32_t offset = 0;
    EXPECT_EQ(QX_Decode(block, sizeof block, &size, &offset, 0), QX_SUCCEEDED);
    EXPECT_EQ(size, kSignedAreaSize);
    return std::string(block + offset, block + offset + size);
  }
};

TEST_F(EncipheredLine, IsTheSignedLineAndZeroBytes) {
  const std::string marker = "/* QTRMWO_Kd3Z_HLvN */";
  for (const std::size_t length : {1u, 500u, 2026u}) {
    const std::string line(length, 'l');
    const std::string signedLine = marker + line;
    EXPECT_EQ(Payload(line), signedLine + std::string(kSignedAreaSize - signedLine.size(), '\0'));
  }
}

TEST_F(EncipheredLine, IsZeroBytesForALineThatDoesNotFit) {
  EXPECT_EQ(Payload(std::string(2027, 'l')), std::string(kSignedAreaSize, '\0'));
}

}  // namespace
}  // namespace launcher
