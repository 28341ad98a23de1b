// What the check-up finds, and how it is shown: as lines for people, or as JSON.

#ifndef LAUNCHER_TOOLS_DOCTOR_FINDING_H_
#define LAUNCHER_TOOLS_DOCTOR_FINDING_H_

#include <functional>
#include <nlohmann/json.hpp>
#include <string>
#include <utility>
#include <vector>

namespace launcher::doctor {

using Json = nlohmann::json;

// The exit status of a report is that of its worst finding: 0 ok, 1 warning, 2 broken.
constexpr int kBrokenStatus = 2;
constexpr int kUsageStatus = 3;

// A member of texts.json.
const Json& Texts(const char* member);

// The finding of texts.json with this key, with `words` in place of {1}, {2} and so on. Its members
// are id, status, text, cause, next, for some findings detail, and what the caller adds: field,
// line, column, excerpt (a line of the settings file, and a line with a caret) and json_error.
Json MakeFinding(const std::string& key, const std::vector<std::string>& words = {});

class Report {
 public:
  // `show`, if given, is called for each finding as soon as it is added.
  explicit Report(std::function<void(const Json&)> show = nullptr) : show_(std::move(show)) {}

  // Both hide the user's folder and name in the finding.
  void AddFinding(Json finding);
  void Add(const std::string& key, const std::vector<std::string>& words = {}) {
    AddFinding(MakeFinding(key, words));
  }

  int ExitStatus() const;
  std::string Summary() const;
  std::string Text() const;
  std::string JsonText() const;

 private:
  std::size_t Count(const char* status) const;

  std::function<void(const Json&)> show_;
  Json findings_ = Json::array();
};

std::string FindingText(const Json& finding, bool isColoured, bool isVerbose);

std::string LowerCase(std::string text);

// A JSON string in quotes, for texts that people read: characters outside ASCII stay.
std::string Quoted(const std::string& text);

// "1 setting", "2 settings".
std::string Counted(std::size_t count, const std::string& noun);

// The first six names, then "and 3 more".
std::string Listed(const std::vector<std::string>& names);

// Returns false if printing failed, for example because a disk is full or a pipe is closed.
bool OutputIsWhole();

// Replaces the user's folder, and the user's name if it is a part of a path. If `isInPath` is
// false, replaces the name wherever it is a word.
std::string WithoutUser(const std::string& text, bool isInPath = true);

}  // namespace launcher::doctor

#endif  // LAUNCHER_TOOLS_DOCTOR_FINDING_H_
