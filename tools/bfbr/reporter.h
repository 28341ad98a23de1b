// What a run tells: a line or an object a file, in the order they were named, and how far it is.

#ifndef LAUNCHER_TOOLS_BFBR_REPORTER_H_
#define LAUNCHER_TOOLS_BFBR_REPORTER_H_

#include <chrono>
#include <cstddef>
#include <map>
#include <string>

#include "bfbr/container_file.h"
#include "bfbr/options.h"
#include "bfbr/outcome.h"
#include "platform/mutex.h"
#include "support/output_file.h"

namespace launcher {

class Reporter {
 public:
  Reporter(const Options& options, const Advance& advance);

  bool ShowsProgress() const { return showsProgress_; }
  void SetTotalBytes(std::uint64_t totalBytes) { totalBytes_ = totalBytes; }

  // Makes the file that the report goes to, if any. False, with a message, where it cannot be.
  bool OpenReport();

  // From any thread.
  void Tell(std::size_t number, Outcome outcome);

  // Shows the progress where it is time to.
  void ShowProgress();

  // Tells of the files that no outcome has come for that they were interrupted.
  void TellOfTheRest();

  // Prints what is left. Answers the exit code.
  int Finish();

  double SecondsSinceBegin() const;

 private:
  void PrintNext();
  void Print(const Outcome& outcome);
  void Emit(const std::string& text);
  void ClearProgress();
  void FlushReport();
  bool ReportGoesToFile() const;
  void TellOfReport(const std::string& place, SystemError error);

  const Options& options_;
  const Advance& advance_;
  std::uint64_t totalBytes_ = 0;  // 0 where nobody knows
  const bool isOnTerminal_;
  const bool showsProgress_;
  const std::chrono::steady_clock::time_point begin_ = std::chrono::steady_clock::now();
  double lastShown_ = 0;
  std::size_t progressWidth_ = 0;

  Mutex mutex_;
  std::map<std::size_t, Outcome> waiting_;  // for those before them
  std::size_t told_ = 0;
  std::size_t done_ = 0;
  std::size_t failed_ = 0;
  std::size_t interrupted_ = 0;
  int exitCode_ = kFine;
  std::string report_;
  OutputFile reportFile_;
  bool canWriteReport_ = true;
};

}  // namespace launcher

#endif  // LAUNCHER_TOOLS_BFBR_REPORTER_H_
