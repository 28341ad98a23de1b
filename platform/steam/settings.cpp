#include "platform/steam/settings.h"

#include <algorithm>
#include <iterator>
#include <limits>
#include <nlohmann/json.hpp>
#include <variant>

#include "platform/steam/files.h"

namespace launcher::stand_in {
namespace {

using Json = nlohmann::json;

struct Number {
  std::uint64_t Settings::*field;
  std::uint64_t least;
  std::uint64_t greatest;
};
using Text = std::string Settings::*;
using Claim = bool Settings::*;

struct Setting {
  const char* name;
  std::variant<Number, Text, Claim> field;
};

constexpr std::uint64_t kAny = std::numeric_limits<std::uint64_t>::max();
constexpr std::uint64_t kHourMs = 3'600'000;
// What is held fits the 32-bit sizes of the interface, in a 32-bit process.
constexpr std::uint64_t kGreatestBody = 1024 * kMebibyte;

constexpr Setting kTable[] = {
    {"accountId", Number{&Settings::accountId, 0, kAny}},
    {"personaName", &Settings::personaName},
    {"currentLanguage", &Settings::currentLanguage},
    {"availableLanguages", &Settings::availableLanguages},
    {"running", &Settings::running},
    {"startedBySteam", &Settings::startedBySteam},
    {"subscribed", &Settings::subscribed},
    {"loggedOn", &Settings::loggedOn},
    {"cloudEnabledForAccount", &Settings::cloudEnabledForAccount},
    {"cloudEnabledForApp", &Settings::cloudEnabledForApp},
    {"quotaBytes", Number{&Settings::quotaBytes, 0, kAny}},
    {"httpConnectLimitMs", Number{&Settings::httpConnectLimitMs, 1, kHourMs}},
    {"httpRequestLimitMs", Number{&Settings::httpRequestLimitMs, 1, kHourMs}},
    {"httpBodyLimitBytes", Number{&Settings::httpBodyLimitBytes, 0, kGreatestBody}},
};

// Takes a value into its setting; each throws SettingsError for one of another kind.
struct Taker {
  Settings* settings;
  const Json& value;

  void operator()(const Number& number) const {
    if (!value.is_number_unsigned()) throw SettingsError("is no whole number");
    const auto taken = value.get<std::uint64_t>();
    if (taken < number.least || taken > number.greatest) {
      throw SettingsError("is not from " + std::to_string(number.least) + " to " +
                          std::to_string(number.greatest));
    }
    settings->*number.field = taken;
  }

  void operator()(Text field) const {
    if (!value.is_string()) throw SettingsError("is no text");
    settings->*field = value.get<std::string>();
  }

  void operator()(Claim field) const {
    if (!value.is_boolean()) throw SettingsError("is neither true nor false");
    settings->*field = value.get<bool>();
  }
};

Settings SettingsFrom(const std::string& text) {
  const Json document = Json::parse(text);
  if (!document.is_object()) throw SettingsError("is no JSON object");

  Settings settings;
  for (const auto& [name, value] : document.items()) {
    const std::string& key = name;
    const auto* const setting = std::find_if(std::begin(kTable), std::end(kTable),
                                             [&](const Setting& each) { return key == each.name; });
    // A misspelt setting would otherwise do nothing, and nobody would know why.
    if (setting == std::end(kTable)) throw SettingsError("has an unknown member " + key);
    try {
      std::visit(Taker{&settings, value}, setting->field);
    } catch (const SettingsError& error) {
      throw SettingsError(key + ' ' + error.what());
    }
  }
  return settings;
}

}  // namespace

Settings LoadSettings(const std::filesystem::path& folder) {
  constexpr const char* kName = "steam_settings.json";
  const std::filesystem::path path = folder / kName;
  if (!std::filesystem::exists(path)) return {};
  try {
    const std::optional<std::string> text = ReadWhole(path);
    if (!text) throw SettingsError("cannot be read");
    return SettingsFrom(*text);
  } catch (const Json::exception& error) {
    throw SettingsError(std::string(kName) + ": " + error.what());
  } catch (const SettingsError& error) {
    throw SettingsError(std::string(kName) + ": " + error.what());
  }
}

}  // namespace launcher::stand_in
