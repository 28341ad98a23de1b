#include "doctor/finding.h"

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <string>

#include "doctor/built_in.h"
#include "doctor/machine.h"
#include "support/json_text.h"

namespace launcher::doctor {
namespace {

// Windows ignores case in paths and accepts both separators.
bool IsSameInPaths(char a, char b) {
  const auto plain = [](char c) {
    return c == '/' ? '\\' : std::tolower(static_cast<unsigned char>(c));
  };
  return plain(a) == plain(b);
}

bool IsPartOfWord(char c) {
  return std::isalnum(static_cast<unsigned char>(c)) != 0 || c == '_' || (c & 0x80) != 0;
}

// Replaces `word` if no letter or digit is beside it, and, if `isInPath`, only after a separator.
std::string ReplaceWord(const std::string& text, const std::string& word, const char* with,
                        bool isInPath) {
  std::string replaced;
  for (std::size_t at = 0; at < text.size(); ++at) {
    const char before = at == 0 ? ' ' : text[at - 1];
    const std::size_t end = at + word.size();
    const bool isWord = !word.empty() && end <= text.size() && !IsPartOfWord(before) &&
                        (end == text.size() || !IsPartOfWord(text[end])) &&
                        (!isInPath || before == '/' || before == '\\') &&
                        std::equal(word.begin(), word.end(),
                                   text.begin() + static_cast<std::ptrdiff_t>(at), IsSameInPaths);
    replaced += isWord ? std::string(with) : text.substr(at, 1);
    if (isWord) at = end - 1;
  }
  return replaced;
}

}  // namespace

const Json& Texts(const char* member) {
  static const Json texts = Json::parse(kTexts);
  return texts.at(member);
}

Json MakeFinding(const std::string& key, const std::vector<std::string>& words) {
  Json finding = {{"id", key.substr(0, key.find('.'))}, {"cause", ""}, {"next", ""}};
  finding.update(Texts("findings").at(key));
  for (Json& member : finding) {
    auto text = member.get<std::string>();
    // From the last sign to the first, so that a sign in an inserted word is not replaced.
    for (std::size_t at = text.rfind('{'); at != std::string::npos;
         at = at == 0 ? std::string::npos : text.rfind('{', at - 1)) {
      const auto index = static_cast<std::size_t>(text[at + 1] - '1');
      if (index < words.size()) text.replace(at, 3, words[index]);
    }
    member = text;
  }
  return finding;
}

void Report::AddFinding(Json finding) {
  for (Json& member : finding) {
    if (member.is_string()) member = WithoutUser(member.get<std::string>());
  }
  findings_.push_back(std::move(finding));
  if (show_) show_(findings_.back());
}

std::size_t Report::Count(const char* status) const {
  return static_cast<std::size_t>(
      std::count_if(findings_.begin(), findings_.end(),
                    [&](const Json& finding) { return finding.at("status") == status; }));
}

int Report::ExitStatus() const {
  return Count("broken") != 0 ? kBrokenStatus : Count("warning") != 0 ? 1 : 0;
}

std::string Report::Summary() const {
  return "doctor: " + std::to_string(Count("broken")) + " broken, " +
         Counted(Count("warning"), "warning") + ", " + std::to_string(Count("ok")) + " fine\n";
}

std::string Report::Text() const {
  std::string text;
  for (const Json& finding : findings_) text += FindingText(finding, false, false);
  return text + Summary();
}

std::string Report::JsonText() const {
  constexpr const char* kStatuses[] = {"ok", "warning", "broken"};
  const Json report = {{"findings", findings_}, {"status", kStatuses[ExitStatus()]}};
  return launcher::JsonText(report, 2) + '\n';
}

std::string FindingText(const Json& finding, bool isColoured, bool isVerbose) {
  const auto part = [&](const char* member) { return finding.value(member, std::string()); };
  std::string status = part("status");
  const std::string colour = status == "ok" ? "32" : status == "warning" ? "33" : "31";
  status.resize(9, ' ');
  if (isColoured) status = "\x1b[" + colour + 'm' + status + "\x1b[0m";
  std::string text = status + part("id") + ": " + part("text") + '\n' + part("excerpt");
  for (const char* const member : {"detail", "json_error", "cause", "next"}) {
    const bool isForAll = member[0] == 'c' || member[0] == 'n';  // cause and next
    if (part(member).empty() || !(isForAll || isVerbose)) continue;
    text += std::string(9, ' ') + member + ": " + part(member) + '\n';
  }
  return text;
}

std::string LowerCase(std::string text) {
  for (char& c : text) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  return text;
}

std::string Quoted(const std::string& text) { return JsonText(text); }

std::string Counted(std::size_t count, const std::string& noun) {
  return std::to_string(count) + ' ' + noun + (count == 1 ? "" : "s");
}

std::string Listed(const std::vector<std::string>& names) {
  constexpr std::size_t kShown = 6;
  std::string text;
  for (std::size_t i = 0; i < names.size() && i < kShown; ++i) {
    text += (i == 0 ? "" : ", ") + names[i];
  }
  if (names.size() > kShown) text += " and " + std::to_string(names.size() - kShown) + " more";
  return text;
}

bool OutputIsWhole() { return std::fflush(stdout) == 0 && std::ferror(stdout) == 0; }

std::string WithoutUser(const std::string& text, bool isInPath) {
  const auto [folder, name] = ThisUser();
  const char* const folderSign = kIsWindows ? "%USERPROFILE%" : "~";
  // JSON texts have two backslashes for one.
  std::string doubled;
  for (const char c : folder) doubled += c == '\\' ? "\\\\" : std::string(1, c);
  const std::string hidden =
      ReplaceWord(ReplaceWord(text, folder, folderSign, false), doubled, folderSign, false);
  return ReplaceWord(hidden, name, kIsWindows ? "%USERNAME%" : "$USER", isInPath);
}

}  // namespace launcher::doctor
