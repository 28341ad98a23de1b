// For faults of reading config.json: a setting that may be missing or of another type, a member
// taken from another place, the wrong one of several errors reported, a line that is not flushed.

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdio>
#include <string>
#include <vector>

#include "launcher_dll.h"
#include "support/captured_output.h"
#include "support/data_file.h"
#include "support/scratch_directory.h"

namespace launcher {
namespace {

using MalformedConfig = test::ScratchTest;

// Returns what QX_IsStaging wrote and flushed.
std::string WrittenByIsStaging(std::FILE* stream, std::int32_t isStaging) {
  std::fflush(stream);
  std::FILE* const file = std::fopen("written", "w");
  const int before = dup(fileno(stream));
  dup2(fileno(file), fileno(stream));
  std::setvbuf(stream, nullptr, _IOFBF, BUFSIZ);
  EXPECT_EQ(QX_IsStaging(), isStaging);
  const std::string text = test::ReadFile("written");
  if (stream == stderr) std::setvbuf(stream, nullptr, _IONBF, 0);
  dup2(before, fileno(stream));
  close(before);
  std::fclose(file);
  std::filesystem::remove("written");
  return test::WithoutReturns(text);
}

std::string DefaultsWith(const std::string& from, const std::string& to) {
  std::string text = test::ReadDataFile("default_config.json");
  return text.replace(text.find(from), from.size(), to);
}

// The error for a file of this content must be the JSON library's own and have this part.
void ExpectError(const std::string& content, const std::string& part) {
  SCOPED_TRACE(content.substr(0, 200));
  test::WriteFile("config.json", content);
  const std::string written = WrittenByIsStaging(stderr, 0);
  EXPECT_EQ(written.rfind("Error: [json.exception.", 0), 0u) << written;
  EXPECT_NE(written.find(part), std::string::npos) << written;
  char* text = nullptr;
  EXPECT_EQ(QX_LoadStringToMemory(2001, &text), QX_FAILED);
  EXPECT_EQ(text, nullptr);
  EXPECT_EQ(test::ReadFile("config.json"), content);
}

TEST_F(MalformedConfig, IsReportedByTheFirstError) {
  const char* const keys[] = {
#define SETTING(section, key, field, defaultText) #key,
#include "settings.inc"
  };
  for (const std::string key : keys) {
    const std::string member = '"' + key + "\": ";
    ExpectError(DefaultsWith(member, "\"no_" + key + "\": "), "string, but is null\n");
    ExpectError(DefaultsWith(member, member + "false, \"no_" + key + "\": "),
                "string, but is boolean\n");
  }
  const std::string orvane = "{\"Orvane\": ";
  const std::pair<std::string, std::string> cases[] = {
      {"", "parse_error."},
      {std::string(100000, '['), "parse_error."},
      {"null", "string, but is null\n"},
      {"-1.5", "argument with number\n"},
      {"\"text\"", "argument with string\n"},
      {orvane + "[{\"Api_server\": \"a\"}]}", "argument with array\n"},
      {orvane + "{\"Api_server\": [\"a\"]}}", "string, but is array\n"},
      {orvane + "{\"Api_server\": {}}}", "string, but is object\n"},
      {"{\"Settings\": [], \"Orvane\": {\"Api_server\": -1}}", "string, but is number\n"},
      {DefaultsWith("\"Settings\": {", "\"Settings\": 1, \"x\": {"), "argument with number\n"},
      // The next value must not take the place of the null.
      {DefaultsWith("\"Api_server\": ", "\"Api_server\": null, \"x\": "), "string, but is null\n"},
      // A setting counts only in its own section. If a section appears twice, only the last counts.
      {DefaultsWith("\"Api_server\": ", "\"x\": {\"Api_server\": \"a\"}, \"y\": "),
       "string, but is null\n"},
      {DefaultsWith("\"Orvane\": ", "\"Api_server\": \"a\", \"orvane\": "),
       "string, but is null\n"},
      {DefaultsWith("\"Settings\"", "\"Orvane\": {}, \"Settings\""), "string, but is null\n"},
  };
  for (const auto& [content, error] : cases) ExpectError(content, error);
}

TEST_F(MalformedConfig, LoadsIfTheSettingsAreAllThere) {
  for (const std::string& content :
       {DefaultsWith("{", "\xEF\xBB\xBF{") + "}} not read",
        DefaultsWith("{", "{\"Third\": [1, {}], \"Orvane\": null, \"Settings\": [], "),
        DefaultsWith("\"Api_server\"", "\"x\": [{\"Api_server\": 7}], \"Api_server\""),
        // QX_IsStaging does not use the value of this setting.
        DefaultsWith("\"Is_Staging\": \"true\"", "\"Is_Staging\": \"false\"")}) {
    SCOPED_TRACE(content);
    test::WriteFile("config.json", content);
    EXPECT_EQ(WrittenByIsStaging(stderr, 1), "");
    EXPECT_EQ(QX_GetLengthOfRString(2001), 9u);
    EXPECT_EQ(test::ReadFile("config.json"), content);
  }
}

TEST_F(MalformedConfig, FlushesWhatItPrints) {
  EXPECT_EQ(WrittenByIsStaging(stdout, 1), "Created default config: config.json\n");
}

}  // namespace
}  // namespace launcher
