// The command line.

#ifndef LAUNCHER_TOOLS_BFBR_OPTIONS_H_
#define LAUNCHER_TOOLS_BFBR_OPTIONS_H_

#include <optional>
#include <string>
#include <vector>

namespace launcher {

enum class Command { kEncode, kDecode, kVerify, kInspect, kMark, kBench };
enum class Marker { kKeep, kStrip, kRequire };
enum class Progress { kAuto, kAlways, kNever };

// What the program ends with. Of several files the gravest counts, which is the highest.
enum ExitCode { kFine = 0, kBadData = 1, kBadUsage = 2, kBadFile = 3, kNoMemory = 4 };

struct Options {
  Command command = Command::kEncode;
  std::vector<std::string> files;  // "-" is the standard input; never empty once parsed
  std::string filesFrom;
  std::string output;  // "-" is the standard output, by the user's word; empty if not given
  std::string outputDirectory;
  int jobs = 0;
  bool replaces = false;
  bool isSafe = false;
  bool isJson = false;
  bool isQuiet = false;
  bool showsTimes = false;
  Progress progress = Progress::kAuto;
  Marker marker = Marker::kKeep;
  std::string keyFile;
  std::string keyDigits;
  double seconds = 1;

  // Whether a file is made of each file.
  bool MakesFiles() const {
    return command == Command::kEncode || command == Command::kDecode || command == Command::kMark;
  }
  // Whether what is made goes to the standard output.
  bool WritesDataToOutput() const {
    return MakesFiles() && outputDirectory.empty() && (output.empty() || output == "-");
  }
  bool NeedsKey() const { return command != Command::kEncode && command != Command::kMark; }
};

// Reads the command line and the list of files. Answers the exit code where the program is to end
// here: it has printed help or what is wrong.
std::optional<int> ParseOptions(int argumentCount, char** arguments, Options* options);

// Prints "bfbr: TEXT" and a line end to the standard error stream.
void PrintMessage(const std::string& text);

}  // namespace launcher

#endif  // LAUNCHER_TOOLS_BFBR_OPTIONS_H_
