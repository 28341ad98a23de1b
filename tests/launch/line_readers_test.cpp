#include <gtest/gtest.h>

#include <string>

#include "launcher_dll.h"
#include "support/bytes.h"
#include "support/guarded_buffer.h"

namespace launcher {
namespace {

using test::Bytes;
using test::GuardedBuffer;

TEST(RightDWORD, TakesTheLastEightCharactersOff) {
  struct Case {
    const char* text;
    std::uint32_t value;
    const char* left;
  };
  const Case cases[] = {
      {"abc00001a2b", 0x1A2B, "abc"}, {"DEADbeef", 0xDEADBEEF, ""}, {"0000zz12", 0, ""},
      {"12g45678", 0x12, ""},                                    // up to the first that is none
      {"-0000001", 0xFFFFFFFF, ""},   {"x  0x00ff", 0xFF, "x"},  // what strtoul takes
  };
  for (const Case& tried : cases) {
    std::string text = tried.text;
    std::uint32_t value = 0xCDCDCDCD;
    EXPECT_EQ(QX_RightDWORD(&value, text.data()), QX_SUCCEEDED) << tried.text;
    EXPECT_EQ(value, tried.value) << tried.text;
    EXPECT_STREQ(text.c_str(), tried.left);
  }
  std::string text = "12345678";
  EXPECT_EQ(QX_RightDWORD(nullptr, text.data()), QX_SUCCEEDED) << "no value is asked for";
  EXPECT_STREQ(text.c_str(), "");
}

TEST(RightDWORD, LeavesAShortTextAlone) {
  std::string text = "1234567";
  std::uint32_t value = 5;
  EXPECT_EQ(QX_RightDWORD(&value, text.data()), QX_FAILED);
  EXPECT_EQ(QX_RightDWORD(&value, nullptr), QX_BAD_ARGUMENT);
  EXPECT_EQ(value, 5u);
  EXPECT_EQ(text, "1234567");
}

TEST(RightAddress, ReadsTheLastEightCharacters) {
  const std::pair<const char*, std::uint32_t> cases[] = {
      {"xx00ABCDEF", 0x00ABCDEF},  // what stands before is not looked at
      {"00abcdef", 0x00ABCDEF},    // either case, and no character to spare
      {"0000zz12", 0x12},          // no digit counts as 0 and keeps its place
      {"-+ xF\xC3g9", 0xF009},
  };
  for (const auto& [text, expected] : cases) {
    std::uint32_t address = 0xCDCDCDCD;
    EXPECT_EQ(QX_RightAddress(&address, text), QX_SUCCEEDED) << text;
    EXPECT_EQ(address, expected) << text;
  }
  EXPECT_EQ(QX_RightAddress(nullptr, "12345678"), QX_SUCCEEDED) << "no address is asked for";
}

TEST(RightAddress, LeavesTheAddressAloneOnFailure) {
  std::uint32_t address = 5;
  EXPECT_EQ(QX_RightAddress(&address, "1234567"), QX_FAILED);
  EXPECT_EQ(QX_RightAddress(&address, nullptr), QX_BAD_ARGUMENT);
  EXPECT_EQ(address, 5u);
}

TEST(RightBinary, ReadsPairsAndFillsUpWithZeroBytes) {
  struct Case {
    const char* text;
    std::uint32_t count;
    Bytes expected;  // the whole capacity
  };
  const Case cases[] = {
      {"ff0a", 2, {0xFF, 0x0A, 0}},
      {"3a35", 2, {0x3A, 0x35, 0, 0, 0}},
      {"xxFf0A", 2, {0xFF, 0x0A, 0}},
      {"ff0a", 2, {0xFF, 0x0A}},  // no room for a NUL
      {"1gg1zz", 3, {0x10, 0x01, 0, 0}},
      {"12", 0, {0, 0, 0}},
      {"", 0, {}},
  };
  for (const Case& tried : cases) {
    const GuardedBuffer buffer(tried.expected.size());
    EXPECT_EQ(QX_RightBinary(buffer.Data(), buffer.Size(), tried.text, tried.count), QX_SUCCEEDED);
    EXPECT_EQ(buffer.Content(), tried.expected) << tried.text;
  }
}

TEST(RightBinary, WritesNothingOnFailure) {
  const GuardedBuffer buffer(4);
  EXPECT_EQ(QX_RightBinary(buffer.Data(), 4, nullptr, 1), QX_BAD_ARGUMENT);
  EXPECT_EQ(QX_RightBinary(buffer.Data(), 1, "ff0a", 2), QX_FAILED) << "capacity below count";
  EXPECT_EQ(QX_RightBinary(buffer.Data(), 4, "f0a", 2), QX_FAILED) << "a short text";
  // Twice the count wraps to 0 and 2.
  EXPECT_EQ(QX_RightBinary(buffer.Data(), 0xFFFFFFFF, "ff", 0x80000000), QX_FAILED);
  EXPECT_EQ(QX_RightBinary(buffer.Data(), 0xFFFFFFFF, "ff", 0x80000001), QX_FAILED);
  EXPECT_TRUE(buffer.IsUntouched());

  EXPECT_EQ(QX_RightBinary(nullptr, 2, "ff0a", 2), QX_SUCCEEDED) << "only the text is tested";
  EXPECT_EQ(QX_RightBinary(nullptr, 1, "ff0a", 2), QX_FAILED);
}

}  // namespace
}  // namespace launcher
