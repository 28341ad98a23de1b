// The reports of a run: a line or an object for each file, in the order of the command line, and
// the progress.

#ifndef LAUNCHER_TOOLS_BFBR_REPORTER_H_
#define LAUNCHER_TOOLS_BFBR_REPORTER_H_

#include <atomic>
#include <chrono>
#include <cstddef>
#include <map>
#include <string>

#include "bfbr/container_file.h"
#include "bfbr/options.h"
#include "platform/mutex.h"
#include "support/output_file.h"

namespace launcher {

class Reporter {
 public:
  Reporter(const Options& options, const Steps& steps);

  // Creates the file that the report goes to, if any. Returns false, with a message, on failure.
  bool OpenReport();

  // Reports on a file. Any thread may call it.
  void Add(std::size_t number, Outcome outcome);

  // True if no more files are to be started: the disk is full, or nobody reads the output.
  bool HasStopped() const { return stopError_ != 0; }

  // Shows the progress, unless it was shown a short time ago.
  void ShowProgress();

  // Reports on the files without an outcome, then prints the totals. Returns the exit code.
  int Finish();

  double SecondsSinceBegin() const;

 private:
  void Print(const Outcome& outcome);
  void PrintLine(const std::string& text);
  void Emit(const std::string& text);
  void FlushReport();
  void StopFor(SystemError error);
  std::string Totals() const;
  bool ReportGoesToFile() const;
  void ReportFailure(const std::string& place, SystemError error);

  const Options& options_;
  const Steps& steps_;
  std::uint64_t totalSize_ = 0;
  bool isSizeKnown_ = true;
  const bool isOnTerminal_;
  const bool showsProgress_;
  const std::chrono::steady_clock::time_point begin_ = std::chrono::steady_clock::now();
  double lastShown_ = 0;
  std::size_t progressWidth_ = 0;

  Mutex mutex_;
  std::map<std::size_t, Outcome> waiting_;  // to be printed after the files before them
  std::size_t printed_ = 0;
  std::size_t done_ = 0;
  std::size_t failed_ = 0;
  std::uint64_t readSize_ = 0;
  std::uint64_t writtenSize_ = 0;
  int exitCode_ = kFine;
  std::atomic<SystemError> stopError_{0};
  bool isDiskFull_ = false;  // and a message was printed
  std::string report_;
  OutputFile reportFile_;
  bool canWriteReport_ = true;
};

}  // namespace launcher

#endif  // LAUNCHER_TOOLS_BFBR_REPORTER_H_
