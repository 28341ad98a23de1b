// doctor: checks an installed LauncherDll, its settings and what it needs.

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstdio>
#include <exception>
#include <filesystem>
#include <stdexcept>
#include <string>
#include <vector>

#include "doctor/checkup.h"
#include "doctor/commands.h"
#include "doctor/export_list.h"
#include "doctor/finding.h"
#include "doctor/library_child.h"
#include "doctor/machine.h"
#include "launcher_dll.h"
#include "support/terminal.h"

namespace launcher::doctor {
namespace {

namespace fs = std::filesystem;

struct Options {
  std::string library;
  std::string config = "config.json";
  bool hasConfig = false;  // whether the user named it
  bool isJson = false;
  bool isVerbose = false;
  bool isDryRun = false;
  std::string exportName;
  std::string result;
  std::string output;
  bool isAgreed = false;
  bool replaces = false;
};

template <class CheckUp>
int RunCheckUp(const Options& options, CheckUp checkUp) {
  const bool isColoured = ShowsColour(Stream::kOutput);
  Report report([&](const Json& finding) {
    if (options.isJson) return;
    std::fputs(FindingText(finding, isColoured, options.isVerbose).c_str(), stdout);
    std::fflush(stdout);
  });
  checkUp(report);
  std::fputs((options.isJson ? report.JsonText() : report.Summary()).c_str(), stdout);
  return report.ExitStatus();
}

void AddSubject(CLI::App& command, Options& options) {
  command.add_option("--library", options.library,
                     "The library's file, instead of the one that the launcher would get");
  command
      .add_option("--config", options.config,
                  "The settings file, instead of config.json in the current directory")
      ->each([&options](const std::string&) { options.hasConfig = true; });
}

void AddFormat(CLI::App& command, Options& options) {
  command.add_flag("--json", options.isJson, "Print the findings as one JSON object");
  command.add_flag("--verbose", options.isVerbose, "Add details for programmers");
}

int Run(std::vector<std::string> arguments) {
  Options options;
  CLI::App app(
      "Checks an installed LauncherDll, its settings file, Steam and the display. It changes "
      "nothing; only \"config repair\" changes the settings file, and \"bundle\" writes a "
      "report.\nExit status: 0 fine, 1 warnings, 2 broken, 3 wrong usage.",
      "doctor");
  app.set_version_flag("-V,--version", "doctor " QX_VERSION);
  app.require_subcommand(0, 1);
  AddSubject(app, options);
  AddFormat(app, options);

  CLI::App* const config = app.add_subcommand("config", "Checks or repairs the settings file");
  config->require_subcommand(1);
  CLI::App* const check = config->add_subcommand("check", "Shows what is wrong with it");
  AddSubject(*check, options);
  AddFormat(*check, options);
  CLI::App* const repair = config->add_subcommand(
      "repair", "Replaces a broken file and keeps it as FILE.broken-1 or -2 ...");
  AddSubject(*repair, options);
  repair->add_flag("--dry-run", options.isDryRun, "Show the changes, but do not make them");

  CLI::App* const explain =
      app.add_subcommand("explain", "Shows what a result of a function means, and what to do");
  explain->add_option("FUNCTION", options.exportName, "Its name, or a result of any function")
      ->required();
  explain->add_option("RESULT", options.result,
                      "The result, decimal or hexadecimal with 0x; without it, all results");

  CLI::App* const bundle = app.add_subcommand(
      "bundle", "Writes the report and the settings to a text file, without secrets");
  AddSubject(*bundle, options);
  bundle->add_option("OUT", options.output, "The text file")->required();
  bundle->add_flag("--yes", options.isAgreed, "Do not ask");
  bundle->add_flag("--force", options.replaces, "Replace the file if it exists");

  try {
    // CLI11 expects the last argument first.
    std::reverse(arguments.begin(), arguments.end());
    arguments.pop_back();
    app.parse(arguments);
  } catch (const CLI::ParseError& error) {
    return app.exit(error) == 0 ? 0 : kUsageStatus;
  }

  const Subject subject = {fs::u8path(options.library), fs::u8path(options.config)};
  std::error_code ignored;
  if (options.hasConfig && !fs::exists(subject.config, ignored)) {
    throw std::invalid_argument(options.config + " does not exist");
  }
  if (check->parsed()) {
    return RunCheckUp(options, [&](Report& report) { CheckConfig(subject, report); });
  }
  if (repair->parsed()) return RepairConfigFile(subject, options.isDryRun);
  if (explain->parsed()) {
    std::fputs(Explain(options.exportName, options.result).c_str(), stdout);
    return 0;
  }
  if (bundle->parsed()) {
    return WriteBundle(subject, {fs::u8path(options.output), options.isAgreed, options.replaces});
  }
  return RunCheckUp(options, [&](Report& report) { CheckAll(subject, report); });
}

}  // namespace
}  // namespace launcher::doctor

int main(int count, char** arguments) {
  using namespace launcher::doctor;
  launcher::KeepClosedStreamsClosed();
  int status = kBrokenStatus;
  try {
    const std::vector<std::string> words = Arguments(count, arguments);
    if (words.size() == 4 && words[1] == kChildArgument) return RunLibraryChild(words[2], words[3]);
    ShowUtf8();
    status = Run(words);
    if (!OutputIsWhole()) {
      std::fprintf(stderr,
                   "doctor: the output is closed, or its disk is full: not everything was shown\n");
      status = kBrokenStatus;
    }
  } catch (const std::exception& error) {
    std::fprintf(stderr, "doctor: %s\n", error.what());
    if (dynamic_cast<const std::invalid_argument*>(&error) != nullptr) status = kUsageStatus;
  }
  WaitForKeyAfterDoubleClick();
  return status;
}
