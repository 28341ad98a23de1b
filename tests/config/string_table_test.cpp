#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "launcher_dll.h"
#include "support/bytes.h"
#include "support/captured_output.h"
#include "support/data_file.h"
#include "support/guarded_buffer.h"
#include "support/scratch_directory.h"
#include "support/system.h"

namespace launcher {
namespace {

using test::CallLine;
using test::GuardedBuffer;
using test::StandardOutputOf;
using test::WriteSettings;

constexpr char kCreatedLine[] = "Created default config: config.json\n";

class StringTable : public test::ScratchTest {
 protected:
  static std::string Text(StringLabel label) {
    char text[256] = "";
    EXPECT_EQ(QX_LoadString(label, text, sizeof text), QX_SUCCEEDED) << label;
    return text;
  }
};

TEST_F(StringTable, HoldsEveryText) {
  const auto entries = test::ReadDataLines("texts.txt", 2);
  ASSERT_EQ(entries.size(), 42u);
  for (const auto& entry : entries) {
    const StringLabel label = std::stoi(entry[0]);
    EXPECT_EQ(Text(label), entry[1]) << label;
    EXPECT_EQ(QX_GetLengthOfRString(label), entry[1].size()) << label;
  }
}

TEST_F(StringTable, HoldsNoOtherLabel) {
  for (const StringLabel label : {-1, 1, 11, 1002, 1013, 2019, 10024, 11002, 0x7FFFFFFF}) {
    char untouched = 0;
    char* text = &untouched;
    EXPECT_EQ(QX_LoadStringToMemory(label, &text), QX_NOT_FOUND) << label;
    EXPECT_EQ(text, &untouched) << label;
    EXPECT_EQ(QX_LoadString(label, &untouched, 1), QX_NOT_FOUND) << label;
    EXPECT_EQ(QX_GetLengthOfRString(label), 0u) << label;
  }
}

TEST_F(StringTable, CreatesTheSettingsOnceWhateverTheLabel) {
  EXPECT_EQ(StandardOutputOf([] { EXPECT_EQ(QX_GetLengthOfRString(1), 0u); }),
            CallLine(1) + kCreatedLine);
  std::string expected = test::ReadDataFile("default_config.json");
  for (std::size_t at = 0; (at = expected.find('\n', at)) != std::string::npos;) {
    expected.replace(at, 1, test::kLineEnd);
    at += std::strlen(test::kLineEnd);
  }
  EXPECT_EQ(test::ReadFile("config.json"), expected);
  EXPECT_EQ(test::ScratchDirectory::FileCount(), 1u);

  EXPECT_EQ(StandardOutputOf([] { EXPECT_EQ(QX_GetLengthOfRString(2001), 9u); }), CallLine(2001));
}

TEST_F(StringTable, ReadsTheSettingsAtEveryLookup) {
  WriteSettings("https://api.orvane.example/api", "https://other.example/");
  EXPECT_EQ(Text(1001), "https://other.example/");
  EXPECT_EQ(Text(1200), "https://api.orvane.example/api") << "a setting of its own";

  // The whole file, and what stands in a text, byte for byte.
  WriteSettings(".orvane.example\"", "\\u00e9%s\\u0000hidden\"");
  EXPECT_EQ(Text(5100), "\xC3\xA9%s");
  EXPECT_EQ(QX_GetLengthOfRString(5100), 4u);

  WriteSettings("qa-api.orvane.example", "");
  char* text = nullptr;
  EXPECT_EQ(QX_LoadStringToMemory(5000, &text), QX_SUCCEEDED) << "an empty text is a text";
  EXPECT_STREQ(text, "");
  QX_UnloadStringFromMemory(&text);

  std::filesystem::remove("config.json");
  EXPECT_EQ(Text(5000), "qa-api.orvane.example");
}

TEST_F(StringTable, NeedsRoomForTheTerminator) {
  struct Case {
    std::uint32_t capacity;
    ResultCode result;
    std::string begin;  // what the first bytes of the buffer are then
  };
  const std::string empty(1, '\0');
  const Case cases[] = {
      {1, QX_BAD_ARGUMENT, "\xCD"},
      {8, QX_BAD_ARGUMENT, "\xCD\xCD"},
      {9, QX_BAD_ARGUMENT, empty},
      {10, QX_SUCCEEDED, "Forbidden" + empty},
      {50, QX_SUCCEEDED, "Forbidden" + empty},
  };
  for (const Case& tried : cases) {
    const GuardedBuffer buffer(tried.capacity);
    EXPECT_EQ(QX_LoadString(2001, buffer.Text(), tried.capacity), tried.result) << tried.capacity;
    EXPECT_EQ(std::memcmp(buffer.Text(), tried.begin.data(), tried.begin.size()), 0);
    if (tried.capacity > 10) {
      EXPECT_EQ(buffer.Data()[10], GuardedBuffer::kFill);
    }
  }
}

TEST_F(StringTable, PrintsAheadOfItsChecksOrNotAtAll) {
  char buffer[8];
  EXPECT_EQ(StandardOutputOf([&] {
              EXPECT_EQ(QX_LoadString(2001, nullptr, 8), QX_BAD_ARGUMENT);
              EXPECT_EQ(QX_LoadString(2001, buffer, 0), QX_BAD_ARGUMENT);
            }),
            "");
  EXPECT_EQ(
      StandardOutputOf([] { EXPECT_EQ(QX_LoadStringToMemory(-7, nullptr), QX_BAD_ARGUMENT); }),
      CallLine(-7));
  EXPECT_EQ(test::ScratchDirectory::FileCount(), 0u) << "no settings were asked for";
}

TEST_F(StringTable, GivesCopiesThatGoBack) {
  char* text = nullptr;
  ASSERT_EQ(QX_LoadStringToMemory(2018, &text), QX_SUCCEEDED);
  EXPECT_STREQ(text, "END");
  text[0] = 'B';
  EXPECT_EQ(Text(2018), "END");
  EXPECT_EQ(QX_UnloadStringFromMemory(&text), QX_SUCCEEDED);
  EXPECT_EQ(text, nullptr);
  EXPECT_EQ(QX_UnloadStringFromMemory(&text), QX_SUCCEEDED) << "a second time";
  EXPECT_EQ(QX_UnloadStringFromMemory(nullptr), QX_BAD_ARGUMENT);
}

}  // namespace
}  // namespace launcher
