#include "bfbr/options.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstdio>
#include <iostream>
#include <map>
#include <set>

#include "launcher_dll.h"
#include "support/input_file.h"
#include "support/terminal.h"
#include "support/threads.h"

namespace launcher {
namespace {

const char* const kExitCodes =
    "Exit codes: 0 fine; 1 the data is bad; 2 usage; 3 a file could not be read or written;\n"
    "4 memory or internal; 130 interrupted.";

// An empty text is a variable of a script that is not set. Taken as an option not given, it would
// have the built-in key used in place of another.
CLI::Validator IsNotEmpty() {
  return CLI::Validator(
      [](const std::string& text) {
        return text.empty() ? std::string("is empty: give it a value or leave it out")
                            : std::string();
      },
      "");
}

// Takes one of these words, and nothing but a word.
template <typename Value>
CLI::Validator OneOf(const std::map<std::string, Value>& words) {
  return CLI::Validator(
      [words](std::string& text) {
        const auto word = words.find(text);
        if (word != words.end()) {
          text = std::to_string(static_cast<int>(word->second));
          return std::string();
        }
        std::string known;
        for (const auto& entry : words) known += (known.empty() ? "" : ", ") + entry.first;
        return "\"" + text + "\" is none of " + known;
      },
      "");
}

void AddInputs(CLI::App* command, Options* options) {
  command->add_option("FILE", options->files, "Files to work on; - or none: standard input")
      ->check(IsNotEmpty())
      ->type_name("");
  command
      ->add_option("--files-from", options->filesFrom,
                   "Read more names from this file, one a line; -: standard input")
      ->check(IsNotEmpty())
      ->type_name("LIST");
  command
      ->add_option("-j,--jobs", options->jobs,
                   "Files worked on at the same time (default: the processors, at most 8)")
      ->check(CLI::Range(1, 256).description(""))
      ->type_name("N");
  command->add_flag("--json", options->isJson, "Print one JSON object a line for each file");
  const std::map<std::string, Progress> words = {
      {"auto", Progress::kAuto}, {"always", Progress::kAlways}, {"never", Progress::kNever}};
  command->add_option("--progress", options->progress, "auto, always or never (default: auto)")
      ->transform(OneOf(words))
      ->type_name("WHEN");
  command->add_flag("--timing", options->showsTimes, "Print where the time went");
  command->add_flag("-q,--quiet", options->isQuiet, "Print errors only");
  command->add_flag("--force", options->replaces, "Replace files that are there");
}

void AddOutputs(CLI::App* command, Options* options) {
  auto* const output = command
                           ->add_option("-o,--output", options->output,
                                        "Write to this file; -: standard output, even a terminal")
                           ->check(IsNotEmpty())
                           ->type_name("OUT");
  command
      ->add_option("--out-dir", options->outputDirectory,
                   "Write each file into this directory, under its own name")
      ->check(IsNotEmpty())
      ->type_name("DIR")
      ->excludes(output);
  command->add_flag("--sync", options->isSafe, "Have the disk hold each file before it appears");
}

void AddReportFile(CLI::App* command, Options* options) {
  command->add_option("-o,--output", options->output, "Write the report to this file")
      ->check(IsNotEmpty())
      ->type_name("OUT");
}

void AddKey(CLI::App* command, Options* options) {
  auto* const file = command
                         ->add_option("--key-file", options->keyFile,
                                      "The key is this file's bytes, all of them, 4 to 56")
                         ->check(IsNotEmpty())
                         ->type_name("KEY");
  command
      ->add_option("--key-hex", options->keyDigits,
                   "The key in hexadecimal digits; who lists processes sees it")
      ->check(IsNotEmpty())
      ->type_name("DIGITS")
      ->excludes(file);
}

void AddMarker(CLI::App* command, Options* options, bool delivers) {
  std::map<std::string, Marker> words = {{"keep", Marker::kKeep}, {"require", Marker::kRequire}};
  if (delivers) words.emplace("strip", Marker::kStrip);
  command
      ->add_option("--marker", options->marker,
                   delivers ? "The signature marker: keep (default), strip, or require and strip"
                            : "The signature marker: keep (default, as it comes) or require")
      ->transform(OneOf(words))
      ->type_name("HOW");
}

// What the parser says names the words that it does not know, and one may be a key: only what looks
// like an option is repeated, and only up to its value.
std::string TextOf(const CLI::ParseError& error, const CLI::App& app) {
  if (dynamic_cast<const CLI::ExtrasError*>(&error) == nullptr) return error.what();
  std::vector<std::string> words = app.remaining(true);
  std::string text;
  for (const std::string& word : words) {
    if (word.size() > 1 && word[0] == '-') text += ' ' + word.substr(0, word.find('='));
  }
  return text.empty() ? "there are words that the command does not take"
                      : "the command has no option" + text;
}

std::optional<int> RefuseUsage(const std::string& text) {
  PrintMessage(text);
  return kBadUsage;
}

// Adds the names in the list. Answers an exit code where it cannot be read.
std::optional<int> ReadList(Options* options) {
  const std::string& list = options->filesFrom;
  InputFile file;
  SystemError error = 0;
  if (list == "-") {
    file.OpenStandardInput();
  } else {
    error = file.Open(list);
  }
  std::string text;
  std::vector<char> piece(1 << 16);
  for (std::size_t size = 1; error == 0 && size > 0;) {
    error = file.Read(piece.data(), piece.size(), &size);
    text.append(piece.data(), size);
  }
  if (error != 0) {
    PrintMessage(list + ": cannot be read: " + SystemErrorText(error) + ": check the name");
    return kBadFile;
  }
  for (std::size_t begin = 0; begin < text.size();) {
    const std::size_t end = std::min(text.find('\n', begin), text.size());
    std::string name = text.substr(begin, end - begin);
    if (!name.empty() && name.back() == '\r') name.pop_back();
    if (!name.empty()) options->files.push_back(name);
    begin = end + 1;
  }
  if (options->files.empty()) {
    return RefuseUsage(list + ": names no file: put one on each line");
  }
  return {};
}

// What the parser cannot know.
std::optional<int> CheckFiles(Options* options) {
  if (!options->filesFrom.empty()) {
    if (const auto exitCode = ReadList(options)) return exitCode;
  }
  std::vector<std::string>& files = options->files;
  if (files.empty()) files.emplace_back("-");
  const auto inputs = std::count(files.begin(), files.end(), "-");
  if (inputs > 1 || (inputs == 1 && options->filesFrom == "-")) {
    return RefuseUsage("standard input: cannot be read twice: name it once");
  }
  if (options->MakesFiles() && options->outputDirectory.empty() && files.size() > 1) {
    return RefuseUsage("several files need a place for what is made of them: add --out-dir DIR");
  }
  if (!options->outputDirectory.empty()) {
    std::set<std::string> names;
    for (const std::string& file : files) {
      if (file == "-") {
        return RefuseUsage("standard input: has no name to go by in --out-dir: use -o FILE");
      }
      if (!names.insert(FileNameOf(file)).second) {
        return RefuseUsage(file + ": another file has the same name, and both would be " +
                           PathIn(options->outputDirectory, FileNameOf(file)) +
                           ": work on them in two runs");
      }
    }
  }
  if (options->WritesDataToOutput() && options->output.empty() && IsTerminal(Stream::kOutput)) {
    return RefuseUsage(
        "standard output: is a terminal, and the data would garble it: name a file with -o, or "
        "insist with -o -");
  }
  if (options->jobs == 0) options->jobs = std::min(ProcessorCount(), 8);
  return {};
}

}  // namespace

void PrintMessage(const std::string& text) {
  const bool isRed = ShowsColour(Stream::kError);
  std::fprintf(stderr, "%sbfbr:%s %s\n", isRed ? "\033[31m" : "", isRed ? "\033[0m" : "",
               text.c_str());
}

std::optional<int> ParseOptions(int argumentCount, char** arguments, Options* options) {
  CLI::App app("Makes BFBR containers, opens and checks them.\n", "bfbr");
  app.set_version_flag("--version", "bfbr " QX_VERSION, "Print the version and exit");
  app.set_help_flag("-h,--help", "Print this help and exit");
  app.require_subcommand(1);
  app.get_formatter()->column_width(28);
  app.footer(std::string("bfbr COMMAND --help tells a command's options and has an example.\n") +
             kExitCodes);

  const struct {
    Command command;
    const char* name;
    const char* description;
    const char* example;
  } commands[] = {
      {Command::kEncode, "encode", "Make a container of each file",
       "bfbr encode level.dat -o level.bfbr\n  bfbr encode --out-dir packed data/*.txt"},
      {Command::kDecode, "decode", "Deliver a container's payload if its digest holds",
       "bfbr decode level.bfbr -o level.dat\n  bfbr decode --marker=require <level.bfbr | less"},
      {Command::kVerify, "verify", "Check containers, deliver nothing",
       "bfbr verify --jobs 4 packed/*"},
      {Command::kInspect, "inspect", "Tell what is known of containers",
       "bfbr inspect --json level.bfbr"},
      {Command::kMark, "mark", "Put the signature marker before the data",
       "bfbr mark script.txt | bfbr encode -o script.bfbr"},
      {Command::kBench, "bench", "Measure the library on this machine", "bfbr bench --seconds 3"},
  };
  for (const auto& row : commands) {
    CLI::App* const command = app.add_subcommand(row.name, row.description);
    command->set_help_flag("-h,--help", "Print this help and exit");
    command->footer(std::string("Example:\n  ") + row.example + "\n\n" + kExitCodes);
    command->callback([options, &row] { options->command = row.command; });
    switch (row.command) {
      case Command::kBench:
        command->add_option("--seconds", options->seconds, "Time for each figure (default: 1)")
            ->check(CLI::Range(0.01, 3600.0).description(""))
            ->type_name("N");
        command->add_flag("--json", options->isJson, "Print one JSON object a line");
        break;
      case Command::kEncode:
      case Command::kMark:
        AddInputs(command, options);
        AddOutputs(command, options);
        break;
      case Command::kDecode:
        AddInputs(command, options);
        AddOutputs(command, options);
        AddKey(command, options);
        AddMarker(command, options, true);
        break;
      case Command::kVerify:
      case Command::kInspect:
        AddInputs(command, options);
        AddReportFile(command, options);
        AddKey(command, options);
        AddMarker(command, options, false);
        break;
    }
  }

  try {
    app.parse(argumentCount, arguments);
  } catch (const CLI::Success& wanted) {
    app.exit(wanted);
    std::cout.flush();
    return std::cout ? kFine : kBadFile;
  } catch (const CLI::ParseError& error) {
    if (argumentCount < 2) {
      std::cerr << app.help();
      return kBadUsage;
    }
    return RefuseUsage("command line: " + TextOf(error, app) + ": try bfbr --help");
  }
  if (options->command == Command::kBench) return {};
  return CheckFiles(options);
}

}  // namespace launcher
