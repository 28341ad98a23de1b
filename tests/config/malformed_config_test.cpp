// Settings files that do not load, and odd ones that do. None is ever changed.

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "launcher_dll.h"
#include "support/captured_output.h"
#include "support/data_file.h"
#include "support/scratch_directory.h"

namespace launcher {
namespace {

using MalformedConfig = test::ScratchTest;

const std::string& Defaults() {
  static const std::string defaults = test::ReadDataFile("default_config.json");
  return defaults;
}

std::string DefaultsWith(const std::string& from, const std::string& to) {
  std::string text = Defaults();
  const std::size_t at = text.find(from);
  if (at == std::string::npos) throw std::invalid_argument(from);
  return text.replace(at, from.size(), to);
}

std::string WrongType(const std::string& type) {
  return "[json.exception.type_error.302] type must be string, but is " + type + "\n";
}

std::string WrongContainer(const std::string& type) {
  return "[json.exception.type_error.305] cannot use operator[] with a string argument with " +
         type + "\n";
}

// What is printed behind "Error: "; "[json.exception.parse_error." stands for any such text.
void ExpectError(const std::string& content, const std::string& error) {
  SCOPED_TRACE(content.substr(0, 200));
  test::WriteFile("config.json", content);
  std::int32_t isStaging = -1;
  const std::string printed = test::StandardErrorOf([&] { isStaging = QX_IsStaging(); });
  EXPECT_EQ(isStaging, 0);
  EXPECT_EQ(printed.substr(0, 7), "Error: ");
  EXPECT_EQ(printed.substr(7, error.back() == '\n' ? std::string::npos : error.size()), error);

  // Lookups of fixed texts fail too.
  char untouched = 0;
  char* text = &untouched;
  EXPECT_EQ(QX_LoadStringToMemory(2001, &text), QX_FAILED);
  EXPECT_EQ(text, &untouched);
  char buffer[16] = "before";
  EXPECT_EQ(QX_LoadString(2001, buffer, sizeof buffer), QX_FAILED);
  EXPECT_STREQ(buffer, "before");
  EXPECT_EQ(QX_GetLengthOfRString(2001), 0u);
  EXPECT_EQ(test::ReadFile("config.json"), content);
}

TEST_F(MalformedConfig, IsToldWhereItIsNoJson) {
  for (const std::string& content :
       {std::string(), std::string(" \n"), std::string("\0", 1), std::string("{"),
        std::string("settings"), std::string("{\"Orvane\": {\"Api_server\": \"\xFF\"}}"),
        Defaults().substr(0, Defaults().size() / 2), DefaultsWith(": \"false\"", ": 'false'"),
        std::string(100000, '[')}) {
    ExpectError(content, "[json.exception.parse_error.");
  }
}

TEST_F(MalformedConfig, IsToldForEachSetting) {
  const char* const keys[] = {
#define SETTING(section, key, field, defaultText) #key,
#include "settings.inc"
  };
  for (const std::string key : keys) {
    const std::string member = '"' + key + "\": ";
    ExpectError(DefaultsWith(member, "\"no_" + key + "\": "), WrongType("null"));
    for (const auto& [value, type] :
         {std::pair{"null", "null"}, std::pair{"7", "number"}, std::pair{"false", "boolean"},
          std::pair{"[\"a\"]", "array"}, std::pair{"{}", "object"}}) {
      ExpectError(DefaultsWith(member, member + value + ", \"was_" + key + "\": "),
                  WrongType(type));
    }
  }
}

TEST_F(MalformedConfig, IsToldForDocumentAndSection) {
  ExpectError("null", WrongType("null"));
  ExpectError("{}", WrongType("null"));
  ExpectError(DefaultsWith("\"Settings\"", "\"settings\""), WrongType("null"));
  for (const auto& [value, type] : {std::pair{"[]", "array"}, std::pair{"false", "boolean"},
                                    std::pair{"-1.5", "number"}, std::pair{"\"text\"", "string"}}) {
    ExpectError(value, WrongContainer(type));
    ExpectError(std::string("{\"Orvane\": ") + value + "}", WrongContainer(type));
  }
  // Members count in their own section alone, and of two sections the last.
  ExpectError(DefaultsWith("\"Api_server\": ", "\"x\": {\"Api_server\": \"a\"}, \"y\": "),
              WrongType("null"));
  ExpectError(DefaultsWith("\"Settings\"", "\"Orvane\": {}, \"Settings\""), WrongType("null"));
  // Of several faults the first setting's is told.
  ExpectError(R"({"Orvane": {"Api_server": -1}, "Settings": []})", WrongType("number"));
}

TEST_F(MalformedConfig, LoadsWhereTheSettingsAreAllThere) {
  for (const std::string& content :
       {Defaults() + "}} left alone", "\xEF\xBB\xBF" + Defaults(),
        DefaultsWith("{", "{\"Third\": [1, {}], \"Orvane\": null, "),
        DefaultsWith("\"Is_Staging\": \"true\"", "\"Is_Staging\": \"false\"")}) {
    SCOPED_TRACE(content);
    test::WriteFile("config.json", content);
    EXPECT_EQ(test::StandardErrorOf([] { EXPECT_EQ(QX_IsStaging(), 1); }), "");
    EXPECT_EQ(QX_GetLengthOfRString(2001), 9u);
    EXPECT_EQ(test::ReadFile("config.json"), content);
  }
}

TEST_F(MalformedConfig, IsMadeByIsStagingWhereThereIsNone) {
  EXPECT_EQ(test::StandardOutputOf([] { EXPECT_EQ(QX_IsStaging(), 1); }),
            "Created default config: config.json\n");
  EXPECT_EQ(test::StandardOutputOf([] { EXPECT_EQ(QX_IsStaging(), 1); }), "");
}

}  // namespace
}  // namespace launcher
