#include "bfbr/reporter.h"

#include <algorithm>
#include <cstdio>
#include <mutex>

#include "support/input_file.h"
#include "support/terminal.h"

namespace launcher {
namespace {

using Guard = std::lock_guard<Mutex>;

constexpr double kMega = 1e6;

// Shorter runs need none.
constexpr double kSilentSeconds = 1;

std::string Decimal(double number, int places) {
  char text[64];
  std::snprintf(text, sizeof text, "%.*f", places, number);
  return text;
}

}  // namespace

Reporter::Reporter(const Options& options, const Advance& advance)
    : options_(options),
      advance_(advance),
      isOnTerminal_(IsTerminal(Stream::kError)),
      showsProgress_(!options.isQuiet && (options.progress == Progress::kAlways ||
                                          (options.progress == Progress::kAuto && isOnTerminal_))) {
}

void Reporter::Tell(std::size_t number, Outcome outcome) {
  const Guard guard(mutex_);
  ++done_;
  waiting_.emplace(number, std::move(outcome));
  PrintNext();
}

void Reporter::PrintNext() {
  for (auto next = waiting_.begin(); next != waiting_.end() && next->first == told_; ++told_) {
    Print(next->second);
    next = waiting_.erase(next);
  }
}

void Reporter::Print(const Outcome& outcome) {
  exitCode_ = std::max(exitCode_, ExitCodeFor(outcome.reason));
  const std::string name = ShownName(outcome);
  if (outcome.reason == Reason::kInterrupted) {
    ++interrupted_;
  } else if (outcome.reason != Reason::kNone) {
    ++failed_;
    ClearProgress();
    PrintMessage((outcome.place.empty() ? name : outcome.place) + ": " + outcome.message);
  }
  // Of a file that has failed only that counts.
  if (outcome.reason == Reason::kNone && !options_.isQuiet) {
    for (const std::string& warning : outcome.warnings) {
      ClearProgress();
      PrintMessage(name + ": " + warning);
    }
  }
  if (options_.isJson) {
    Emit(JsonOf(outcome) + "\n");
  } else if (!options_.MakesFiles() && !options_.isQuiet && outcome.reason == Reason::kNone) {
    Emit(TextOf(outcome, options_.command));
  }
}

// The report goes to the standard output, but to the standard error stream where data go there.
void Reporter::Emit(const std::string& text) {
  if (options_.WritesDataToOutput()) {
    std::fputs(text.c_str(), stderr);
    return;
  }
  report_ += text;
  constexpr std::size_t kPiece = 1u << 16;
  if (ReportGoesToFile()) return;
  if (report_.size() > kPiece || IsTerminal(Stream::kOutput)) FlushReport();
}

void Reporter::FlushReport() {
  if (report_.empty() || !canWriteReport_) return;
  ClearProgress();
  SystemError error = 0;
  if (!ReportGoesToFile()) {
    error = WriteToStandardOutput(report_.data(), report_.size());
  } else {
    error = reportFile_.Write(report_.data(), report_.size());
    if (error == 0) {
      error = reportFile_.Commit(options_.replaces ? NewFile::Existing::kReplaced
                                                   : NewFile::Existing::kStays);
    }
  }
  report_.clear();
  if (error == 0) return;
  canWriteReport_ = false;
  exitCode_ = std::max<int>(exitCode_, kBadFile);
  TellOfReport(ReportGoesToFile() ? options_.output : "standard output", error);
}

bool Reporter::ReportGoesToFile() const {
  return !options_.MakesFiles() && !options_.output.empty() && options_.output != "-";
}

bool Reporter::OpenReport() {
  if (!ReportGoesToFile()) return true;
  if (!options_.replaces && HasFileAt(options_.output)) {
    PrintMessage(options_.output + ": " + kIsThere);
    return false;
  }
  const SystemError error = reportFile_.Open(options_.output);
  if (error != 0) TellOfReport(options_.output, error);
  return error == 0;
}

void Reporter::TellOfReport(const std::string& place, SystemError error) {
  PrintMessage(place + ": " +
               (MeansThatItExists(error)
                    ? kIsThere
                    : "the report cannot be written: " + SystemErrorText(error) +
                          ": make room, or write it elsewhere"));
}

double Reporter::SecondsSinceBegin() const {
  const std::chrono::duration<double> time = std::chrono::steady_clock::now() - begin_;
  return time.count();
}

void Reporter::ShowProgress() {
  if (!showsProgress_) return;
  const double now = SecondsSinceBegin();
  const double pause = isOnTerminal_ ? 0.2 : 1;
  if (now < kSilentSeconds || now - lastShown_ < pause) return;

  const Guard guard(mutex_);
  lastShown_ = now;
  const double bytes =
      static_cast<double>(advance_.steps.load()) / static_cast<double>(Advance::kStepsPerByte);
  std::string text = "bfbr: ";
  if (options_.files.size() > 1) {
    text += Grouped(done_) + " of " + Grouped(options_.files.size()) + " files, ";
  }
  text += Decimal(bytes / kMega, 0);
  const auto total = static_cast<double>(totalBytes_);
  if (total > 0) text += " of " + Decimal(total / kMega, 0);
  text += " MB, " + Decimal(bytes / kMega / now, 0) + " MB/s";
  if (total > 0 && bytes > 0) {
    text += ", " + Decimal(std::max(0.0, (total - bytes) * now / bytes), 0) + " s left";
  }
  if (!isOnTerminal_) {
    std::fprintf(stderr, "%s\n", text.c_str());
    return;
  }
  const std::size_t width = text.size();
  if (width < progressWidth_) text.append(progressWidth_ - width, ' ');
  progressWidth_ = width;
  std::fprintf(stderr, "\r%s", text.c_str());
}

void Reporter::ClearProgress() {
  if (progressWidth_ == 0) return;
  std::fprintf(stderr, "\r%s\r", std::string(progressWidth_, ' ').c_str());
  progressWidth_ = 0;
}

void Reporter::TellOfTheRest() {
  const Guard guard(mutex_);
  for (; told_ < options_.files.size(); ++told_) {
    const auto known = waiting_.find(told_);
    if (known != waiting_.end()) {
      Print(known->second);
      continue;
    }
    Outcome outcome;
    outcome.file = options_.files[told_];
    outcome.reason = Reason::kInterrupted;
    outcome.message = "interrupted: run the command again";
    Print(outcome);
  }
  waiting_.clear();
}

int Reporter::Finish() {
  const Guard guard(mutex_);
  ClearProgress();
  FlushReport();
  const std::string all = Grouped(options_.files.size());
  if (interrupted_ > 0) {
    const std::string done = Grouped(options_.files.size() - interrupted_);
    PrintMessage("interrupted: " +
                 (options_.files.size() > 1 ? done + " of " + all + " files were done, and nothing"
                                            : std::string("nothing")) +
                 " was written in part: run the command again");
  } else if (failed_ > 0 && options_.files.size() > 1 && !options_.isQuiet) {
    PrintMessage(Grouped(failed_) + " of " + all + " files failed: see above");
  }
  return exitCode_;
}

}  // namespace launcher
