// The settings file and its readers, compared with the JSON library's own document and the list of
// texts. For files that the library reads otherwise than the JSON library does.

#include <cstring>
#include <map>
#include <nlohmann/json.hpp>
#include <sstream>
#include <string>

#include "fuzz/fuzzing.h"
#include "launcher_dll.h"
#include "support/captured_output.h"
#include "support/data_file.h"
#include "support/scratch_directory.h"

namespace launcher {
namespace {

using fuzz::PrintedTo;
using fuzz::Require;
using Json = nlohmann::json;

constexpr char kPath[] = "config.json";

constexpr std::pair<const char*, const char*> kSettings[] = {
#define SETTING(section, key, field, defaultText) {#section, #key},
#include "settings.inc"
};

// The labels of the first settings, in the same order. The others have none.
constexpr StringLabel kLabels[] = {1001, 1200, 1210, 1220, 1240, 5000, 5001, 5100};

using Texts = std::map<StringLabel, std::string>;

Texts DefaultTexts() {
  Texts texts;
  for (const auto& row : test::ReadDataLines("texts.txt", 2)) texts[std::stoi(row[0])] = row[1];
  return texts;
}

// The texts that the library must find, with the settings of a file. None, and the error, if the
// file does not load.
Texts TextsWith(const std::string& content, std::string& error) {
  static const Texts defaults = DefaultTexts();
  Texts texts = defaults;
  try {
    Json document;
    std::istringstream(content) >> document;
    for (std::size_t i = 0; i < std::size(kSettings); ++i) {
      const auto text = document[kSettings[i].first][kSettings[i].second].get<std::string>();
      if (i < std::size(kLabels)) texts[kLabels[i]] = text.c_str();  // up to a NUL
    }
  } catch (const Json::exception& failure) {
    error = failure.what();
    texts.clear();
  }
  return texts;
}

// Makes a file that is nearly right: sections in any order and number, each with its settings. A
// few settings are missing, have a wrong type, or belong to another section.
std::string NearlyRight(FuzzedDataProvider& input) {
  static const char* const values[] = {
      "null",         "1",   "-2.5e3", "true", "[\"a\", {\"b\": []}]", "{\"Api_server\": \"c\"}",
      "\"\\u0000d\"", "\"\""};
  std::string text = "{";
  for (int i = input.ConsumeIntegralInRange<int>(1, 4); i > 0; --i) {
    const auto kind = input.ConsumeIntegral<std::uint8_t>();
    const char* const section = (kind + i) % 2 == 0 ? "Orvane" : "Settings";
    text += (text.size() > 1 ? ", \"" : "\"") + std::string(section) + "\": ";
    if (kind >= 0xF0) {
      text += values[kind % 8];
      continue;
    }
    const char* separator = "{";
    for (const auto& [owner, key] : kSettings) {
      const auto fate = input.ConsumeIntegral<std::uint8_t>();
      if ((std::strcmp(owner, section) == 0) == (fate >= 0xF8)) continue;
      text += separator + ('"' + std::string(key)) + "\": ";
      text += fate % 32 == 31 ? values[fate / 32] : '"' + std::to_string(fate) + '"';
      separator = ", ";
    }
    text += *separator == '{' ? "{}" : "}";
  }
  return text + '}';
}

}  // namespace
}  // namespace launcher

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace launcher;
  static const std::string defaults = test::ReadDataFile("default_config.json");
  static const Texts defaultTexts = DefaultTexts();
  // Numbers are read from the end of the input, so that the file is its beginning.
  FuzzedDataProvider input(data, size);
  const auto labelIndex = input.ConsumeIntegral<std::uint8_t>();
  const auto choice = input.ConsumeIntegral<std::uint8_t>();
  const bool isMissing = choice >= 0xF0;
  StringLabel label = labelIndex;
  if (labelIndex < defaultTexts.size()) label = std::next(defaultTexts.begin(), labelIndex)->first;
  std::string content = defaults;
  if (!isMissing) {
    content = choice % 8 < 4 ? NearlyRight(input) : input.ConsumeRemainingBytesAsString();
  }
  std::string error;
  const Texts texts = TextsWith(content, error);
  const auto expected = texts.find(label);

  std::remove(kPath);
  if (!isMissing) test::WriteFile(kPath, content);
  char* text = nullptr;
  ResultCode result = 1;
  std::string printed = PrintedTo(stdout, [&] { result = QX_LoadStringToMemory(label, &text); });
  Require(
      printed == test::CallLine(label) + (isMissing ? "Created default config: config.json\n" : ""),
      "the lines that a lookup prints");
  if (expected == texts.end()) {
    Require(result == (error.empty() ? QX_NOT_FOUND : QX_FAILED), "the failure of a lookup");
    Require(text == nullptr && QX_GetLengthOfRString(label) == 0, "no text on failure");
  } else {
    Require(result == QX_SUCCEEDED && text == expected->second, "the text of a lookup");
    Require(QX_GetLengthOfRString(label) == expected->second.size(), "the length of a text");
    QX_UnloadStringFromMemory(&text);
  }

  std::int32_t isStaging = -1;
  printed = PrintedTo(stderr, [&] { isStaging = QX_IsStaging(); });
  Require(isStaging == (error.empty() ? 1 : 0), "whether the settings load");
  Require(printed == (error.empty() ? "" : "Error: " + error + "\n"), "why not");
  Require(test::ReadFile(kPath) == content, "the file is left alone");
  Require(test::ScratchDirectory::FileCount() == 1, "no other file");
  return 0;
}
