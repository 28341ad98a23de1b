#include "doctor/finding.h"

#include <algorithm>
#include <cstdio>
#include <string>
#include <utility>

#include "doctor/machine.h"
#include "support/json_text.h"

namespace launcher::doctor {
namespace {

using Json = nlohmann::json;

constexpr std::size_t kStatusCount = 3;

struct StatusLook {
  const char* name;
  const char* colour;
};
constexpr StatusLook kLooks[kStatusCount] = {
    {"ok", "\x1b[32m"}, {"warning", "\x1b[33m"}, {"broken", "\x1b[31m"}};

const StatusLook& LookOf(Status status) { return kLooks[static_cast<std::size_t>(status)]; }

bool EndsAWord(const std::string& text, std::size_t at) {
  return at == text.size() || std::string("\\/\"' :,;)]}\r\n").find(text[at]) != std::string::npos;
}

bool SameCharacter(char a, char b) {
  const auto plain = [](char c) {
    if (c == '/') return '\\';
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
  };
  return plain(a) == plain(b);
}

// Windows makes no difference between the cases, nor between the separators.
void ReplaceWords(std::string& text, const std::string& word, const std::string& with,
                  bool needsSeparator) {
  if (word.empty()) return;
  for (std::size_t at = 0; at + word.size() <= text.size();) {
    const bool begins =
        !needsSeparator || (at > 0 && (text[at - 1] == '/' || text[at - 1] == '\\'));
    if (begins && EndsAWord(text, at + word.size()) &&
        std::equal(word.begin(), word.end(), text.begin() + static_cast<std::ptrdiff_t>(at),
                   SameCharacter)) {
      text.replace(at, word.size(), with);
      at += with.size();
    } else {
      ++at;
    }
  }
}

}  // namespace

const char* StatusName(Status status) { return LookOf(status).name; }

void Report::Add(Finding finding) {
  for (std::string* text : {&finding.text, &finding.cause, &finding.next, &finding.jsonError}) {
    *text = WithoutUser(*text);
  }
  status_ = std::max(status_, finding.status);
  findings_.push_back(std::move(finding));
  if (tell_) tell_(findings_.back());
}

std::string Report::Summary() const {
  std::size_t counts[kStatusCount] = {};
  for (const Finding& finding : findings_) ++counts[static_cast<std::size_t>(finding.status)];
  return "doctor: " + std::to_string(counts[2]) + " broken, " + Counted(counts[1], "warning") +
         ", " + std::to_string(counts[0]) + " fine\n";
}

std::string Report::Text() const {
  std::string text;
  for (const Finding& finding : findings_) text += FindingText(finding, false);
  return text + Summary();
}

std::string Report::JsonText() const {
  Json list = Json::array();
  for (const Finding& finding : findings_) {
    Json entry = {{"id", finding.id},
                  {"status", StatusName(finding.status)},
                  {"text", finding.text},
                  {"cause", finding.cause},
                  {"next", finding.next}};
    if (!finding.jsonError.empty()) entry["json_error"] = finding.jsonError;
    if (!finding.field.empty()) entry["field"] = finding.field;
    if (finding.line != 0) {
      entry["line"] = finding.line;
      entry["column"] = finding.column;
    }
    list.push_back(entry);
  }
  return launcher::JsonText({{"findings", list}, {"status", StatusName(status_)}}, 2) + '\n';
}

std::string FindingText(const Finding& finding, bool coloured) {
  const StatusLook& look = LookOf(finding.status);
  constexpr std::size_t kWidth = 9;
  std::string text = look.name + std::string(kWidth - std::string(look.name).size(), ' ');
  if (coloured) text = look.colour + text + "\x1b[0m";
  text += finding.id + ": " + finding.text + '\n';
  for (const auto& [name, more] :
       {std::pair{"JSON library", finding.jsonError}, std::pair{"cause", finding.cause},
        std::pair{"next", finding.next}}) {
    if (!more.empty()) text += std::string(kWidth, ' ') + name + ": " + more + '\n';
  }
  return text;
}

std::string Quoted(const std::string& text) { return JsonText(text); }

std::string Counted(std::size_t count, const std::string& noun) {
  return std::to_string(count) + ' ' + noun + (count == 1 ? "" : "s");
}

bool OutputIsWhole() { return std::fflush(stdout) == 0 && std::ferror(stdout) == 0; }

std::string WithoutUser(const std::string& text) {
  std::string hidden = text;
  const UserTraces user = ThisUser();
  std::string folder = user.folder;
  while (folder.size() > 1 && (folder.back() == '/' || folder.back() == '\\')) folder.pop_back();
  if (folder.size() > 1) {
    ReplaceWords(hidden, folder, user.folderSign, false);
    // As JSON has it.
    std::string doubled;
    for (const char c : folder) doubled += c == '\\' ? "\\\\" : std::string(1, c);
    if (doubled != folder) ReplaceWords(hidden, doubled, user.folderSign, false);
  }
  ReplaceWords(hidden, user.name, user.nameSign, true);
  return hidden;
}

}  // namespace launcher::doctor
