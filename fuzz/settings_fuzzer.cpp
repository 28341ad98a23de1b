// The settings file and its readers, compared with the JSON library's own document. For files
// that the library reads otherwise than the JSON library does.

#include <cstring>
#include <nlohmann/json.hpp>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "fuzz/fuzzing.h"
#include "launcher_dll.h"
#include "support/data_file.h"
#include "support/scratch_directory.h"

namespace launcher {
namespace {

using fuzz::Require;
using Json = nlohmann::json;

constexpr char kPath[] = "config.json";

constexpr std::pair<const char*, const char*> kSettings[] = {
#define SETTING(section, key, field, defaultText) {#section, #key},
#include "settings.inc"
};

// The labels of the first settings, in the same order. The others have none.
constexpr StringLabel kLabels[] = {1001, 1200, 1210, 1220, 1240, 5000, 5001, 5100};

// The texts that the library must find in a file. None, and the error, if the file does not load.
std::vector<std::string> TextsIn(const std::string& content, std::string& error) {
  std::vector<std::string> texts;
  try {
    Json document;
    std::istringstream(content) >> document;
    for (const auto& [section, key] : kSettings) {
      texts.push_back(document[section][key].get<std::string>());
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
  // Numbers are read from the end of the input, so that the file is its beginning.
  FuzzedDataProvider input(data, size);
  const std::size_t setting = input.ConsumeIntegral<std::uint8_t>() % std::size(kLabels);
  const auto choice = input.ConsumeIntegral<std::uint8_t>();
  const bool isMissing = choice >= 0xF0;
  std::string content = defaults;
  if (!isMissing) {
    content = choice % 8 < 4 ? NearlyRight(input) : input.ConsumeRemainingBytesAsString();
  }
  std::string error;
  const std::vector<std::string> texts = TextsIn(content, error);

  std::remove(kPath);
  if (!isMissing) test::WriteFile(kPath, content);
  char* text = nullptr;
  const ResultCode result = QX_LoadStringToMemory(kLabels[setting], &text);
  Require(result == (error.empty() ? QX_SUCCEEDED : QX_FAILED), "the result of a lookup");
  // A text ends with its first NUL.
  Require(error.empty() ? std::strcmp(text, texts[setting].c_str()) == 0 : text == nullptr,
          "the text of a lookup");
  QX_UnloadStringFromMemory(&text);

  char* printed = nullptr;
  std::size_t length = 0;
  // A variable in this runtime.
  std::FILE* const usual = std::exchange(stderr, open_memstream(&printed, &length));
  const std::int32_t isStaging = QX_IsStaging();
  std::fclose(std::exchange(stderr, usual));
  Require(isStaging == (error.empty() ? 1 : 0), "whether the settings load");
  Require(printed == (error.empty() ? "" : "Error: " + error + "\n"), "why not");
  std::free(printed);
  Require(test::ReadFile(kPath) == content, "the file is left alone");
  Require(test::ScratchDirectory::FileCount() == 1, "no other file");
  return 0;
}
