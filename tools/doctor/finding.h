// What the check-up finds, and how it is told: as lines for people, or as JSON.

#ifndef LAUNCHER_TOOLS_DOCTOR_FINDING_H_
#define LAUNCHER_TOOLS_DOCTOR_FINDING_H_

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace launcher::doctor {

// In the order of weight. The exit status of a report is that of its worst finding.
enum class Status : std::uint8_t { ok, warning, broken };

constexpr int kBrokenStatus = static_cast<int>(Status::broken);
constexpr int kUsageStatus = 3;

const char* StatusName(Status status);

struct Finding {
  std::string id = {};
  Status status = Status::ok;
  std::string text = {};
  std::string cause = {};      // the known cause, or empty
  std::string next = {};       // the next step, or empty
  std::string jsonError = {};  // the JSON library's own words, or empty
  std::string field = {};      // the setting that it is about, or empty
  std::size_t line = 0;        // in the settings file, 0 for none
  std::size_t column = 0;
};

class Report {
 public:
  // `tell` is called for each finding at once: what comes later may end the process.
  explicit Report(std::function<void(const Finding&)> tell = nullptr) : tell_(std::move(tell)) {}

  void Add(Finding finding);

  const std::vector<Finding>& findings() const { return findings_; }
  Status status() const { return status_; }
  int ExitStatus() const { return static_cast<int>(status_); }

  std::string Summary() const;
  std::string Text() const;
  std::string JsonText() const;

 private:
  std::function<void(const Finding&)> tell_;
  std::vector<Finding> findings_;
  Status status_ = Status::ok;
};

// The lines of a finding.
std::string FindingText(const Finding& finding, bool coloured);

// A JSON string in quotes, for texts that people read: what is not ASCII stays.
std::string Quoted(const std::string& text);

// "1 setting", "2 settings".
std::string Counted(std::size_t count, const std::string& noun);

// Whether all that was printed has gone out: a disk may be full, a reader gone.
bool OutputIsWhole();

// Hides the user's own folder and name in a text that leaves the machine.
std::string WithoutUser(const std::string& text);

}  // namespace launcher::doctor

#endif  // LAUNCHER_TOOLS_DOCTOR_FINDING_H_
