// Reads config.json, and creates it with the defaults if it is missing. Nothing is cached, so an
// edit takes effect at the next call.

#include "config/launcher_config.h"

#include <cstdio>
#include <cstring>
#include <map>
#include <nlohmann/json.hpp>
#include <string>
#include <utility>

#include "config/deployment.h"
#include "platform/new_file.h"
#include "platform/owners.h"
#include "platform/win32.h"

namespace launcher {
namespace {

using Json = nlohmann::json;
using JsonType = Json::value_t;

// The sections and settings of settings.inc, as numbers, names and a table.
enum Section : std::size_t {
#define SECTION(name) k##name,
#include "config/settings.inc"
  kSectionCount
};

constexpr const char* kSections[] = {
#define SECTION(name) #name,
#include "config/settings.inc"
};

struct Setting {
  std::size_t section;
  const char* key;
  std::string LauncherConfig::*field;
  const char* defaultText;
};

constexpr Setting kTable[] = {
#define SETTING(section, key, field, defaultText) \
  {k##section, #key, &LauncherConfig::field, defaultText},
#include "config/settings.inc"
};
constexpr std::size_t kSettingCount = sizeof kTable / sizeof kTable[0];

// Returns the index of the first element that `matches`, or `count`.
template <class Matches>
std::size_t FindIndex(std::size_t count, Matches matches) {
  std::size_t i = 0;
  while (i < count && !matches(i)) ++i;
  return i;
}

// RequireObject and RequireString throw the exception that the JSON library itself throws if a
// value of that type is used as an object or as a string: QX_IsStaging prints its text. Null counts
// as an object without members, so that a missing section is reported as a missing setting.
void RequireObject(JsonType type) {
  if (type == JsonType::object || type == JsonType::null) return;
  const Json value(type);
  static_cast<void>(value["member"]);
}

void RequireString(JsonType type) {
  if (type != JsonType::string) static_cast<void>(Json(type).get<std::string>());
}

// Collects the settings while the JSON library parses a file. The parser calls the functions from
// null() to parse_error(), so their names and parameters are the library's.
//
// No document is built: to destroy a JSON object, the library allocates memory, and if there is
// none, the process ends.
class SettingsReader {
 public:
  // Moves the settings out, once the parser has returned. Throws for the first wrong setting: the
  // order is that of the table, whatever the order in the file.
  LauncherConfig Take() {
    LauncherConfig config;
    for (std::size_t i = 0; i < kSettingCount; ++i) {
      RequireObject(document_.type);
      RequireObject(sections_[kTable[i].section].type);
      RequireString(settings_[i].type);
      config.*kTable[i].field = std::move(settings_[i].text);
    }
    return config;
  }

  bool null() { return TakeValue(JsonType::null); }
  bool boolean(bool /*value*/) { return TakeValue(JsonType::boolean); }
  bool number_integer(Json::number_integer_t /*value*/) {
    return TakeValue(JsonType::number_integer);
  }
  bool number_unsigned(Json::number_unsigned_t /*value*/) {
    return TakeValue(JsonType::number_unsigned);
  }
  bool number_float(Json::number_float_t /*value*/, const std::string& /*digits*/) {
    return TakeValue(JsonType::number_float);
  }
  bool binary(Json::binary_t& /*value*/) { return TakeValue(JsonType::binary); }

  // The parser does not use `value` again, so it can be moved from.
  bool string(std::string& value) {
    if (next_ != nullptr) next_->text = std::move(value);
    return TakeValue(JsonType::string);
  }

  bool start_object(std::size_t /*count*/) { return Enter(JsonType::object); }
  bool end_object() { return Leave(); }
  bool start_array(std::size_t /*count*/) { return Enter(JsonType::array); }
  bool end_array() { return Leave(); }

  // Finds the place for the value of a member. At other depths, and for other names, it has none.
  bool key(const std::string& name) {
    if (depth_ == 1) {
      section_ = FindIndex(kSectionCount, [&](std::size_t i) { return name == kSections[i]; });
      if (section_ < kSectionCount) next_ = FreshSection();
    } else if (depth_ == 2) {
      const std::size_t i = FindIndex(kSettingCount, [&](std::size_t candidate) {
        return kTable[candidate].section == section_ && name == kTable[candidate].key;
      });
      if (i < kSettingCount) next_ = &settings_[i];
    }
    return true;
  }

  // A template, so that the exception keeps its own type. To return false would also stop the
  // parser, but lose the reason.
  template <class ParseError>
  bool parse_error(std::size_t /*position*/, const std::string& /*token*/,
                   const ParseError& error) {
    throw error;
  }

 private:
  // An absent value counts as null.
  struct Value {
    JsonType type = JsonType::null;
    std::string text;  // if the type is string
  };

  // Of members with equal names the last one counts. So if a section appears again, its earlier
  // settings are dropped.
  Value* FreshSection() {
    for (std::size_t i = 0; i < kSettingCount; ++i) {
      if (kTable[i].section == section_) settings_[i] = Value();
    }
    return &sections_[section_];
  }

  // Uses the place up: values without a key, the elements of an array, have none.
  bool TakeValue(JsonType type) {
    if (next_ != nullptr) next_->type = type;
    next_ = nullptr;
    return true;
  }

  bool Enter(JsonType type) {
    ++depth_;
    return TakeValue(type);
  }

  bool Leave() {
    --depth_;
    return true;
  }

  Value document_;
  Value sections_[kSectionCount];
  Value settings_[kSettingCount];

  Value* next_ = &document_;             // the place for the next value, null if it is ignored
  std::size_t depth_ = 0;                // how many objects and arrays are open
  std::size_t section_ = kSectionCount;  // the section of the last key at depth 1, if it is ours
};

LauncherConfig ReadConfig(std::FILE* file) {
  SettingsReader reader;
  // Parsing ends with the value: any text may follow it.
  constexpr bool kToTheEnd = false;
  // From a FILE, since the runtime's streams would make the DLL three times as large.
  Json::sax_parse(file, &reader, Json::input_format_t::json, kToTheEnd);
  return reader.Take();
}

LauncherConfig DefaultConfig() {
  LauncherConfig config;
  for (const Setting& setting : kTable) config.*setting.field = setting.defaultText;
  return config;
}

// Returns an object as the JSON library would print it with four blanks a level. `indent` counts
// the blanks before its closing brace. The values are JSON already. std::map sorts the members as
// the library does, in byte order. The library itself cannot do this: see SettingsReader.
std::string ObjectText(const std::map<std::string, std::string>& members, std::size_t indent) {
  constexpr std::size_t kStep = 4;
  std::string text = "{";
  const char* separator = "\n";
  for (const auto& [key, value] : members) {
    text += separator + std::string(indent + kStep, ' ') + '"' + key + "\": " + value;
    separator = ",\n";
  }
  return text + '\n' + std::string(indent, ' ') + '}';
}

std::string DefaultConfigText() {
  std::map<std::string, std::string> sections;
  for (std::size_t section = 0; section < kSectionCount; ++section) {
    std::map<std::string, std::string> members;
    for (const Setting& setting : kTable) {
      if (setting.section == section) members[setting.key] = Json(setting.defaultText).dump();
    }
    sections[kSections[section]] = ObjectText(members, 4);
  }
  return ObjectText(sections, 0) + '\n';
}

// Creates the file at `path` with the defaults, completely or not at all: a process that starts at
// the same moment must not read half a file. Returns false if anything exists at `path`, since a
// file that exists but cannot be read holds somebody's settings.
bool CreateConfigFile(const char* path) {
  const SystemPath place = SystemPathOf(path);
  const std::string text = DefaultConfigText();
  NewFile file;
  // Flushed before it gets its name: otherwise a loss of power could leave an empty file, which
  // does not load and is never replaced.
  if (file.CreateBeside(place) != 0 || file.WriteText(text) != 0 || file.Flush() != 0) return false;
  const SystemError error = file.MoveTo(place, NewFile::Existing::kStays);
  if (error == 0 || MeansThatItExists(error)) return error == 0;

  // Some folders permit creating a file but not renaming it. There the file is created under its
  // own name, still only if nothing exists at `path`, and is removed again if the write fails.
  return file.Create(place) == 0 && file.WriteText(text) == 0 && file.Flush() == 0 &&
         file.MoveTo(place, NewFile::Existing::kStays) == 0;
}

}  // namespace

LauncherConfig LoadLauncherConfig(const char* path) {
  // Denies nothing: other programs may read and write the file at the same time.
  if (const OwnedFile file{_fsopen(path, "r", _SH_DENYNO)}) return ReadConfig(file.get());

  // The result is not used: even if the file could not be created, the defaults are returned and
  // the line is printed.
  static_cast<void>(CreateConfigFile(path));
  printf_s("Created default config: %s\n", path);
  std::fflush(stdout);
  return DefaultConfig();
}

}  // namespace launcher
