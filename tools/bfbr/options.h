// The command line.

#ifndef LAUNCHER_TOOLS_BFBR_OPTIONS_H_
#define LAUNCHER_TOOLS_BFBR_OPTIONS_H_

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "support/output_file.h"

namespace launcher {

enum class Command { kEncode, kDecode, kVerify, kInspect, kMark };

// The program's exit codes. With several files the highest of them counts.
enum ExitCode { kFine = 0, kBadData = 1, kBadUsage = 2, kBadFile = 3, kNoMemory = 4 };

struct Item {
  std::string name;    // "-" is the standard input
  std::string output;  // empty for the standard output, or if no file is made
};

struct Options {
  Command command = Command::kEncode;
  std::vector<Item> items;  // not empty after ParseOptions
  std::string filesFrom;
  std::string output;  // "-" is the standard output, even a terminal; empty if not given
  std::string outputDirectory;
  int jobs = 0;
  bool isRecursive = false;
  bool replaces = false;
  bool isSafe = false;
  bool isJson = false;
  bool isQuiet = false;
  std::string progress = "auto";
  std::string marker = "keep";
  std::string keyFile;
  std::string keyDigits;

  // True if the command makes a file from each file.
  bool MakesFiles() const { return command != Command::kVerify && command != Command::kInspect; }
  NewFile::Existing Existing() const {
    return replaces ? NewFile::Existing::kReplaced : NewFile::Existing::kStays;
  }
  // True if the data go to the standard output.
  bool WritesDataToOutput() const {
    return MakesFiles() && outputDirectory.empty() && (output.empty() || output == "-");
  }
};

// Reads the command line and lists the files. If the program must end after that, prints help or
// what is wrong and returns the exit code.
std::optional<int> ParseOptions(int argumentCount, char** arguments, Options* options);

// Prints "bfbr: TEXT" and a line end to the standard error stream.
void PrintMessage(const std::string& text);

// An input's path, without a separator at its end.
std::filesystem::path InputPath(const std::string& name);

// The size of a file. Empty for a pipe, a device or the standard input.
std::optional<std::uint64_t> SizeOf(const std::string& name);

// Opens a file to read, or the standard input for "-". Null after a failure: see LastFileError.
OwnedStream OpenInput(const std::string& name);

}  // namespace launcher

#endif  // LAUNCHER_TOOLS_BFBR_OPTIONS_H_
