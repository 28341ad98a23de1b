#include "bfbr/reporter.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <mutex>

#include "support/json_text.h"
#include "support/process.h"
#include "support/terminal.h"

namespace launcher {
namespace {

using Guard = std::lock_guard<Mutex>;

// In the order of Reason.
const struct {
  const char* name;
  int exitCode;
} kReasons[] = {
    {"", kFine},           {"size", kBadData},      {"magic", kBadData},
    {"length", kBadData},  {"digest", kBadData},    {"marker", kBadData},
    {"read", kBadFile},    {"write", kBadFile},     {"exists", kBadFile},
    {"memory", kNoMemory}, {"internal", kNoMemory}, {"interrupted", kInterruptedExitCode}};

std::string ShownName(const Outcome& outcome) {
  return outcome.file == "-" ? "standard input" : outcome.file;
}

// One line of JSON. Not made by the JSON library, whose objects do not keep the documented order.
std::string JsonOf(const Outcome& outcome) {
  const bool isFine = outcome.reason == Reason::kNone;
  const auto orNull = [](const auto& value) { return value ? JsonText(*value) : "null"; };
  const auto unlessFine = [&](const std::string& text) { return isFine ? "null" : JsonText(text); };
  return "{\"file\":" + JsonText(outcome.file) + ",\"ok\":" + JsonText(isFine) +
         ",\"reason\":" + unlessFine(kReasons[static_cast<int>(outcome.reason)].name) +
         ",\"message\":" + unlessFine(outcome.message) +
         ",\"containerSize\":" + orNull(outcome.containerSize) +
         ",\"payloadSize\":" + orNull(outcome.payloadSize) +
         ",\"marker\":" + orNull(outcome.hasMarker) + ",\"sha256\":" + orNull(outcome.sha256) +
         ",\"fillerZero\":" + orNull(outcome.isFillerZero) +
         ",\"repeatedBlocks\":" + orNull(outcome.repeatedBlocks) + "}\n";
}

// What `verify` and `inspect` print for a file without errors.
std::string TextOf(const Outcome& outcome, Command command) {
  const std::string name = ShownName(outcome);
  const std::string payload = Grouped(*outcome.payloadSize) + " bytes";
  if (command == Command::kVerify) {
    return name + ": fine, a payload of " + payload + (*outcome.hasMarker ? " with" : " without") +
           " the marker\n";
  }
  return name + "\n" +                                                           //
         "  container        " + Grouped(*outcome.containerSize) + " bytes\n" +  //
         "  payload          " + payload + "\n" +                                //
         "  sha256           " + *outcome.sha256 + "\n" +                        //
         "  marker           " + (*outcome.hasMarker ? "yes" : "no") + "\n" +    //
         "  filler           " + (*outcome.isFillerZero ? "zero" : "not zero, which is fine") +
         "\n  repeated blocks  " + Grouped(*outcome.repeatedBlocks) + " of " +
         Grouped(*outcome.containerSize / 8) + "\n";
}

}  // namespace

Reporter::Reporter(const Options& options, const Steps& steps)
    : options_(options),
      steps_(steps),
      isOnTerminal_(IsTerminal(Stream::kError)),
      showsProgress_(!options.isQuiet && (options.progress == "always" ||
                                          (options.progress == "auto" && isOnTerminal_))) {
  for (const Item& item : options.items) {
    const auto size = showsProgress_ ? SizeOf(item.name) : std::nullopt;
    isSizeKnown_ = isSizeKnown_ && size;
    totalSize_ += size.value_or(0);
  }
}

void Reporter::Add(std::size_t number, Outcome outcome) {
  const Guard guard(mutex_);
  if (outcome.reason == Reason::kNone) {
    ++done_;
    readSize_ += outcome.readSize;
    writtenSize_ += outcome.writtenSize;
  }
  // Stops now, not when the outcome is printed: the files before it can take long.
  if (outcome.error != 0) StopFor(outcome.error);
  waiting_.emplace(number, std::move(outcome));
  for (auto next = waiting_.begin(); next != waiting_.end() && next->first == printed_;
       ++printed_) {
    Print(next->second);
    next = waiting_.erase(next);
  }
}

void Reporter::StopFor(SystemError error) {
  if (MeansFullDisk(error) || MeansNoReader(error)) stopError_ = error;
}

void Reporter::Print(const Outcome& outcome) {
  exitCode_ = std::max(exitCode_, kReasons[static_cast<int>(outcome.reason)].exitCode);
  const std::string name = ShownName(outcome);
  if (MeansFullDisk(outcome.error)) {
    // Other threads fail for the same reason: one message is enough.
    if (!isDiskFull_) PrintLine(outcome.place + ": " + outcome.message);
    isDiskFull_ = true;
  } else if (outcome.reason == Reason::kNone) {
    for (const std::string& warning : outcome.warnings) {
      if (!options_.isQuiet) PrintLine(name + ": " + warning);
    }
  } else if (outcome.reason != Reason::kInterrupted && !MeansNoReader(outcome.error)) {
    ++failed_;
    PrintLine((outcome.place.empty() ? name : outcome.place) + ": " + outcome.message);
  }
  if (options_.isJson) {
    Emit(JsonOf(outcome));
  } else if (!options_.MakesFiles() && !options_.isQuiet && outcome.reason == Reason::kNone) {
    Emit(TextOf(outcome, options_.command));
  }
}

// The report goes to the standard output, but to the standard error stream if data go there.
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
  // A report in a file can be empty: with -q it names only the files that failed. After an
  // interrupt an empty one would say that none did.
  const bool isNone = report_.empty() && (!ReportGoesToFile() || exitCode_ == kInterruptedExitCode);
  if (isNone || !canWriteReport_) return;
  PrintLine("");
  SystemError error = 0;
  if (!ReportGoesToFile()) {
    error = WriteToStream(stdout, report_.data(), report_.size());
  } else {
    error = reportFile_.Write(report_.data(), report_.size());
    if (error == 0) error = reportFile_.Commit(options_.Existing());
  }
  report_.clear();
  if (error == 0) return;
  canWriteReport_ = false;
  exitCode_ = std::max<int>(exitCode_, kBadFile);
  ReportFailure(ReportGoesToFile() ? options_.output : "standard output", error);
}

bool Reporter::ReportGoesToFile() const {
  return !options_.MakesFiles() && !options_.output.empty() && options_.output != "-";
}

bool Reporter::OpenReport() {
  if (!ReportGoesToFile()) return true;
  if (!options_.replaces && HasFileAt(options_.output)) {
    PrintMessage(options_.output + ": " + kExists);
    return false;
  }
  const SystemError error = reportFile_.Open(options_.output);
  if (error != 0) ReportFailure(options_.output, error);
  return error == 0;
}

void Reporter::ReportFailure(const std::string& place, SystemError error) {
  StopFor(error);
  isDiskFull_ = isDiskFull_ || MeansFullDisk(error);
  if (MeansNoReader(error)) return;
  PrintMessage(place + ": " +
               (MeansThatItExists(error)
                    ? kExists
                    : "the report cannot be written: " + SystemErrorText(error) +
                          ": make room, or write it elsewhere"));
}

double Reporter::SecondsSinceBegin() const {
  const std::chrono::duration<double> time = std::chrono::steady_clock::now() - begin_;
  return time.count();
}

void Reporter::ShowProgress() {
  constexpr double kSilentSeconds = 1;  // shorter runs need no progress
  constexpr double kMega = 1e6;
  if (!showsProgress_) return;
  const double now = SecondsSinceBegin();
  const double pause = isOnTerminal_ ? 0.2 : 1;
  if (now < kSilentSeconds || now - lastShown_ < pause) return;

  const Guard guard(mutex_);
  lastShown_ = now;
  // Each byte counts two or three times: see Steps.
  const double size = static_cast<double>(steps_.load()) / (options_.MakesFiles() ? 3 : 2);
  const double total = isSizeKnown_ ? static_cast<double>(totalSize_) : 0;
  const auto whole = [](double number) { return std::to_string(std::llround(number)); };
  std::string text = "bfbr: ";
  if (options_.items.size() > 1) {
    text += Grouped(done_) + " of " + Grouped(options_.items.size()) + " files, ";
  }
  text += whole(size / kMega) + (total > 0 ? " of " + whole(total / kMega) : "") + " MB, " +
          whole(size / kMega / now) + " MB/s";
  if (total > 0 && size > 0) {
    text += ", " + whole(std::max(0.0, total - size) * now / size) + " s left";
  }
  if (!isOnTerminal_) {
    std::fprintf(stderr, "%s\n", text.c_str());
    return;
  }
  const std::size_t width = text.size();
  text.resize(std::max(width, progressWidth_), ' ');
  progressWidth_ = width;
  std::fprintf(stderr, "\r%s", text.c_str());
}

// Removes the progress from the terminal's line, then prints a message, if any.
void Reporter::PrintLine(const std::string& text) {
  if (progressWidth_ > 0) {
    std::fprintf(stderr, "\r%s\r", std::string(progressWidth_, ' ').c_str());
  }
  progressWidth_ = 0;
  if (!text.empty()) PrintMessage(text);
}

std::string Reporter::Totals() const {
  const std::size_t count = options_.items.size();
  const std::string done = Grouped(done_) + " of " + Grouped(count) + " files ";
  if (exitCode_ == kInterruptedExitCode) {
    if (options_.WritesDataToOutput()) {
      return "interrupted: the data are not whole: run the command again";
    }
    return "interrupted: " + (count > 1 ? done + "were done, and nothing" : "nothing") +
           " was written in part: run the command again";
  }
  if (count == 1 || MeansNoReader(stopError_)) return "";
  if (isDiskFull_) {
    return "the disk is full: " + done + "are done, " + Grouped(count - done_ - failed_) +
           " are left: make room and run the command again" +
           (options_.MakesFiles() ? " with --force" : "");
  }
  if (options_.isQuiet) return "";
  return Grouped(count) + " files: " + Grouped(done_) + " done" +
         (failed_ > 0 ? ", " + Grouped(failed_) + " failed" : "") + "; " + Grouped(readSize_) +
         " bytes read" +
         (options_.MakesFiles() ? ", " + Grouped(writtenSize_) + " bytes written" : "");
}

int Reporter::Finish() {
  const Guard guard(mutex_);
  for (; printed_ < options_.items.size(); ++printed_) {
    Outcome outcome;
    outcome.file = options_.items[printed_].name;
    outcome.reason = Interrupted() ? Reason::kInterrupted : Reason::kWrite;
    outcome.message = Interrupted() ? "interrupted: run the command again"
                                    : "not done, since the disk is full: run the command again";
    outcome.error = stopError_;
    const auto known = waiting_.find(printed_);
    Print(known != waiting_.end() ? known->second : outcome);
  }
  FlushReport();
  PrintLine(Totals());
  return exitCode_;
}

}  // namespace launcher
