// bfbr: makes, opens and checks BFBR containers.

#include <algorithm>
#include <atomic>
#include <cctype>
#include <cstdio>
#include <cstring>
#include <exception>
#include <new>

#include "bfbr/container_file.h"
#include "bfbr/options.h"
#include "bfbr/reporter.h"
#include "launcher_dll.h"
#include "support/process.h"
#include "support/quiet_library.h"
#include "support/terminal.h"

namespace launcher {
namespace {

constexpr StringLabel kKeyLabel = 11000;
constexpr std::size_t kShortestKey = 4;
constexpr std::size_t kLongestKey = 56;

bool KeyFromDigits(const std::string& digits, Key* key) {
  const auto isDigit = [](unsigned char c) { return std::isxdigit(c) != 0; };
  if (digits.size() % 2 != 0 || !std::all_of(digits.begin(), digits.end(), isDigit)) return false;
  for (std::size_t i = 0; i < digits.size(); i += 2) {
    key->push_back(static_cast<std::uint8_t>(std::stoi(digits.substr(i, 2), nullptr, 16)));
  }
  return true;
}

// Writes the key that the user gave, or the built-in one. If there is none, prints a message, which
// never repeats a part of the key, and returns an exit code.
std::optional<int> FindKey(const Options& options, Key* key) {
  char bytes[kLongestKey + 1] = "";
  if (!options.keyFile.empty()) {
    const OwnedStream file = OpenInput(options.keyFile);
    if (file) key->assign(bytes, bytes + std::fread(bytes, 1, sizeof bytes, file.get()));
    if (!file || std::ferror(file.get()) != 0) {
      PrintMessage(options.keyFile + ": the key cannot be read: " +
                   SystemErrorText(LastFileError()) + ": check the name and that you may read it");
      return kBadFile;
    }
  } else if (!options.keyDigits.empty()) {
    if (!KeyFromDigits(options.keyDigits, key)) {
      PrintMessage("--key-hex: is not an even number of hexadecimal digits: check what was given");
      return kBadUsage;
    }
  } else {
    ResultCode result = QX_FAILED;
    const SystemError error =
        RunQuietly([&] { result = QX_LoadString(kKeyLabel, bytes, sizeof bytes); });
    if (error != 0 || result != QX_SUCCEEDED) {
      PrintMessage("internal: the built-in key cannot be looked up in a temporary directory" +
                   (error == 0 ? std::string() : ": " + SystemErrorText(error)) +
                   ": check the directory for temporary files");
      return kNoMemory;
    }
    key->assign(bytes, bytes + std::strlen(bytes));
  }
  if (key->size() >= kShortestKey && key->size() <= kLongestKey) return {};
  PrintMessage("the key has " +
               (key->size() > kLongestKey ? "more than 56" : std::to_string(key->size())) +
               " bytes: give one of 4 to 56; in a key file a line end counts too");
  return kBadUsage;
}

int Run(int argumentCount, char** arguments) {
  KeepClosedStreamsClosed();
  UseBinaryStreams();
  Options options;
  if (const auto exitCode = ParseOptions(argumentCount, arguments, &options)) return *exitCode;
  WatchForInterrupts();
  Key key;
  // Encoding needs the key only to print the digest.
  const bool needsKey =
      options.command == Command::kEncode ? options.isJson : options.command != Command::kMark;
  if (needsKey) {
    if (const auto exitCode = FindKey(options, &key)) return *exitCode;
  }
  if (!options.outputDirectory.empty()) {
    std::error_code error;
    std::filesystem::create_directories(InputPath(options.outputDirectory), error);
    if (error) {
      PrintMessage(options.outputDirectory + ": cannot be created: " + error.message() +
                   ": check the name");
      return kBadFile;
    }
  }

  Steps steps{0};
  Reporter reporter(options, steps);
  // Opens the report first, so that a failure shows before the work and not after it.
  if (!reporter.OpenReport()) return kBadFile;
  std::atomic<std::size_t> next{0};
  const auto work = [&] {
    FileWorker worker(options, key, &steps);
    while (!reporter.HasStopped() && !Interrupted()) {
      const std::size_t number = next++;
      if (number >= options.items.size()) break;
      reporter.Add(number, worker.Work(options.items[number]));
    }
  };
  double interruptedAt = -1;
  const auto watch = [&] {
    reporter.ShowProgress();
    if (!Interrupted()) return;
    const double now = reporter.SecondsSinceBegin();
    if (interruptedAt < 0) interruptedAt = now;
    // Workers notice an interrupt, unless they wait for a pipe or for the library.
    constexpr double kPatience = 0.3;
    if (now - interruptedAt < kPatience) return;
    const int exitCode = reporter.Finish();
    AbandonOutputFiles();
    EndAtOnce(exitCode);
  };
  const std::size_t jobs =
      std::min<std::size_t>(options.items.size(), static_cast<std::size_t>(options.jobs));
  RunInThreads(static_cast<int>(jobs), work, watch);
  return reporter.Finish();
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
