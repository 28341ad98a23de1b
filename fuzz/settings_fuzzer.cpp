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

struct Setting {
  const char* section;
  const char* key;
};

constexpr Setting kSettings[] = {
#define SETTING(section, key, field, defaultText) {#section, #key},
#include "settings.inc"
};

// The labels of the first settings, in the same order. The others have none.
constexpr StringLabel kLabels[] = {1001, 1200, 1210, 1220, 1240, 5000, 5001, 5100};

using Texts = std::map<StringLabel, std::string>;

const Texts& DefaultTexts() {
  static const Texts texts = [] {
    Texts read;
    for (const auto& row : test::ReadDataLines("texts.txt", 2)) read[std::stoi(row[0])] = row[1];
    return read;
  }();
  return texts;
}

// What the library must read from a file.
struct Model {
  explicit Model(const std::string& content) {
    try {
      Json document;
      std::istringstream(content) >> document;
      for (std::size_t i = 0; i < std::size(kSettings); ++i) {
        const auto text = document[kSettings[i].section][kSettings[i].key].get<std::string>();
        if (i < std::size(kLabels)) texts[kLabels[i]] = text.c_str();  // up to a NUL
      }
    } catch (const Json::exception& failure) {
      error = failure.what();
      texts.clear();
    }
  }

  // The result of a lookup.
  ResultCode Result(StringLabel label) const {
    if (!error.empty()) return QX_FAILED;
    return texts.count(label) != 0 ? QX_SUCCEEDED : QX_NOT_FOUND;
  }
  std::string Text(StringLabel label) const {
    return Result(label) == QX_SUCCEEDED ? texts.at(label) : "";
  }

  Texts texts = DefaultTexts();
  std::string error;  // empty for a file that loads
};

// Makes a file that is nearly right: sections in any order and number, each with its settings. A
// few of them are missing, have a wrong type, or belong to another section.
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
    for (const Setting& setting : kSettings) {
      const auto fate = input.ConsumeIntegral<std::uint8_t>();
      if ((std::strcmp(setting.section, section) == 0) == (fate >= 0xF8)) continue;
      text += separator + ('"' + std::string(setting.key)) + "\": ";
      text += fate % 32 == 31 ? values[fate / 32] : '"' + std::to_string(fate) + '"';
      separator = ", ";
    }
    text += *separator == '{' ? "{}" : "}";
  }
  return text + '}';
}

void CheckLookup(const Model& model, StringLabel label, const std::string& created) {
  char untouched = 0;
  char* text = &untouched;
  ResultCode result = 1;
  const std::string printed =
      PrintedTo(stdout, [&] { result = QX_LoadStringToMemory(label, &text); });
  Require(printed == test::CallLine(label) + created, "the lines that a lookup prints");
  Require(result == model.Result(label), "the result of a lookup");
  if (result != QX_SUCCEEDED) {
    Require(text == &untouched, "no text on failure");
    return;
  }
  Require(text == model.Text(label), "the text of a lookup");
  Require(QX_UnloadStringFromMemory(&text) == QX_SUCCEEDED && text == nullptr, "unloading");
}

void CheckStaging(const Model& model) {
  std::int32_t result = -1;
  const std::string printed = PrintedTo(stderr, [&] { result = QX_IsStaging(); });
  Require(result == (model.error.empty() ? 1 : 0), "whether the settings load");
  Require(printed == (model.error.empty() ? "" : "Error: " + model.error + "\n"), "why not");
}

}  // namespace
}  // namespace launcher

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace launcher;
  static const std::string defaults = test::ReadDataFile("default_config.json");
  // Numbers are read from the end of the input, so that the file is its beginning.
  FuzzedDataProvider input(data, size);
  const auto labelIndex = input.ConsumeIntegral<std::uint8_t>();
  const auto choice = input.ConsumeIntegral<std::uint8_t>();
  const bool isMissing = choice >= 0xF0;
  StringLabel label = labelIndex;
  if (labelIndex < DefaultTexts().size())
    label = std::next(DefaultTexts().begin(), labelIndex)->first;
  const std::string content =
      choice % 8 < 4 ? NearlyRight(input) : input.ConsumeRemainingBytesAsString();

  std::remove(kPath);
  if (!isMissing) test::WriteFile(kPath, content);
  const Model model(isMissing ? defaults : content);
  CheckLookup(model, label, isMissing ? "Created default config: config.json\n" : "");
  Require(QX_GetLengthOfRString(label) == model.Text(label).size(), "the length of a text");
  CheckStaging(model);

  Require(test::ReadFile(kPath) == (isMissing ? defaults : content), "the file is left alone");
  Require(test::ScratchDirectory::FileCount() == 1, "no other file");
  return 0;
}
