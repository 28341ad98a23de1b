// bfbr: makes BFBR containers, opens and checks them.

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <exception>
#include <mutex>
#include <new>

#include "bfbr/container_file.h"
#include "bfbr/options.h"
#include "bfbr/rates.h"
#include "bfbr/reporter.h"
#include "platform/mutex.h"
#include "support/input_file.h"
#include "support/interrupt.h"
#include "support/terminal.h"
#include "support/threads.h"

namespace launcher {
namespace {

constexpr std::size_t kShortestKey = 4;
constexpr std::size_t kLongestKey = 56;

bool KeyFromDigits(const std::string& digits, Key* key) {
  const auto isDigit = [](unsigned char c) { return std::isxdigit(c) != 0; };
  if (digits.size() % 2 != 0 || !std::all_of(digits.begin(), digits.end(), isDigit)) return false;
  for (std::size_t i = 0; i < digits.size(); i += 2) {
    key->push_back(static_cast<char>(std::stoi(digits.substr(i, 2), nullptr, 16)));
  }
  return true;
}

// The key that the user names, or the built-in one. Answers an exit code where there is none, after
// telling why, and without a word of the key.
std::optional<int> FindKey(const Options& options, Key* key) {
  if (!options.keyFile.empty()) {
    InputFile file;
    char bytes[kLongestKey + 1];
    std::size_t size = 1;
    SystemError error = file.Open(options.keyFile);
    while (error == 0 && size > 0 && key->size() < sizeof bytes) {
      error = file.Read(bytes, sizeof bytes - key->size(), &size);
      key->append(bytes, size);
    }
    if (error != 0) {
      PrintMessage(options.keyFile + ": the key cannot be read: " + SystemErrorText(error) +
                   ": check the name and that you may read it");
      return kBadFile;
    }
  } else if (!options.keyDigits.empty()) {
    if (!KeyFromDigits(options.keyDigits, key)) {
      PrintMessage("--key-hex: is no even number of hexadecimal digits: check what was given");
      return kBadUsage;
    }
  } else {
    const SystemError error = BuiltInKey(key);
    if (error != 0 || key->empty()) {
      PrintMessage("internal: the built-in key cannot be looked up in a directory of its own" +
                   (error == 0 ? std::string() : ": " + SystemErrorText(error)) +
                   ": check the directory for temporary files");
      return kNoMemory;
    }
  }
  if (key->size() >= kShortestKey && key->size() <= kLongestKey) return {};
  PrintMessage("the key has " +
               (key->size() > kLongestKey ? "more than 56" : std::to_string(key->size())) +
               " bytes: give one of 4 to 56; in a key file a line end counts too");
  return kBadUsage;
}

// 0 where one is not known.
std::uint64_t SizeOfAll(const std::vector<std::string>& files) {
  InputFile input;
  input.OpenStandardInput();
  std::uint64_t total = 0;
  for (const std::string& name : files) {
    const auto size = name == "-" ? input.Size() : SizeOfFileAt(name);
    if (!size) return 0;
    total += *size;
  }
  return total;
}

void PrintTimes(const Times& times, double seconds, std::uint64_t bytes, int jobs) {
  const double all = std::max(seconds * jobs, 1e-9);
  const auto percent = [all](double part) { return 100 * part / all; };
  const double other = all - times.reading - times.library - times.writing - times.counting;
  std::fprintf(stderr,
               "bfbr: times: reading %.1f %%, cipher and digest %.1f %%, writing %.1f %%, "
               "counting blocks %.1f %%, other %.1f %%; %.3f s, %.1f MB, %.0f MB/s, jobs: %d\n",
               percent(times.reading), percent(times.library), percent(times.writing),
               percent(times.counting), percent(std::max(other, 0.0)), seconds,
               static_cast<double>(bytes) / 1e6, static_cast<double>(bytes) / 1e6 / seconds, jobs);
}

int RunFiles(const Options& options) {
  Key key;
  // Encoding needs it only to tell the digest.
  if (options.NeedsKey() || (options.command == Command::kEncode && options.isJson)) {
    if (const auto exitCode = FindKey(options, &key)) return *exitCode;
  }
  if (!options.outputDirectory.empty()) {
    if (const SystemError error = MakeDirectory(options.outputDirectory); error != 0) {
      PrintMessage(options.outputDirectory + ": cannot be made: " + SystemErrorText(error) +
                   ": check the name");
      return kBadFile;
    }
  }

  const int jobs = static_cast<int>(
      std::min<std::size_t>(static_cast<std::size_t>(options.jobs), options.files.size()));
  Advance advance;
  Reporter reporter(options, advance);
  // Now rather than when all the work is done.
  if (!reporter.OpenReport()) return kBadFile;
  if (reporter.ShowsProgress()) reporter.SetTotalBytes(SizeOfAll(options.files));
  std::atomic<std::size_t> next{0};
  Mutex mutex;
  Times times;
  std::uint64_t bytes = 0;
  const auto work = [&] {
    FileWorker worker(options, key, &advance);
    for (;;) {
      const std::size_t number = next++;
      if (number >= options.files.size()) break;
      reporter.Tell(number, worker.Work(options.files[number]));
    }
    const std::lock_guard<Mutex> guard(mutex);
    times.reading += worker.TimesSpent().reading;
    times.library += worker.TimesSpent().library;
    times.writing += worker.TimesSpent().writing;
    times.counting += worker.TimesSpent().counting;
    bytes += worker.BytesRead();
  };
  double interruptedAt = -1;
  const auto watch = [&] {
    reporter.ShowProgress();
    if (!Interrupted()) return;
    const double now = reporter.SecondsSinceBegin();
    if (interruptedAt < 0) interruptedAt = now;
    // Workers notice by themselves, unless they wait for a pipe or for the library.
    constexpr double kPatience = 0.3;
    if (now - interruptedAt < kPatience) return;
    reporter.TellOfTheRest();
    const int exitCode = reporter.Finish();
    AbandonOutputFiles();
    EndAtOnce(exitCode);
  };
  RunInThreads(jobs, work, watch);
  const int exitCode = reporter.Finish();
  if (options.showsTimes) PrintTimes(times, reporter.SecondsSinceBegin(), bytes, jobs);
  return exitCode;
}

int Run(int argumentCount, char** arguments) {
  KeepClosedStreamsClosed();
  Options options;
  if (const auto exitCode = ParseOptions(argumentCount, arguments, &options)) return *exitCode;
  WatchForInterrupts();
  if (options.command == Command::kBench) {
    Key key;
    if (const auto exitCode = FindKey(options, &key)) return *exitCode;
    return MeasureRates(options, key);
  }
  return RunFiles(options);
}

}  // namespace
}  // namespace launcher

int main(int argumentCount, char** arguments) {
  try {
    return launcher::Run(argumentCount, arguments);
  } catch (const std::bad_alloc&) {
    std::fputs("bfbr: memory: ran out: close other programs or lower --jobs\n", stderr);
  } catch (const std::exception& error) {
    std::fprintf(stderr, "bfbr: internal: %s: report it\n", error.what());
  }
  return launcher::kNoMemory;
}
