// The settings file and what reads it, held against the JSON library's own document and a list of
// the texts.

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

using fuzz::Bytes;
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

// What the library is to make of a file.
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

// A file that is nearly right: sections in any order and number, each with its settings, of which
// few are missing, of a wrong type, or another section's.
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

void CheckCopyInMemory(const Model& model, StringLabel label, const std::string& created) {
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

void CheckCopy(const Model& model, StringLabel label, std::uint32_t capacity) {
  const std::string text = model.Text(label);
  Bytes buffer(capacity, fuzz::kFill);
  ResultCode result = 1;
  const std::string printed =
      PrintedTo(stdout, [&] { result = QX_LoadString(label, fuzz::TextAt(buffer), capacity); });
  Require(printed == (capacity != 0 ? test::CallLine(label) : ""), "what a copy prints");
  if (capacity == 0) {
    Require(result == QX_BAD_ARGUMENT, "no capacity");
  } else if (model.Result(label) != QX_SUCCEEDED) {
    Require(result == model.Result(label) && fuzz::IsUntouched(buffer), "a failed copy");
  } else if (text.size() < capacity) {
    Require(result == QX_SUCCEEDED && fuzz::HoldsText(buffer, text), "a copy");
  } else {
    Require(result == QX_BAD_ARGUMENT, "a copy that does not fit");
    Require(text.size() > capacity ? fuzz::IsUntouched(buffer) : buffer[0] == 0, "what it leaves");
  }
}

void CheckInformation(const Model& model, std::uint32_t size) {
  Bytes buffer(sizeof(SystemInformation), fuzz::kFill);
  auto* const record = reinterpret_cast<SystemInformation*>(buffer.data());
  const ResultCode result = QX_GetSystemInformation(record, size);
  if (size < sizeof *record) {
    Require(result == QX_BAD_ARGUMENT && fuzz::IsUntouched(buffer), "a record that is too small");
    return;
  }
  SystemInformation expected = {{0, 2, 5, 0}, {}, {}};
  std::strcpy(expected.buildName, model.Text(10).c_str());
  std::strcpy(expected.vendorName, model.Text(0).c_str());
  Require(result == QX_SUCCEEDED && std::memcmp(record, &expected, sizeof expected) == 0, "record");
}

void CheckHost(const Model& model, const std::string& host) {
  const bool isOwn = model.error.empty() && host.size() < 1024 &&
                     (host == model.Text(5000) || host == model.Text(5001));
  Require(QX_CheckCert("", host.c_str()) == (isOwn ? 1 : 0), "the names of the game's servers");
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
  // Numbers come off the input's end, so that the file is the input's beginning.
  FuzzedDataProvider input(data, size);
  const auto labelIndex = input.ConsumeIntegral<std::uint8_t>();
  const auto near = input.ConsumeIntegral<std::uint8_t>();
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
  CheckCopyInMemory(model, label, isMissing ? "Created default config: config.json\n" : "");
  // Each lookup reads the file again: two more are enough for one input.
  const auto length = static_cast<std::uint32_t>(model.Text(label).size());
  if (choice % 4 == 0)
    CheckCopy(model, label, near < 200 ? length + near % 4 - std::min(length, 2u) : near);
  if (choice % 4 == 1) CheckInformation(model, near);
  if (choice % 4 == 2) CheckHost(model, model.Text(label));
  if (choice % 4 == 3) {
    Require(QX_GetLengthOfRString(label) == model.Text(label).size(), "the length of a text");
  }
  CheckStaging(model);

  Require(test::ReadFile(kPath) == (isMissing ? defaults : content), "the file is left alone");
  Require(test::ScratchDirectory::FileCount() == 1, "no other file");
  return 0;
}
