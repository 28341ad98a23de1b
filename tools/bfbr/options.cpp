#include "bfbr/options.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstdio>
#include <cstring>
#include <iostream>
#include <set>

#include "launcher_dll.h"
#include "support/process.h"
#include "support/terminal.h"

namespace launcher {
namespace {

namespace fs = std::filesystem;

const char* const kExitCodes =
    "Exit codes: 0 fine; 1 the data is bad; 2 usage; 3 a file could not be read or written;\n"
    "4 memory or internal; 130 interrupted.";

const struct CommandRow {
  Command command;
  const char* name;
  const char* description;
  const char* example;
} kCommands[] = {
    {Command::kEncode, "encode", "Make a container of each file",
     "bfbr encode level.dat -o level.bfbr\n  bfbr encode -r --out-dir packed data"},
    {Command::kDecode, "decode", "Write a container's payload if its digest is right",
     "bfbr decode level.bfbr -o level.dat\n  bfbr decode --marker=require <level.bfbr | less"},
    {Command::kVerify, "verify", "Check containers, write no payload", "bfbr verify -r packed"},
    {Command::kInspect, "inspect", "Show what is known of containers",
     "bfbr inspect --json level.bfbr"},
    {Command::kMark, "mark", "Put the signature marker before the data",
     "bfbr mark script.txt | bfbr encode -o script.bfbr"},
};

void AddOptions(const CommandRow& row, CLI::App* command, Options* options,
                std::vector<std::string>* names) {
  // An empty value usually comes from a script's variable that is not set. If it counted as no
  // option, the built-in key would be used in place of the intended one.
  const CLI::Validator isNotEmpty(
      [](const std::string& text) {
        return std::string(text.empty() ? "is empty: give it a value or leave it out" : "");
      },
      "");
  const auto add = [&](const char* name, auto* value, const char* type, const char* description) {
    return command->add_option(name, *value, description)->check(isNotEmpty)->type_name(type);
  };
  const auto addWord = [&](const char* name, std::string* value, const char* type,
                           const std::vector<std::string>& words, const char* description) {
    add(name, value, type, description)->check(CLI::IsMember(words).description(""));
  };
  const bool makesFiles = row.command != Command::kVerify && row.command != Command::kInspect;
  command->callback([options, &row] { options->command = row.command; });
  add("FILE", names, "", "Files to work on; - or none: standard input");
  add("--files-from", &options->filesFrom, "LIST",
      "Read more names from this file, one a line; -: standard input");
  command->add_flag("-r,--recursive", options->isRecursive,
                    "Take the files in folders, and in the folders in them");
  add("-j,--jobs", &options->jobs, "N",
      "Files worked on at the same time (default: the processors, at most 8)")
      ->check(CLI::Range(1, 256).description(""));
  command->add_flag("--json", options->isJson, "Print one JSON object a line for each file");
  addWord("--progress", &options->progress, "WHEN", {"auto", "always", "never"},
          "auto, always or never (default: auto)");
  command->add_flag("-q,--quiet", options->isQuiet, "Print errors only");
  command->add_flag("--force", options->replaces, "Replace existing files");
  auto* const output = add("-o,--output", &options->output, "OUT",
                           makesFiles ? "Write to this file; -: standard output, even a terminal"
                                      : "Write the report to this file");
  if (makesFiles) {
    add("--out-dir", &options->outputDirectory, "DIR",
        "Write each file into this directory, under its own name")
        ->excludes(output);
    command->add_flag("--sync", options->isSafe, "Flush each file to the disk before it appears");
  }
  if (row.command == Command::kEncode || row.command == Command::kMark) return;
  auto* const file =
      add("--key-file", &options->keyFile, "KEY", "The key is all bytes of this file, 4 to 56");
  add("--key-hex", &options->keyDigits, "DIGITS",
      "The key in hexadecimal digits; the list of processes shows it")
      ->excludes(file);
  if (makesFiles) {
    addWord("--marker", &options->marker, "HOW", {"keep", "require", "strip"},
            "The signature marker: keep (default), strip, or require and strip");
  } else {
    addWord("--marker", &options->marker, "HOW", {"keep", "require"},
            "The signature marker: keep (default) or require");
  }
}

int RefuseUsage(const std::string& text) {
  PrintMessage(text);
  return kBadUsage;
}

// Names only the unknown options, without their values. The parser's own message repeats all words
// that it does not know, and a word after an unknown option can be a key.
std::string TextOf(const CLI::ParseError& error, const CLI::App& app) {
  std::string text;
  for (const std::string& word : app.remaining(true)) {
    if (word.size() < 2 || word[0] != '-') continue;
    text += ' ' + word.substr(0, word[1] == '-' ? word.find('=') : 2);
  }
  return text.empty() ? error.what() : "unknown option" + text;
}

std::string PathIn(const std::string& directory, const std::string& name) {
  return NarrowText(InputPath(directory) / PathOf(name));
}

// Adds the lines of the list. Returns an exit code if it cannot be read.
std::optional<int> ReadList(const std::string& list, std::vector<std::string>* names) {
  const OwnedStream file = OpenInput(list);
  std::string name;
  for (int c = 0; file && c != EOF;) {
    c = std::fgetc(file.get());
    if (c != '\n' && c != EOF) {
      name += static_cast<char>(c);
      continue;
    }
    if (!name.empty() && name.back() == '\r') name.pop_back();
    if (!name.empty()) names->push_back(name);
    name.clear();
  }
  if (!file || std::ferror(file.get()) != 0) {
    PrintMessage(list + ": cannot be read: " + SystemErrorText(LastFileError()) +
                 ": check the name");
    return kBadFile;
  }
  if (names->empty()) return RefuseUsage(list + ": names no file: put one on each line");
  return {};
}

// Adds the files of a tree in the order of their names, each with its output path below --out-dir.
// Counts the links and devices that it skips.
void AddTree(const std::string& folder, const std::string& output, Options* options,
             std::size_t* skippedCount) {
  std::error_code error;
  std::set<std::string> names;
  for (fs::directory_iterator entry(InputPath(folder), error), end; !error && entry != end;
       entry.increment(error)) {
    names.insert(NarrowText(entry->path().filename()));
  }
  // Adds a folder that cannot be listed as a file: opening it fails, which is reported.
  if (error) options->items.push_back({folder, output});
  for (const std::string& name : names) {
    const std::string path = PathIn(folder, name);
    const fs::path place = InputPath(path);
    if (IsLink(place) || IsDevice(path)) {
      ++*skippedCount;
    } else if (!fs::is_directory(place, error)) {
      options->items.push_back({path, PathIn(output, name)});
    } else if (!fs::equivalent(place, InputPath(options->outputDirectory), error)) {
      // Does not enter --out-dir: the output of an earlier run is not input.
      AddTree(path, PathIn(output, name), options, skippedCount);
    }
  }
}

// Lists the files to work on, and checks what the parser cannot check.
std::optional<int> ListItems(std::vector<std::string> names, Options* options) {
  if (!options->filesFrom.empty()) {
    if (const auto exitCode = ReadList(options->filesFrom, &names)) return exitCode;
  }
  if (names.empty()) names.emplace_back("-");
  const std::string& directory = options->outputDirectory;
  const bool needsDirectory = options->MakesFiles() && directory.empty();
  auto readers = std::count(names.begin(), names.end(), "-");
  for (const std::string& other : {options->filesFrom, options->keyFile}) readers += other == "-";
  if (readers > 1) {
    return RefuseUsage("standard input: cannot be read twice: name it once");
  }
  if (needsDirectory && (names.size() > 1 || options->isRecursive)) {
    return RefuseUsage("several files need a directory for the results: add --out-dir DIR");
  }
  std::size_t skippedCount = 0;
  for (const std::string& name : names) {
    if (name == "-" && !directory.empty()) {
      return RefuseUsage("standard input: has no name to use in --out-dir: use -o FILE");
    }
    std::error_code ignored;
    const fs::path path = InputPath(name);
    // A folder such as ".." has no name of its own.
    const std::string own = NarrowText(path.filename());
    const bool hasName = !own.empty() && own != "." && own != "..";
    std::string output = options->output == "-" ? "" : options->output;
    if (!directory.empty()) output = hasName ? PathIn(directory, own) : directory;
    if (options->isRecursive && fs::is_directory(path, ignored)) {
      AddTree(name, output, options, &skippedCount);
    } else {
      options->items.push_back({name, output});
    }
  }
  if (options->items.empty()) return RefuseUsage(names[0] + ": has no files in it: check the name");
  if (skippedCount > 0 && !options->isQuiet) {
    PrintMessage("warning: " + std::to_string(skippedCount) +
                 " links or devices in folders are left out: name them if they are wanted");
  }
  std::set<std::string> outputs;
  for (Item& item : options->items) {
    if (!options->MakesFiles()) item.output.clear();
    if (!directory.empty() && !outputs.insert(item.output).second) {
      return RefuseUsage(item.name + ": another file has the same name, and both would be " +
                         item.output + ": work on them in two runs, or on their folder with -r");
    }
  }
  if (options->WritesDataToOutput() && options->output.empty() && IsTerminal(Stream::kOutput)) {
    return RefuseUsage(
        "standard output: is a terminal, which data would disturb: name a file with -o, or insist "
        "with -o -");
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

fs::path InputPath(const std::string& name) {
  const fs::path path = PathOf(name);
  return path.has_filename() ? path : path.parent_path();
}

std::optional<std::uint64_t> SizeOf(const std::string& name) {
  std::error_code error;
  const fs::path path = InputPath(name);
  if (name == "-" || !fs::is_regular_file(path, error)) return {};
  const std::uint64_t size = fs::file_size(path, error);
  if (error) return {};
  return size;
}

OwnedStream OpenInput(const std::string& name) {
  return OwnedStream(name == "-" ? stdin : std::fopen(name.c_str(), "rb"));
}

std::optional<int> ParseOptions(int argumentCount, char** arguments, Options* options) {
  CLI::App app("Makes, opens and checks BFBR containers.\n", "bfbr");
  app.set_version_flag("-V,--version", "bfbr " QX_VERSION, "Print the version and exit");
  app.set_help_flag("-h,--help", "Print this help and exit");
  app.require_subcommand(1);
  app.get_formatter()->column_width(28);
  app.footer(std::string("bfbr help COMMAND shows a command's options and has an example.\n") +
             kExitCodes);
  std::vector<std::string> names;
  for (const CommandRow& row : kCommands) {
    CLI::App* const command = app.add_subcommand(row.name, row.description);
    command->set_help_flag("-h,--help", "Print this help and exit");
    command->footer(std::string("Example:\n  ") + row.example + "\n\n" + kExitCodes);
    AddOptions(row, command, options, &names);
  }

  std::vector<std::string> words(arguments + 1, arguments + argumentCount);
  if (!words.empty() && words[0] == "help") {
    words.erase(words.begin());
    words.emplace_back("--help");
  }
  if (words.empty()) {
    std::cerr << app.help();
    return kBadUsage;
  }
  const auto isCommand = [&](const CommandRow& row) { return words[0] == row.name; };
  if (words[0][0] != '-' && std::none_of(std::begin(kCommands), std::end(kCommands), isCommand)) {
    return RefuseUsage("command line: \"" + words[0] + "\" is not a command: try bfbr --help");
  }
  try {
    std::reverse(words.begin(), words.end());  // the parser expects the last word first
    app.parse(words);
  } catch (const CLI::Success& wanted) {
    app.exit(wanted);
    std::cout.flush();
    return std::cout ? kFine : kBadFile;
  } catch (const CLI::ParseError& error) {
    return RefuseUsage("command line: " + TextOf(error, app) + ": try bfbr --help");
  }
  return ListItems(std::move(names), options);
}

}  // namespace launcher
