// For faults of the readers of a launch line: a text of one character too few, twice the count that
// wraps, strtoul's rules in place of digit by digit, an output touched on failure.

#include <gtest/gtest.h>

#include <string>
#include <tuple>

#include "launcher_dll.h"
#include "support/bytes.h"
#include "support/guarded_buffer.h"

namespace launcher {
namespace {

using test::Bytes;
using test::GuardedBuffer;

TEST(LineReaders, ReadTheLastEightCharacters) {
  constexpr std::uint32_t kUnwritten = 0xCDCDCDCD;
  // The number up to the first character that is no digit, and the number in which such a character
  // counts as 0 and keeps its place.
  const std::tuple<std::string, std::uint32_t, std::uint32_t> cases[] = {
      {"abc00001a2b", 0x1A2B, 0x1A2B},
      {"DEADbeef", 0xDEADBEEF, 0xDEADBEEF},
      {"12g45678", 0x12, 0x12045678},
      {"x  0x00ff", 0xFF, 0xFF},
      {"-0000001", 0xFFFFFFFF, 1},
      {"-+ xF\xC3g9", 0, 0xF009},
      {"/:@G`g19", 0, 0x19},  // the neighbours of the digits
      {"1234567", kUnwritten, kUnwritten},
      {"", kUnwritten, kUnwritten},
  };
  for (const auto& [text, number, expectedAddress] : cases) {
    SCOPED_TRACE(text);
    const std::size_t length = text.size() < 8 ? text.size() : text.size() - 8;
    std::uint32_t address = kUnwritten;
    std::uint32_t value = kUnwritten;
    for (const bool hasOutput : {true, false}) {
      const ResultCode result = text.size() < 8 ? QX_FAILED : QX_SUCCEEDED;
      std::string line = text;
      EXPECT_EQ(QX_RightAddress(hasOutput ? &address : nullptr, line.c_str()), result);
      EXPECT_EQ(QX_RightDWORD(hasOutput ? &value : nullptr, line.data()), result);
      EXPECT_EQ(line.c_str(), text.substr(0, length));
    }
    EXPECT_EQ(address, expectedAddress);
    EXPECT_EQ(value, number);
  }
  EXPECT_EQ(QX_RightDWORD(nullptr, nullptr), QX_BAD_ARGUMENT);
  EXPECT_EQ(QX_RightAddress(nullptr, nullptr), QX_BAD_ARGUMENT);
}

TEST(LineReaders, ReadPairsAndFillUpWithZeroBytes) {
  const Bytes untouched = {0xCD, 0xCD, 0xCD, 0xCD};
  using Case = std::tuple<const char*, std::uint32_t, std::uint32_t, ResultCode, Bytes>;
  const Case cases[] = {
      {"12ff0a", 2, 3, QX_SUCCEEDED, {0xFF, 0x0A, 0}},
      {"xFf0A", 2, 5, QX_SUCCEEDED, {0xFF, 0x0A, 0, 0, 0}},
      {"ff0a", 2, 2, QX_SUCCEEDED, {0xFF, 0x0A}},  // no room for a NUL
      {"1gg1zz", 3, 4, QX_SUCCEEDED, {0x10, 0x01, 0, 0}},
      {"12", 0, 3, QX_SUCCEEDED, {0, 0, 0}},
      {nullptr, 2, 1, QX_BAD_ARGUMENT, untouched},
      {"ff0a", 2, 1, QX_FAILED, untouched},
      {"f0a", 2, 4, QX_FAILED, untouched},
      // Twice the count wraps to 2.
      {"ff", 0x80000001, 0xFFFFFFFF, QX_FAILED, untouched},
  };
  for (const auto& [text, count, capacity, result, expected] : cases) {
    const GuardedBuffer buffer(expected.size());
    EXPECT_EQ(QX_RightBinary(nullptr, capacity, text, count), result);
    EXPECT_EQ(QX_RightBinary(buffer.Data(), capacity, text, count), result);
    EXPECT_EQ(buffer.Content(), expected) << count << ", " << capacity;
  }
}

}  // namespace
}  // namespace launcher
