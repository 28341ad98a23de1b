// Reads config.json, and creates it with the defaults if it is missing.

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

// The two ways in which a value can be wrong. Both throw the JSON library's own exception for a
// value of that type. Null counts as an object without members.
void RequireObject(JsonType type) {
  if (type == JsonType::object || type == JsonType::null) return;
  const Json value(type);
  static_cast<void>(value["member"]);
}

void RequireString(JsonType type) {
  if (type != JsonType::string) static_cast<void>(Json(type).get<std::string>());
}

// Takes the settings out of a file while the JSON library reads it. Its members are those that the
// library's parser calls.
//
// No document is built: a JSON object of the library needs memory to be destroyed, and ends the
// process when there is none.
class SettingsReader {
 public:
  // For a file that has been read to the end of its value. Throws for the first wrong setting.
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

  bool string(std::string& value) {
    if (next_ != nullptr) next_->text = std::move(value);
    return TakeValue(JsonType::string);
  }

  bool start_object(std::size_t /*count*/) { return Enter(JsonType::object); }
  bool end_object() { return Leave(); }
  bool start_array(std::size_t /*count*/) { return Enter(JsonType::array); }
  bool end_array() { return Leave(); }

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

  template <class ParseError>
  bool parse_error(std::size_t /*position*/, const std::string& /*token*/,
                   const ParseError& error) {
    throw error;
  }

 private:
  // What is absent is null.
  struct Value {
    JsonType type = JsonType::null;
    std::string text;  // of a string
  };

  // Of members with equal names the last counts, so a section's second coming empties it.
  Value* FreshSection() {
    for (std::size_t i = 0; i < kSettingCount; ++i) {
      if (kTable[i].section == section_) settings_[i] = Value();
    }
    return &sections_[section_];
  }

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

  Value* next_ = &document_;             // where the next value belongs, null where it is not ours
  std::size_t depth_ = 0;                // the objects and arrays that are open
  std::size_t section_ = kSectionCount;  // the section that is open at depth 2
};

LauncherConfig ReadConfig(std::FILE* file) {
  SettingsReader reader;
  // What follows the value in the file is left alone.
  constexpr bool kToTheEnd = false;
  // From a FILE, since the runtime's streams would treble the size of the DLL.
  Json::sax_parse(file, &reader, Json::input_format_t::json, kToTheEnd);
  return reader.Take();
}

LauncherConfig DefaultConfig() {
  LauncherConfig config;
  for (const Setting& setting : kTable) config.*setting.field = setting.defaultText;
  return config;
}

// An object in the JSON library's indented form and order, `indent` blanks ahead of its end. The
// values are JSON already.
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

// Creates the file at `path` with the defaults, whole or not at all: a process that starts at the
// same moment must not read half a file. Fails if anything is at `path`, since a file that exists
// but cannot be read holds somebody's settings.
bool CreateConfigFile(const char* path) {
  const SystemPath place = SystemPathOf(path);
  const std::string text = DefaultConfigText();
  NewFile file;
  // Flushed before it gets its name: after a loss of power, an empty file would stay for good.
  if (file.CreateBeside(place) != 0 || file.WriteText(text) != 0 || file.Flush() != 0) return false;
  const SystemError error = file.MoveTo(place, NewFile::Existing::kStays);
  if (error == 0 || MeansThatItExists(error)) return error == 0;

  // Some folders permit creating a file but not renaming it.
  return file.Create(place) == 0 && file.WriteText(text) == 0 && file.Flush() == 0 &&
         file.MoveTo(place, NewFile::Existing::kStays) == 0;
}

}  // namespace

LauncherConfig LoadLauncherConfig(const char* path) {
  if (const OwnedFile file{_fsopen(path, "r", _SH_DENYNO)}) return ReadConfig(file.get());

  // The load returns the defaults also if the file could not be created.
  static_cast<void>(CreateConfigFile(path));
  printf_s("Created default config: %s\n", path);
  std::fflush(stdout);
  return DefaultConfig();
}

}  // namespace launcher
