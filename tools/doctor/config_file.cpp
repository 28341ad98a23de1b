#include "doctor/config_file.h"

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <sstream>
#include <string>

#include "doctor/json_scanner.h"
#include "doctor/machine.h"

namespace launcher::doctor {
namespace {

struct Setting {
  const char* section;
  const char* key;
};

// In the order in which the library reads them.
constexpr Setting kSettings[] = {
#define SETTING(section, key, field, defaultText) {#section, #key},
#include "settings.inc"
};
constexpr const char* kSections[] = {
#define SECTION(name) #name,
#include "settings.inc"
};

std::string NameOf(const Setting& setting) {
  return std::string(setting.section) + '.' + setting.key;
}

// The library opens the file as a text file, which on Windows ends at a control-Z.
std::string AsRead(const std::string& bytes) {
  return kIsWindows ? bytes.substr(0, bytes.find('\x1A')) : bytes;
}

Json ParseQuietly(const std::string& text) { return Json::parse(text, nullptr, false); }

std::string ValueText(const std::string& text, const Pair& pair) {
  return text.substr(pair.valueBegin, pair.valueEnd - pair.valueBegin);
}

std::string InWords(const std::string& value) {
  constexpr std::size_t kShown = 60;
  const Json json = ParseQuietly(value);
  if (json.is_discarded()) return "not readable";
  if (json.is_null()) return "null, which is not a value";
  if (json.is_boolean()) return "the truth value " + value;
  if (json.is_number()) return "the number " + value.substr(0, kShown);
  if (json.is_string()) return "the text " + value.substr(0, kShown);
  return json.is_array() ? "a list" : "a group in braces";
}

// The members of that name, from the first to the last, which is the one that counts.
std::vector<Pair> Find(const std::vector<Pair>& pairs, std::size_t depth, const std::string& key,
                       std::size_t begin = 0, std::size_t end = std::string::npos) {
  std::vector<Pair> found;
  std::copy_if(pairs.begin(), pairs.end(), std::back_inserter(found), [&](const Pair& pair) {
    return pair.depth == depth && pair.key == key && pair.offset >= begin && pair.offset < end;
  });
  return found;
}

std::vector<Pair> FindSetting(const std::vector<Pair>& pairs, const Setting& setting) {
  const std::vector<Pair> sections = Find(pairs, 1, setting.section);
  if (sections.empty()) return {};
  return Find(pairs, 2, setting.key, sections.back().valueBegin, sections.back().valueEnd);
}

// Adds findings about the text of a settings file.
class Checker {
 public:
  Checker(const std::string& text, std::string name, Report& report)
      : text_(text), masked_(WithoutSecrets(text)), name_(std::move(name)), report_(report) {}

  void CheckSyntax(const Json::exception& error) {
    const std::string words = error.what();
    std::size_t offset = 0;
    if (const auto* const syntax = dynamic_cast<const Json::parse_error*>(&error)) {
      // The last character that the library read, counted from 1.
      offset = std::max<std::size_t>(syntax->byte, 1) - 1;
    } else {
      // The other error is a number that is too large. Its message ends with the number in quotes.
      const std::size_t quote = words.find('\'');
      offset = text_.find(words.substr(quote + 1, words.size() - quote - 2));
    }
    const std::size_t end = text_.find_last_not_of(std::string("\0 \t\r\n", 5)) + 1;
    const char* const key = end == 0        ? "settings.empty"
                            : offset >= end ? "settings.end"
                                            : "settings.syntax";
    offset = std::min(offset, end);
    for (const Token& token : Scan(text_)) {
      if (token.begin <= offset && offset < token.end) offset = token.begin;
    }
    Add(key, offset, {}, {}, words);
  }

  // `end` is the end of the JSON object.
  void CheckSections(std::size_t end) {
    pairs_ = Pairs(text_.substr(0, end));
    for (const char* const name : kSections) CheckSection(name);
    for (const Setting& setting : kSettings) CheckSetting(setting);
    const std::size_t rest = text_.find_first_not_of(" \t\r\n", end);
    if (rest != std::string::npos) Add("settings-rest", rest, {});
  }

 private:
  void CheckSection(const char* name) {
    const std::vector<Pair> sections = Find(pairs_, 1, name);
    if (sections.empty()) return Add("settings-section.missing", 0, name);
    const Pair& last = sections.back();
    const std::string value = ValueText(text_, last);
    std::vector<std::string> missing;
    for (const Setting& setting : kSettings) {
      const bool isHere = name == std::string(setting.section);
      if (isHere && FindSetting(pairs_, setting).empty()) missing.push_back(NameOf(setting));
    }
    if (sections.size() > 1) {
      Add(missing.empty() ? "settings-twice.whole" : "settings-twice.part", last.offset, name,
          std::to_string(sections.size()));
    } else if (value[0] != '{') {
      Add("settings-section.type", last.valueBegin, name, InWords(value));
    } else {
      for (const std::string& setting : missing) {
        Add("settings-field.missing", last.offset, setting);
      }
    }
  }

  void CheckSetting(const Setting& setting) {
    const std::vector<Pair> found = FindSetting(pairs_, setting);
    if (found.empty()) return;
    const Pair& pair = found.back();
    const std::string name = NameOf(setting);
    const std::string value = ValueText(text_, pair);
    const Json json = ParseQuietly(value);
    if (!json.is_string()) {
      Add("settings-field.type", pair.valueBegin, name, InWords(value));
    } else {
      const auto content = json.get<std::string>();
      const auto isControl = [](unsigned char c) { return std::iscntrl(c) != 0; };
      if (std::any_of(content.begin(), content.end(), isControl)) {
        Add("settings-control", pair.valueBegin, name);
      }
    }
    if (found.size() > 1) {
      Add("settings-twice.whole", pair.offset, name, std::to_string(found.size()));
    }
  }

  void Add(const char* key, std::size_t offset, const std::string& field,
           const std::string& word = {}, const std::string& jsonError = {}) {
    const Place place = PlaceOf(text_, offset);
    Json finding = MakeFinding(key, {name_ + ", line " + std::to_string(place.line) + ", column " +
                                         std::to_string(place.column) + ": ",
                                     field, word});
    if (!jsonError.empty()) finding["json_error"] = jsonError;
    if (!field.empty()) finding["field"] = field;
    finding["line"] = place.line;
    finding["column"] = place.column;
    if (!text_.empty()) finding["excerpt"] = Excerpt(masked_, offset);
    report_.AddFinding(std::move(finding));
  }

  const std::string& text_;
  std::string masked_;
  std::vector<Pair> pairs_;
  std::string name_;
  Report& report_;
};

// Replaces a value of the last section of this name, or inserts what is missing. `text` is a JSON
// object; `value` is a JSON text in quotes.
void SetValue(std::string& text, const Setting& setting, const std::string& value) {
  const std::vector<Pair> pairs = Pairs(text);
  const std::vector<Pair> found = FindSetting(pairs, setting);
  if (!found.empty()) {
    const Pair& pair = found.back();
    text.replace(pair.valueBegin, pair.valueEnd - pair.valueBegin, value);
    return;
  }
  const std::vector<Pair> sections = Find(pairs, 1, setting.section);
  std::size_t brace = text.find('{');
  std::string member = "    " + Quoted(setting.section) + ": {}";
  if (!sections.empty()) {
    const Pair& section = sections.back();
    brace = section.valueBegin;
    if (text[brace] != '{') text.replace(brace, section.valueEnd - brace, "{}");
    member = "        " + Quoted(setting.key) + ": " + value;
  }
  const bool isEmpty = text[text.find_first_not_of(" \t\r\n", brace + 1)] == '}';
  const std::string lineEnd = text.find("\r\n") == std::string::npos ? "\n" : "\r\n";
  const std::string rest = lineEnd + (sections.empty() ? "" : "    ");
  text.insert(brace + 1, lineEnd + member + (isEmpty ? rest : ","));
  if (sections.empty()) SetValue(text, setting, value);
}

const std::string kAfterValue = ",;}]/\r\n";

// The last text, number or truth value of this name, as a text in quotes; empty if there is none.
std::string RecognisedValue(const std::string& text, const std::vector<Pair>& pairs,
                            const std::string& key) {
  std::string recognised;
  for (const Pair& pair : pairs) {
    // If more text follows the value in its line, its quotes are wrong.
    const std::size_t next = text.find_first_not_of(" \t", pair.valueEnd);
    if (pair.key != key ||
        (next < text.size() && kAfterValue.find(text[next]) == std::string::npos)) {
      continue;
    }
    const std::string value = ValueText(text, pair);
    const Json json = ParseQuietly(value);
    if (json.is_string()) recognised = value;
    if (json.is_number() || json.is_boolean()) recognised = Quoted(value);
  }
  return recognised;
}

// Sets each setting that is not a text in `repair`: to the value at its place in `source`, else to
// a value at another place in `source`, else to the default.
void SetValues(const std::string& source, const std::string& defaults, Repair& repair) {
  const bool isInPlace = repair.text == source;
  const std::vector<Pair> pairs = Pairs(source);
  for (const Setting& setting : kSettings) {
    const std::vector<Pair> found = FindSetting(pairs, setting);
    const std::string old = found.empty() ? "" : ValueText(source, found.back());
    if (isInPlace && ParseQuietly(old).is_string()) continue;
    std::string value = RecognisedValue(source, found, setting.key);
    if (value.empty()) value = RecognisedValue(source, pairs, setting.key);
    std::string change =
        NameOf(setting) + (!old.empty() && old == value ? " keeps " : " is ") + value;
    std::string before = old.empty() ? "in another place" : InWords(old);
    if (value.empty()) {
      value = RecognisedValue(defaults, Pairs(defaults), setting.key);
      change += "the default " + value;
      if (old.empty()) before = isInPlace ? "missing" : "missing or not readable";
    }
    if (old != value) change += "; it was " + before;
    SetValue(repair.text, setting, value);
    repair.changes.push_back(change);
  }
}

}  // namespace

std::string Utf8Text(const std::string& bytes, std::vector<std::string>& changes) {
  const std::string start = (bytes + "xxx").substr(0, 3);
  if (start == "\xEF\xBB\xBF") {
    changes.emplace_back("removed the byte order mark");
    return AsRead(bytes.substr(3));
  }
  // JSON starts with an ASCII character. In UTF-16 one of its two bytes is zero.
  const bool isLittleEndian = start.substr(0, 2) == "\xFF\xFE" || (start[0] != 0 && start[1] == 0);
  const bool isBigEndian = start.substr(0, 2) == "\xFE\xFF" || (start[0] == 0 && start[1] != 0);
  if (!isLittleEndian && !isBigEndian) return AsRead(bytes);
  std::u16string wide;
  for (std::size_t at = 0; at + 1 < bytes.size(); at += 2) {
    const auto first = static_cast<unsigned char>(bytes[at]);
    const auto second = static_cast<unsigned char>(bytes[at + 1]);
    const int unit = isBigEndian ? first * 256 + second : second * 256 + first;
    if (unit != 0xFEFF) wide += static_cast<char16_t>(unit);
  }
  try {
    // A path converts between the encodings.
    std::string text = std::filesystem::path(wide).u8string();
    changes.emplace_back("changed the encoding of the file from UTF-16 to UTF-8");
    return text;
  } catch (const std::exception&) {
    return AsRead(bytes);  // not UTF-16 after all
  }
}

std::string ErrorOfConfig(const std::string& bytes) {
  try {
    Json document;
    std::istringstream(AsRead(bytes)) >> document;
    for (const Setting& setting : kSettings) {
      static_cast<void>(document[setting.section][setting.key].get<std::string>());
    }
    return {};
  } catch (const Json::exception& error) {
    return error.what();
  }
}

void CheckConfigText(const std::string& bytes, const std::string& name, std::optional<bool> loads,
                     Report& report) {
  const std::string error = ErrorOfConfig(bytes);
  std::vector<std::string> changes;
  const std::string text = Utf8Text(bytes, changes);
  Checker checker(text, name, report);
  try {
    Json document;
    std::istringstream stream(text);
    stream >> document;
    const std::streamoff end = stream.tellg();  // -1 at the end of the text
    const bool hasMembers = document.is_object() || document.is_null();
    const char* const key = error.empty()                 ? "settings.fine"
                            : !hasMembers                 ? "settings.other"
                            : ErrorOfConfig(text).empty() ? "settings.encoding"
                                                          : "settings.wrong";
    Json finding = MakeFinding(
        key, {name, hasMembers ? std::to_string(std::size(kSettings)) : InWords(document.dump())});
    if (!error.empty()) finding["json_error"] = error;
    report.AddFinding(std::move(finding));
    if (hasMembers) {
      checker.CheckSections(end < 0 ? text.size() : static_cast<std::size_t>(end));
    }
  } catch (const Json::exception& syntax) {
    checker.CheckSyntax(syntax);
  }
  if (loads && *loads != error.empty()) report.Add("settings-verdict");
}

Repair RepairConfigText(const std::string& bytes, const std::string& defaults) {
  Repair repair;
  repair.text = Utf8Text(bytes, repair.changes);
  if (!Json::accept(repair.text)) {
    std::vector<std::string> changes = repair.changes;
    const std::string text = WithDoubledBackslashes(WithoutComments(repair.text, changes), changes);
    if (Json::accept(text)) repair = {text, changes};
  }
  std::string source = repair.text;
  if (!ParseQuietly(source).is_object()) {
    std::vector<std::string> ignored;
    source = WithDoubledBackslashes(source, ignored);
    repair.text = defaults;
    repair.changes.emplace_back(
        "the file cannot be corrected; the new file has only the twelve settings:");
  }
  SetValues(source, defaults, repair);
  return repair;
}

}  // namespace launcher::doctor
