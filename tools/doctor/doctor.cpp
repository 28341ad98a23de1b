// doctor: a check-up of an installed LauncherDll, of its settings and of what it needs.

#include <unistd.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <csignal>
#include <cstdio>
#include <exception>
#include <filesystem>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include "doctor/bundle.h"
#include "doctor/checkup.h"
#include "doctor/config_repair.h"
#include "doctor/export_list.h"
#include "doctor/finding.h"
#include "doctor/machine.h"
#include "launcher_dll.h"
#include "support/terminal.h"

namespace launcher::doctor {
namespace {

namespace fs = std::filesystem;

struct Options {
  std::string library;
  std::string config = "config.json";
  bool isJson = false;
  bool isDryRun = false;
  std::string exportName;
  std::string result;
  std::string output;
  bool isAgreed = false;
  bool replaces = false;

  Subject SubjectOf() const { return {fs::u8path(library), fs::u8path(config)}; }
};

template <class CheckUp>
int RunCheckUp(const Options& options, CheckUp checkUp) {
  if (options.isJson) {
    Report report;
    checkUp(report);
    std::fputs(report.JsonText().c_str(), stdout);
    return report.ExitStatus();
  }
  const bool isColoured = ShowsColour(Stream::kOutput);
  Report report([=](const Finding& finding) {
    std::fputs(FindingText(finding, isColoured).c_str(), stdout);
    std::fflush(stdout);
  });
  checkUp(report);
  std::fputs(report.Summary().c_str(), stdout);
  return report.ExitStatus();
}

// The library's findings are of interest only where something is wrong with it.
void CheckConfigAlone(const Subject& subject, Report& report) {
  Report ofLibrary;
  const std::optional<LoadedLibrary> library = OpenLibrary(subject, ofLibrary);
  if (!library) {
    report.Add({"library", Status::ok,
                "the library was not asked, as it could not be loaded; doctor alone judges"});
  }
  CheckConfig(subject, library, report);
}

int RunExplain(const Options& options) {
  try {
    const std::optional<std::string> result =
        options.result.empty() ? std::nullopt : std::optional<std::string>(options.result);
    std::fputs(Explain(options.exportName, result).c_str(), stdout);
    return 0;
  } catch (const std::invalid_argument& error) {
    std::fprintf(stderr, "doctor: %s\n", error.what());
    return kUsageStatus;
  }
}

void AddSubject(CLI::App& command, Options& options) {
  command.add_option("--library", options.library,
                     "The library's file, in place of the one that the launcher would get");
  command.add_option("--config", options.config,
                     "The settings file; without it config.json in the current directory, which "
                     "should be the launcher's working directory");
}

int Run(std::vector<std::string> arguments) {
  Options options;
  CLI::App app(
      "Checks an installed LauncherDll, its settings file, Steam and the display, and changes "
      "nothing.\nExit status: 0 fine, 1 warnings, 2 broken, 3 wrong usage.",
      "doctor");
  app.set_version_flag("--version", "doctor " QX_VERSION);
  app.require_subcommand(0, 1);
  AddSubject(app, options);
  app.add_flag("--json", options.isJson, "The findings as one JSON object");

  CLI::App* const config = app.add_subcommand("config", "The settings file alone");
  config->require_subcommand(1);
  CLI::App* const check = config->add_subcommand("check", "Tells what is wrong with it");
  AddSubject(*check, options);
  check->add_flag("--json", options.isJson, "The findings as one JSON object");
  CLI::App* const repair = config->add_subcommand(
      "repair", "Mends it; the broken file is kept as FILE.broken-1 or with the next free number");
  AddSubject(*repair, options);
  repair->add_flag("--dry-run", options.isDryRun, "Show what would be done, and do nothing");

  CLI::App* const explain = app.add_subcommand("explain", "Tells what a result of an export means");
  explain->add_option("EXPORT", options.exportName, "Its name, decorated or not")->required();
  explain->add_option("RESULT", options.result,
                      "The result, decimal or hexadecimal with 0x; without it all are told");

  CLI::App* const bundle = app.add_subcommand(
      "bundle", "Writes the report and the settings to a ZIP file, without the user's name");
  AddSubject(*bundle, options);
  bundle->add_option("OUT", options.output, "The ZIP file")->required();
  bundle->add_flag("--yes", options.isAgreed, "Do not ask");
  bundle->add_flag("--force", options.replaces, "Replace the file if it is there");

  try {
    // CLI11 takes them from the back.
    std::reverse(arguments.begin(), arguments.end());
    arguments.pop_back();
    app.parse(arguments);
  } catch (const CLI::ParseError& error) {
    return app.exit(error) == 0 ? 0 : kUsageStatus;
  }

  const Subject subject = options.SubjectOf();
  if (check->parsed()) {
    return RunCheckUp(options, [&](Report& report) { CheckConfigAlone(subject, report); });
  }
  if (repair->parsed()) return RepairConfig(subject, options.isDryRun);
  if (explain->parsed()) return RunExplain(options);
  if (bundle->parsed()) {
    return WriteBundle(subject, {fs::u8path(options.output), options.isAgreed, options.replaces});
  }
  return RunCheckUp(options, [&](Report& report) { CheckAll(subject, report); });
}

// A library that crashes takes the process along, and its streams may be silenced at that time.
int crashMessageStream = 2;

void TellOfCrash(int /*signal*/) {
  static const char kText[] =
      "doctor: a call into the library crashed, and the check-up ends here: take the library from "
      "the package anew\n";
  const auto ignored = write(crashMessageStream, kText, sizeof kText - 1);
  static_cast<void>(ignored);
  _exit(kBrokenStatus);
}

void WatchForCrashes() {
  crashMessageStream = dup(crashMessageStream);
  for (const int signal : {SIGSEGV, SIGILL, SIGFPE, SIGABRT}) std::signal(signal, TellOfCrash);
}

}  // namespace
}  // namespace launcher::doctor

int main(int count, char** arguments) {
  launcher::KeepClosedStreamsClosed();
  launcher::doctor::WatchForCrashes();
  try {
    launcher::doctor::ShowUtf8();
    const int status = launcher::doctor::Run(launcher::doctor::Arguments(count, arguments));
    if (launcher::doctor::OutputIsWhole()) return status;
    std::fprintf(
        stderr,
        "doctor: the output is closed, or its disk is full: what was to be shown is lost\n");
    return launcher::doctor::kBrokenStatus;
  } catch (const std::exception& error) {
    std::fprintf(stderr, "doctor: %s\n", error.what());
    return launcher::doctor::kBrokenStatus;
  }
}
