#include "steam_stand_in/steam_settings.h"

#include <algorithm>
#include <iterator>
#include <limits>
#include <nlohmann/json.hpp>
#include <variant>

#include "steam_stand_in/files.h"

namespace launcher::stand_in {
namespace {

using Json = nlohmann::json;

struct Number {
  std::uint64_t SteamSettings::*field;
  std::uint64_t least;
  std::uint64_t greatest;
};
using Text = std::string SteamSettings::*;
using Flag = bool SteamSettings::*;

struct SteamSetting {
  const char* name;
  std::variant<Number, Text, Flag> field;
};

constexpr std::uint64_t kAny = std::numeric_limits<std::uint64_t>::max();
constexpr std::uint64_t kHourMs = 3'600'000;
// A body must fit the interface's sizes of 32 bits and the memory of a 32-bit process.
constexpr std::uint64_t kGreatestBody = 1024 * kMebibyte;

constexpr SteamSetting kTable[] = {
    {"accountId", Number{&SteamSettings::accountId, 0, kAny}},
    {"personaName", &SteamSettings::personaName},
    {"currentLanguage", &SteamSettings::currentLanguage},
    {"availableLanguages", &SteamSettings::availableLanguages},
    {"running", &SteamSettings::running},
    {"startedBySteam", &SteamSettings::startedBySteam},
    {"subscribed", &SteamSettings::subscribed},
    {"loggedOn", &SteamSettings::loggedOn},
    {"cloudEnabledForAccount", &SteamSettings::cloudEnabledForAccount},
    {"cloudEnabledForApp", &SteamSettings::cloudEnabledForApp},
    {"quotaBytes", Number{&SteamSettings::quotaBytes, 0, kAny}},
    {"httpConnectLimitMs", Number{&SteamSettings::httpConnectLimitMs, 1, kHourMs}},
    {"httpRequestLimitMs", Number{&SteamSettings::httpRequestLimitMs, 1, kHourMs}},
    {"httpBodyLimitBytes", Number{&SteamSettings::httpBodyLimitBytes, 0, kGreatestBody}},
};

// Stores a value in its setting. Throws SteamSettingsError if its type or range is wrong.
struct Taker {
  SteamSettings* settings;
  const Json& value;

  void operator()(const Number& number) const {
    if (!value.is_number_unsigned()) throw SteamSettingsError("is not a whole number of 0 or more");
    const auto taken = value.get<std::uint64_t>();
    if (taken < number.least || taken > number.greatest) {
      throw SteamSettingsError("is not from " + std::to_string(number.least) + " to " +
                               std::to_string(number.greatest));
    }
    settings->*number.field = taken;
  }

  void operator()(Text field) const {
    if (!value.is_string()) throw SteamSettingsError("is not a text");
    settings->*field = value.get<std::string>();
  }

  void operator()(Flag field) const {
    if (!value.is_boolean()) throw SteamSettingsError("is neither true nor false");
    settings->*field = value.get<bool>();
  }
};

SteamSettings SteamSettingsFrom(const std::string& text) {
  const Json document = Json::parse(text);
  if (!document.is_object()) throw SteamSettingsError("is not a JSON object");

  SteamSettings settings;
  for (const auto& [name, value] : document.items()) {
    const std::string& key = name;
    const auto* const setting =
        std::find_if(std::begin(kTable), std::end(kTable),
                     [&](const SteamSetting& each) { return key == each.name; });
    // Otherwise a misspelt setting would be ignored without a message.
    if (setting == std::end(kTable)) throw SteamSettingsError("has an unknown member " + key);
    try {
      std::visit(Taker{&settings, value}, setting->field);
    } catch (const SteamSettingsError& error) {
      throw SteamSettingsError(key + ' ' + error.what());
    }
  }
  return settings;
}

}  // namespace

SteamSettings LoadSteamSettings(const std::filesystem::path& folder) {
  constexpr const char* kName = "steam_settings.json";
  const std::filesystem::path path = folder / kName;
  if (!std::filesystem::exists(path)) return {};
  try {
    const std::optional<std::string> text = ReadWhole(path);
    if (!text) throw SteamSettingsError("cannot be read");
    return SteamSettingsFrom(*text);
  } catch (const Json::exception& error) {
    throw SteamSettingsError(std::string(kName) + ": " + error.what());
  } catch (const SteamSettingsError& error) {
    throw SteamSettingsError(std::string(kName) + ": " + error.what());
  }
}

}  // namespace launcher::stand_in
