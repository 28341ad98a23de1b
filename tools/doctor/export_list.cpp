#include "doctor/export_list.h"

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <cstdlib>
#include <nlohmann/json.hpp>
#include <numeric>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "doctor/embedded_files.h"

namespace launcher::doctor {
namespace {

using Json = nlohmann::json;

// Exports that are taken for one another, and differ in what their results mean.
const std::vector<std::vector<std::string>> kFamilies = {
    {"file_cipher_encode", "QX_Encode"},
    {"file_cipher_decode", "QX_Decode"},
    {"file_cipher_get_encode_size", "QX_GetEncodeDataSize"},
    {"QX_IsFailed", "QX_IsSucceeded"},
    {"QX_LoadString", "QX_LoadStringToMemory", "QX_GetLengthOfRString"},
    {"QX_RightDWORD", "QX_RightAddress", "QX_RightBinary"},
    {"QX_EnumDisplayMode", "QX_CheckDisplayMode"},
    {"QX_RemoveFile", "QX_RemoveDirectory", "QX_SteamAPI_RemoteStorageFileDelete"},
    {"QX_SteamAPI_Init", "QX_SteamAPI_IsSteamRunning", "QX_SteamAPI_RestartAppIfNecessary"},
    {"QX_SteamAPI_GetPersonaName", "QX_SteamAPI_GetSteamAuthTicket",
     "QX_SteamAPI_GetAvailableGameLanguages", "QX_SteamAPI_GetCurrentGameLanguage"},
    {"QX_SteamAPI_GetUserDataFolder", "QX_SteamAPI_CatUserFilePath"},
    {"QX_SteamAPI_ReadFile", "QX_SteamAPI_RemoteStorageFileRead"},
    {"QX_SteamAPI_WriteFile", "QX_SteamAPI_RemoteStorageFileWrite"},
    {"QX_SteamAPI_IsFileExist", "QX_SteamAPI_RemoteStorageFileExist"},
    {"QX_SteamAPI_RemoteStorageFileDelete", "QX_SteamAPI_RemoteStorageFileForget"},
    {"QX_SteamAPI_RemoteStorageGetFileCount", "QX_SteamAPI_RemoteStorageGetFileSize",
     "QX_SteamAPI_RemoteStorageGetFileName"},
};

std::string Undecorated(const std::string& name) {
  const std::size_t at = name.find('@');
  const bool isDecorated = at != std::string::npos && !name.empty() && name[0] == '_';
  return isDecorated ? name.substr(1, at - 1) : name.substr(0, at);
}

ResultMeaning ToMeaning(const Json& entry) {
  const auto unsignedOf = [](const Json& number) {
    return number.is_number_unsigned() ? number.get<std::uint64_t>()
                                       : static_cast<std::uint64_t>(number.get<std::int64_t>());
  };
  const bool isOne = entry.count("result") != 0;
  const Json& from = entry.at(isOne ? "result" : "from");
  return {from.get<std::int64_t>(), unsignedOf(isOne ? from : entry.at("to")),
          entry.at("means").get<std::string>(), entry.at("do").get<std::string>()};
}

std::vector<Export> ReadList() {
  const Json list = Json::parse(kExportList);
  std::vector<Export> exports;
  for (const Json& entry : list.at("exports")) {
    Export read = {entry.at("ordinal").get<std::uint32_t>(),
                   entry.at("name").get<std::string>(),
                   entry.at("decorated").get<std::string>(),
                   entry.at("returns").get<std::string>(),
                   entry.at("arguments").get<std::vector<std::string>>(),
                   {}};
    for (const Json& result : entry.at("results")) read.results.push_back(ToMeaning(result));
    exports.push_back(std::move(read));
  }
  return exports;
}

bool IsUnsignedType(const std::string& type) { return type[0] == 'u'; }

std::string NumberText(const Export& entry, std::int64_t value) {
  return IsUnsignedType(entry.returns) ? std::to_string(static_cast<std::uint64_t>(value))
                                       : std::to_string(value);
}

std::string ResultText(const Export& entry, const ResultMeaning& meaning) {
  const std::string from = NumberText(entry, meaning.from);
  const std::string to = NumberText(entry, static_cast<std::int64_t>(meaning.to));
  return from == to ? from : from + " to " + to;
}

// A result as people and programs write it: decimal or hexadecimal, signed or not. Answers it as
// the export's type reads it.
std::int64_t ParseResult(const Export& entry, const std::string& text) {
  const std::string problem =
      text + " is no result: write it as a decimal or, with 0x, a hexadecimal number";
  const bool isNegative = !text.empty() && text[0] == '-';
  const std::string digits = text.substr(isNegative ? 1 : 0);
  const bool isHexadecimal = digits.size() > 2 && digits[0] == '0' && (digits[1] | 0x20) == 'x';
  const std::string body = digits.substr(isHexadecimal ? 2 : 0);
  const char* const allowed = isHexadecimal ? "0123456789abcdefABCDEF" : "0123456789";
  if (body.empty() || body.find_first_not_of(allowed) != std::string::npos) {
    throw std::invalid_argument(problem);
  }
  errno = 0;
  const std::uint64_t size = std::strtoull(body.c_str(), nullptr, isHexadecimal ? 16 : 10);
  const bool isWide = entry.returns == "uint64_t";
  const std::uint64_t most = isNegative ? 0x80000000U : isWide ? UINT64_MAX : UINT32_MAX;
  if (errno != 0 || size > most) {
    throw std::invalid_argument(text + " does not fit the " + (isWide ? "64" : "32") +
                                " bits of a result");
  }
  const std::uint64_t bits = isNegative ? 0 - size : size;
  if (isWide) return static_cast<std::int64_t>(bits);
  // Of a one-byte result the other bits are whatever they were.
  if (entry.returns == "uint8_t") return static_cast<std::int64_t>(bits & 0xFF);
  if (entry.returns == "uint32_t") return static_cast<std::int64_t>(bits & UINT32_MAX);
  return static_cast<std::int32_t>(static_cast<std::uint32_t>(bits));
}

std::size_t EditDistance(const std::string& a, const std::string& b) {
  std::vector<std::size_t> row(b.size() + 1);
  std::iota(row.begin(), row.end(), std::size_t{0});
  for (std::size_t i = 0; i < a.size(); ++i) {
    std::size_t diagonal = row[0]++;
    for (std::size_t j = 0; j < b.size(); ++j) {
      const bool isSame = std::tolower(static_cast<unsigned char>(a[i])) ==
                          std::tolower(static_cast<unsigned char>(b[j]));
      const std::size_t best =
          std::min({row[j] + 1, row[j + 1] + 1, diagonal + (isSame ? 0U : 1U)});
      diagonal = row[j + 1];
      row[j + 1] = best;
    }
  }
  return row.back();
}

// The nearest names. A family's beginning that is left out counts for nothing.
std::string Suggestions(const std::string& name) {
  std::vector<std::pair<std::size_t, std::string>> ranked;
  for (const Export& entry : Exports()) {
    std::size_t distance = EditDistance(name, entry.name);
    for (const std::string beginning : {"QX_SteamAPI_RemoteStorage", "QX_SteamAPI_", "QX_"}) {
      if (entry.name.compare(0, beginning.size(), beginning) == 0) {
        distance = std::min(distance, EditDistance(name, entry.name.substr(beginning.size())));
      }
    }
    ranked.emplace_back(distance, entry.name);
  }
  std::sort(ranked.begin(), ranked.end());
  return ranked[0].second + ", " + ranked[1].second + ", " + ranked[2].second;
}

std::string Signature(const Export& entry) {
  std::string text = entry.returns + ' ' + entry.name + '(';
  for (std::size_t i = 0; i < entry.arguments.size(); ++i) {
    text += (i == 0 ? "" : ", ") + entry.arguments[i];
  }
  return text + ")\n";
}

std::string MeaningText(const Export& entry, const std::string& result,
                        const ResultMeaning& meaning) {
  std::string text = entry.name + ' ' + result + ": " + meaning.means + '\n';
  if (!meaning.next.empty()) text += "  next: " + meaning.next + '\n';
  return text;
}

// What the same number means where an export of the same family answers it.
std::string OthersText(const Export& entry, std::int64_t result, const std::string& means) {
  std::string text;
  std::vector<std::string> told = {entry.name};
  for (const std::vector<std::string>& family : kFamilies) {
    if (std::find(family.begin(), family.end(), entry.name) == family.end()) continue;
    for (const std::string& name : family) {
      const Export* const other = FindExport(name);
      if (std::find(told.begin(), told.end(), name) != told.end() || other == nullptr) continue;
      told.push_back(name);
      const ResultMeaning* const meaning = MeaningOf(*other, result);
      if (meaning == nullptr) {
        text += "  unlike: " + name + " never answers that\n";
      } else if (meaning->means != means) {
        text +=
            "  unlike: " + name + ' ' + NumberText(*other, result) + ": " + meaning->means + '\n';
      }
    }
  }
  return text;
}

}  // namespace

const std::vector<Export>& Exports() {
  static const std::vector<Export> exports = ReadList();
  return exports;
}

const Export* FindExport(const std::string& name) {
  const std::string plain = Undecorated(name);
  for (const Export& entry : Exports()) {
    if (entry.name == plain) return &entry;
  }
  return nullptr;
}

const ResultMeaning* MeaningOf(const Export& entry, std::int64_t result) {
  for (const ResultMeaning& meaning : entry.results) {
    const bool fits =
        IsUnsignedType(entry.returns)
            ? static_cast<std::uint64_t>(result) >= static_cast<std::uint64_t>(meaning.from) &&
                  static_cast<std::uint64_t>(result) <= meaning.to
            : result >= meaning.from && result <= static_cast<std::int64_t>(meaning.to);
    if (fits) return &meaning;
  }
  return nullptr;
}

std::string Explain(const std::string& name, const std::optional<std::string>& result) {
  const Export* const entry = FindExport(name);
  if (entry == nullptr) {
    throw std::invalid_argument("there is no export " + name + "; the nearest names are " +
                                Suggestions(Undecorated(name)));
  }
  std::string text = Signature(*entry);
  if (entry->returns == "void") return text + entry->name + " has no result\n";
  if (!result) {
    for (const ResultMeaning& meaning : entry->results) {
      text += MeaningText(*entry, ResultText(*entry, meaning), meaning);
    }
    return text;
  }
  const std::int64_t value = ParseResult(*entry, *result);
  const std::string number = NumberText(*entry, value);
  const ResultMeaning* const meaning = MeaningOf(*entry, value);
  if (meaning == nullptr) {
    return text + entry->name + ' ' + number +
           ": the library never answers that\n"
           "  next: look whether this is the export that was called, and whether the library is "
           "the one that doctor finds\n";
  }
  return text + MeaningText(*entry, number, *meaning) + OthersText(*entry, value, meaning->means);
}

}  // namespace launcher::doctor
