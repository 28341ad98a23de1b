// For faults of the string table's exports: a text or a setting under another label, a room of one
// byte too few, an output touched on failure, a line printed too early, too late or not,
// a field of the system information at another place.

#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "launcher_dll.h"
#include "support/captured_output.h"
#include "support/data_file.h"
#include "support/guarded_buffer.h"
#include "support/scratch_directory.h"
#include "support/system.h"

#if defined(_WIN32)
#include "support/import_patch_windows.h"
#endif

namespace launcher {
namespace {

using test::CallLine;
using test::GuardedBuffer;
using test::StandardOutputOf;
using test::WriteSettings;

using StringTable = test::ScratchTest;

std::string Text(StringLabel label) {
  char text[256] = "";
  EXPECT_EQ(QX_LoadString(label, text, sizeof text), QX_SUCCEEDED) << label;
  EXPECT_EQ(QX_GetLengthOfRString(label), std::strlen(text));
  return text;
}

TEST_F(StringTable, HoldsItsTextsAndNoOthers) {
  const auto entries = test::ReadDataLines("texts.txt", 2);
  EXPECT_EQ(entries.size(), 42u);
  for (const auto& entry : entries) EXPECT_EQ(Text(std::stoi(entry[0])), entry[1]) << entry[0];

  for (const StringLabel label : {-1, 1, 11, 1002, 1013, 2019, 10024, 11002, 0x7FFFFFFF}) {
    SCOPED_TRACE(label);
    char untouched = 'u';
    char* text = &untouched;
    EXPECT_EQ(QX_LoadStringToMemory(label, &text), QX_NOT_FOUND);
    EXPECT_EQ(text, &untouched);
    EXPECT_EQ(QX_LoadString(label, &untouched, 1), QX_NOT_FOUND);
    EXPECT_EQ(untouched, 'u');
    EXPECT_EQ(QX_GetLengthOfRString(label), 0u);
  }
}

TEST_F(StringTable, CreatesTheSettingsOnceWithAnyLabel) {
  EXPECT_EQ(StandardOutputOf([] { EXPECT_EQ(QX_GetLengthOfRString(0x7FFFFFFF), 0u); }),
            CallLine(0x7FFFFFFF) + "Created default config: config.json\n");
  const std::string made = test::ReadFile("config.json");
  EXPECT_EQ(test::WithoutReturns(made), test::ReadDataFile("default_config.json"));
  EXPECT_EQ(made[1] == '\r', test::kIsWindows);
  EXPECT_EQ(test::ScratchDirectory::FileCount(), 1u);
  EXPECT_EQ(StandardOutputOf([] { EXPECT_EQ(QX_GetLengthOfRString(2001), 9u); }), CallLine(2001));
}

TEST_F(StringTable, ReadsTheSettingsAtEveryLookup) {
  WriteSettings("https://api.orvane.example/api", "https://other.example/");
  EXPECT_EQ(Text(1001), "https://other.example/");
  EXPECT_EQ(Text(1200), "https://api.orvane.example/api");
  WriteSettings(".orvane.example\"", "\\u00e9%s\\u0000hidden\"");
  EXPECT_EQ(Text(5100), "\xC3\xA9%s");
  WriteSettings("qa-api.orvane.example", "");
  EXPECT_EQ(Text(5000), "");
  std::filesystem::remove("config.json");
  EXPECT_EQ(Text(5000), "qa-api.orvane.example");
}

TEST_F(StringTable, NeedsRoomForTheTerminator) {
  for (const std::uint32_t capacity : {1u, 8u, 9u, 10u, 11u}) {
    const GuardedBuffer buffer(capacity);
    std::string expected(capacity, '\xCD');
    if (capacity == 9) expected[0] = '\0';  // if only the terminator does not fit, an empty text
    if (capacity > 9) expected.replace(0, 10, "Forbidden", 10);
    EXPECT_EQ(QX_LoadString(2001, buffer.Text(), capacity), capacity < 10 ? QX_BAD_ARGUMENT : 0);
    EXPECT_EQ(std::string(buffer.Text(), capacity), expected);
  }
}

TEST_F(StringTable, PrintsBeforeItsChecksOrNotAtAll) {
  char untouched = 'u';
  const std::string printed = StandardOutputOf([&] {
    EXPECT_EQ(QX_LoadString(2001, nullptr, 8), QX_BAD_ARGUMENT);
    EXPECT_EQ(QX_LoadString(2001, &untouched, 0), QX_BAD_ARGUMENT);
    EXPECT_EQ(QX_LoadStringToMemory(-7, nullptr), QX_BAD_ARGUMENT);
  });
  EXPECT_EQ(printed, CallLine(-7));
  EXPECT_EQ(untouched, 'u');
  EXPECT_EQ(test::ScratchDirectory::FileCount(), 0u);
}

TEST_F(StringTable, GivesCopiesThatGoBack) {
  char* text = nullptr;
  EXPECT_EQ(QX_LoadStringToMemory(2018, &text), QX_SUCCEEDED);
  text[0] = 'B';
  EXPECT_EQ(Text(2018), "END");
  EXPECT_EQ(QX_UnloadStringFromMemory(&text), QX_SUCCEEDED);
  EXPECT_EQ(text, nullptr);
  EXPECT_EQ(QX_UnloadStringFromMemory(&text), QX_SUCCEEDED);
  EXPECT_EQ(QX_UnloadStringFromMemory(nullptr), QX_BAD_ARGUMENT);
}

TEST_F(StringTable, FillsASystemInformationOf176Bytes) {
  std::string record("\0\0\0\0\2\0\0\0\5\0\0\0\0\0\0\0Release", 23);
  record.resize(48);
  record += "Tervane Inc.";
  record.resize(176);
  QX_IsStaging();
  for (const std::uint32_t size : {175u, 176u, 0xFFFFFFFFu}) {
    const GuardedBuffer buffer(176);
    auto* const data = reinterpret_cast<SystemInformation*>(buffer.Data());
    const std::string printed = StandardOutputOf([&] {
      EXPECT_EQ(QX_GetSystemInformation(data, size), size < 176 ? QX_BAD_ARGUMENT : 0);
      EXPECT_EQ(QX_GetSystemInformation(nullptr, size), QX_BAD_ARGUMENT);
    });
    EXPECT_EQ(printed, size < 176 ? "" : CallLine(10) + CallLine(0));
    EXPECT_EQ(std::string(buffer.Text(), 176), size < 176 ? std::string(176, '\xCD') : record);
  }
}

#if defined(_WIN32)

int calls = 0;

int CountCall(const char* /*format*/, ...) { return ++calls; }

// MinGW's own printf and the runtime's fwrite write each character by itself if the output is a
// console.
TEST_F(StringTable, PrintsALineWithOneCallOfTheRuntime) {
  const test::ImportPatch patch("printf_s", reinterpret_cast<void*>(CountCall));
  EXPECT_EQ(QX_LoadStringToMemory(1, nullptr), QX_BAD_ARGUMENT);
  EXPECT_EQ(calls, 1);
}

#endif

}  // namespace
}  // namespace launcher
