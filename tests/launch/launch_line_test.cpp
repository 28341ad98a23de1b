// For faults of the client's command line: digits that are missing or too many, a longest path that
// is cut, an enciphered form of another size.

#include "launch/launch_line.h"

#include <gtest/gtest.h>

#include <string>

#include "launcher_dll.h"
#include "support/scratch_directory.h"

namespace launcher {
namespace {

TEST(LaunchLine, EndsInSixteenDigits) {
  const std::string longest(kMaxClientPathLength, 'p');
  struct Case {
    std::string path;
    std::uint32_t processId;
    std::uint32_t address;
    std::string line;
  };
  const Case cases[] = {
      {"C:\\a game\\c.exe", 0x1A2B, 0x00ABCDEF, "\"C:\\a game\\c.exe\" 00001a2b00abcdef"},
      {"c", 0xFFFFFFFF, 0, "\"c\" ffffffff00000000"},
      {longest, 0x12345678, 0x9ABCDEF0, '"' + longest + "\" 123456789abcdef0"},
  };
  for (const Case& tried : cases) {
    char line[kLaunchLineCapacity];
    FormatLaunchLine(line, tried.path.c_str(), tried.processId, tried.address);
    EXPECT_EQ(line, tried.line);
  }
}

using EncipheredLine = test::ScratchTest;

TEST_F(EncipheredLine, IsTheSignedLineAndZeroBytesOrZeroBytesAlone) {
  for (const std::size_t length : {1u, 500u, 2026u, 2027u}) {
    const std::string line(length, 'l');
    std::string expected = length > 2026 ? "" : "/* QTRMWO_Kd3Z_HLvN */" + line;
    expected.resize(2048);
    std::uint8_t block[kEncipheredLineSize];
    EXPECT_TRUE(EncipherLaunchLine(block, line.c_str()));
    std::uint32_t size = 0;
    std::uint32_t offset = 0;
    EXPECT_EQ(QX_Decode(block, sizeof block, &size, &offset, 0), QX_SUCCEEDED);
    EXPECT_EQ(std::string(block + offset, block + offset + size), expected);
  }
}

}  // namespace
}  // namespace launcher
