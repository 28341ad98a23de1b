#include "doctor/export_list.h"

#include <algorithm>
#include <cctype>
#include <cstdint>
#include <set>
#include <stdexcept>
#include <string>

#include "doctor/built_in.h"
#include "doctor/finding.h"

namespace launcher::doctor {
namespace {

std::string TextOf(const Json& entry, const char* key) { return entry.at(key).get<std::string>(); }

bool IsUnsigned(const Json& entry) { return TextOf(entry, "returns")[0] == 'u'; }

// A result as people and programs write it: decimal or hexadecimal, signed or not. Returns it in
// the export's type.
std::int64_t ParseResult(const Json& entry, const std::string& text) {
  const bool isNegative = text[0] == '-';
  const std::string digits = text.substr(isNegative ? 1 : 0);
  const std::string type = TextOf(entry, "returns");
  const std::uint64_t most = isNegative           ? 0x80000000U
                             : type == "uint64_t" ? UINT64_MAX
                                                  : UINT32_MAX;
  std::size_t end = 0;
  std::uint64_t bits = 0;
  try {
    bits = std::stoull(digits, &end, LowerCase(digits.substr(0, 2)) == "0x" ? 16 : 10);
  } catch (const std::exception&) {
    end = std::string::npos;
  }
  if (end != digits.size() || std::isdigit(static_cast<unsigned char>(digits[0])) == 0 ||
      bits > most) {
    throw std::invalid_argument(text + " is not a result of " + TextOf(entry, "name") +
                                ": write a decimal number, or a hexadecimal one after 0x");
  }
  if (isNegative) bits = 0 - bits;
  if (type == "uint64_t") return static_cast<std::int64_t>(bits);
  // The other bits of a one-byte result have no meaning.
  if (type == "uint8_t") return static_cast<std::int64_t>(bits & 0xFF);
  if (type == "uint32_t") return static_cast<std::int64_t>(bits & UINT32_MAX);
  return static_cast<std::int32_t>(static_cast<std::uint32_t>(bits));
}

std::string NumberText(const Json& entry, std::int64_t value) {
  return IsUnsigned(entry) ? std::to_string(static_cast<std::uint64_t>(value))
                           : std::to_string(value);
}

// The first or the last result that has this meaning.
const Json& Bound(const Json& meaning, const char* key) {
  return meaning.at(meaning.count("result") != 0 ? "result" : key);
}

// What a result of an export means, null if the list does not have it.
const Json* MeaningOf(const Json& entry, std::int64_t result) {
  for (const Json& meaning : entry.at("results")) {
    const Json& from = Bound(meaning, "from");
    const Json& to = Bound(meaning, "to");
    const auto bits = static_cast<std::uint64_t>(result);
    const bool fits = IsUnsigned(entry)
                          ? bits >= from.get<std::uint64_t>() && bits <= to.get<std::uint64_t>()
                          : result >= from.get<std::int64_t>() && result <= to.get<std::int64_t>();
    if (fits) return &meaning;
  }
  return nullptr;
}

std::string MeaningText(const Json& entry, const std::string& result, const Json& meaning) {
  const std::string next = TextOf(meaning, "do");
  return TextOf(entry, "name") + ' ' + result + ": " + TextOf(meaning, "means") + '\n' +
         (next.empty() ? "" : "  next: " + next + '\n');
}

// What the same number means for the exports of the same families.
std::string OthersText(const std::string& name, std::int64_t result, const Json& known) {
  std::string text;
  std::set<std::string> done = {name};
  for (const Json& family : Texts("families")) {
    if (std::find(family.begin(), family.end(), name) == family.end()) continue;
    for (const Json& member : family) {
      const auto other = member.get<std::string>();
      if (!done.insert(other).second) continue;
      const Json* const meaning = MeaningOf(*FindExport(other), result);
      if (meaning == nullptr) {
        text += "  unlike: " + other + " never returns it\n";
      } else if (meaning->at("means") != known.at("means")) {
        text += "  unlike: " + other + ": " + TextOf(*meaning, "means") + '\n';
      }
    }
  }
  return text;
}

std::string ExplainEverywhere(const std::string& result) {
  std::string text;
  for (const Json& entry : Exports()) {
    // A number with a minus sign is no result of an unsigned type.
    if (TextOf(entry, "returns") == "void" || (result[0] == '-' && IsUnsigned(entry))) continue;
    try {
      const std::int64_t value = ParseResult(entry, result);
      if (const Json* const meaning = MeaningOf(entry, value)) {
        text += MeaningText(entry, NumberText(entry, value), *meaning);
      }
    } catch (const std::invalid_argument&) {
      continue;  // the type is too small for it
    }
  }
  if (text.empty()) throw std::invalid_argument("no function returns " + result);
  return text;
}

}  // namespace

const Json& Exports() {
  static const Json list = Json::parse(kExportList);
  return list.at("exports");
}

const Json* FindExport(const std::string& name) {
  const std::string wanted = LowerCase(name);
  for (const Json& entry : Exports()) {
    const std::string decorated = LowerCase(TextOf(entry, "decorated"));
    if (wanted == LowerCase(TextOf(entry, "name")) || wanted == decorated) return &entry;
  }
  return nullptr;
}

std::string Explain(const std::string& word, const std::string& result) {
  const Json* const entry = FindExport(word);
  if (entry == nullptr) {
    if (result.empty() && word.find_first_of("0123456789") <= 1) return ExplainEverywhere(word);
    throw std::invalid_argument("the library has no function " + word);
  }
  const std::string name = TextOf(*entry, "name");
  std::string text;
  for (const Json& argument : entry->at("arguments")) {
    text += (text.empty() ? "" : ", ") + argument.get<std::string>();
  }
  text = TextOf(*entry, "returns") + ' ' + name + '(' + text + ")\n";
  if (result.empty()) {
    if (entry->at("results").empty()) text += name + " returns nothing\n";
    for (const Json& meaning : entry->at("results")) {
      const std::string from = Bound(meaning, "from").dump();
      const std::string to = Bound(meaning, "to").dump();
      text += MeaningText(*entry, from == to ? from : from + " to " + to, meaning);
    }
    return text;
  }
  const std::int64_t value = ParseResult(*entry, result);
  const std::string number = NumberText(*entry, value);
  const Json* const meaning = MeaningOf(*entry, value);
  if (meaning == nullptr) {
    return text + name + " never returns " + number +
           "\n  next: check that this function was called, and that \"doctor\" finds the library\n";
  }
  return text + MeaningText(*entry, number, *meaning) + OthersText(name, value, *meaning);
}

}  // namespace launcher::doctor
