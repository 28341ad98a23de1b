// For faults of the readers of a launch line: a text of one character too few, twice the count that
// wraps, strtoul's rules in place of digit by digit, an output touched on failure.

#include <gtest/gtest.h>

#include <string>

#include "launcher_dll.h"
#include "support/bytes.h"
#include "support/guarded_buffer.h"

namespace launcher {
namespace {

using test::Bytes;
using test::GuardedBuffer;

constexpr std::uint32_t kUnwritten = 0xCDCDCDCD;

TEST(RightDWORD, TakesTheLastEightCharactersOff) {
  struct Case {
    std::string text;
    ResultCode result;
    std::uint32_t value;
    std::string left;
  };
  const Case cases[] = {
      {"abc00001a2b", QX_SUCCEEDED, 0x1A2B, "abc"},  {"DEADbeef", QX_SUCCEEDED, 0xDEADBEEF, ""},
      {"12g45678", QX_SUCCEEDED, 0x12, ""},  // up to the first character that is no digit
      {"-0000001", QX_SUCCEEDED, 0xFFFFFFFF, ""},    {"x  0x00ff", QX_SUCCEEDED, 0xFF, "x"},
      {"1234567", QX_FAILED, kUnwritten, "1234567"}, {"", QX_FAILED, kUnwritten, ""},
  };
  for (Case tried : cases) {
    SCOPED_TRACE(tried.text);
    std::string text = tried.text;
    std::uint32_t value = kUnwritten;
    EXPECT_EQ(QX_RightDWORD(nullptr, text.data()), tried.result);
    EXPECT_EQ(text.c_str(), tried.left);
    EXPECT_EQ(QX_RightDWORD(&value, tried.text.data()), tried.result);
    EXPECT_EQ(tried.text.c_str(), tried.left);
    EXPECT_EQ(value, tried.value);
  }
}

TEST(RightAddress, ReadsTheLastEightCharacters) {
  struct Case {
    const char* text;
    ResultCode result;
    std::uint32_t address;
  };
  const Case cases[] = {
      {"xx00ABCDEF", QX_SUCCEEDED, 0x00ABCDEF}, {"00abcdef", QX_SUCCEEDED, 0x00ABCDEF},
      {"0000zz12", QX_SUCCEEDED, 0x12},  // what is no digit counts as 0 and keeps its place
      {"/:@G`g19", QX_SUCCEEDED, 0x19},  // the neighbours of the digits
      {"-+ xF\xC3g9", QX_SUCCEEDED, 0xF009},    {"1234567", QX_FAILED, kUnwritten},
      {nullptr, QX_BAD_ARGUMENT, kUnwritten},
  };
  for (const Case& tried : cases) {
    std::uint32_t address = kUnwritten;
    EXPECT_EQ(QX_RightAddress(&address, tried.text), tried.result) << tried.address;
    EXPECT_EQ(address, tried.address);
    EXPECT_EQ(QX_RightAddress(nullptr, tried.text), tried.result) << tried.address;
  }
  std::uint32_t value = kUnwritten;
  EXPECT_EQ(QX_RightDWORD(&value, nullptr), QX_BAD_ARGUMENT);
  EXPECT_EQ(value, kUnwritten);
}

TEST(RightBinary, ReadsPairsAndFillsUpWithZeroBytes) {
  const Bytes untouched = {0xCD, 0xCD, 0xCD, 0xCD};
  struct Case {
    const char* text;
    std::uint32_t count;
    std::uint32_t capacity;
    ResultCode result;
    Bytes expected;  // the whole buffer
  };
  const Case cases[] = {
      {"ff0a", 2, 3, QX_SUCCEEDED, {0xFF, 0x0A, 0}},
      {"xFf0A", 2, 5, QX_SUCCEEDED, {0xFF, 0x0A, 0, 0, 0}},
      {"ff0a", 2, 2, QX_SUCCEEDED, {0xFF, 0x0A}},  // no room for a NUL
      {"1gg1zz", 3, 4, QX_SUCCEEDED, {0x10, 0x01, 0, 0}},
      {"12", 0, 3, QX_SUCCEEDED, {0, 0, 0}},
      {"", 0, 0, QX_SUCCEEDED, {}},
      {nullptr, 1, 4, QX_BAD_ARGUMENT, untouched},
      {nullptr, 2, 1, QX_BAD_ARGUMENT, untouched},
      {"ff0a", 2, 1, QX_FAILED, untouched},
      {"f0a", 2, 4, QX_FAILED, untouched},
      // Twice the count wraps to 0 and 2.
      {"ff", 0x80000000, 0xFFFFFFFF, QX_FAILED, untouched},
      {"ff", 0x80000001, 0xFFFFFFFF, QX_FAILED, untouched},
  };
  for (const Case& tried : cases) {
    const GuardedBuffer buffer(tried.expected.size());
    EXPECT_EQ(QX_RightBinary(nullptr, tried.capacity, tried.text, tried.count), tried.result);
    EXPECT_EQ(QX_RightBinary(buffer.Data(), tried.capacity, tried.text, tried.count), tried.result);
    EXPECT_EQ(buffer.Content(), tried.expected) << tried.count << ", " << tried.capacity;
  }
}

}  // namespace
}  // namespace launcher
