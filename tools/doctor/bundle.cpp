// `doctor bundle`.

#include <cctype>
#include <cstdio>
#include <ctime>
#include <exception>
#include <filesystem>
#include <iomanip>
#include <sstream>
#include <string>
#include <system_error>
#include <vector>

#include "doctor/commands.h"
#include "doctor/json_scanner.h"
#include "doctor/machine.h"
#include "support/output_file.h"
#include "support/terminal.h"

namespace launcher::doctor {
namespace {

namespace fs = std::filesystem;

// The settings without secrets, and without control characters, which could control a terminal.
std::string SettingsToSend(const Subject& subject) {
  try {
    std::vector<std::string> ignored;
    std::string text = WithoutUser(
        WithoutSecrets(Utf8Text(ReadBytes(subject.config, kLargestConfig), ignored)), false);
    for (char& c : text) {
      if (std::iscntrl(static_cast<unsigned char>(c)) != 0 && c != '\n' && c != '\t') c = ' ';
    }
    return text;
  } catch (const std::exception&) {
    return "(none)";  // the report says why
  }
}

}  // namespace

int WriteBundle(const Subject& subject, const BundleOptions& options) {
  const std::string output = WithoutUser(options.output.u8string());
  std::error_code ignored;
  if (!options.replaces && fs::exists(fs::symlink_status(options.output, ignored))) {
    return Refuse(output + " exists already: choose another name, or add --force");
  }
  if (!options.isAgreed && !(IsTerminal(Stream::kInput) && IsTerminal(Stream::kOutput))) {
    return Refuse("there is no terminal to ask the user: add --yes to agree");
  }

  Report report;
  CheckAll(subject, report);
  std::ostringstream content;
  const std::time_t now = std::time(nullptr);
  content << "Report of doctor, " << std::put_time(std::gmtime(&now), "%Y-%m-%d %H:%M UTC\n\n")
          << report.Text() << "\nThe settings file, with stars for secrets:\n\n"
          << SettingsToSend(subject) << '\n';
  const std::string text = content.str();
  std::printf("%s----\n", text.c_str());
  if (!OutputIsWhole()) {
    return Refuse("the report cannot be shown: the output is closed, or its disk is full");
  }
  if (!options.isAgreed) {
    std::printf("Write this to %s? [y/N] ", output.c_str());
    std::fflush(stdout);
    if (std::tolower(std::getchar()) != 'y') return Refuse("you did not agree");
  }
  const SystemError error =
      WriteOutputFile(NarrowPath(options.output), text,
                      options.replaces ? NewFile::Existing::kReplaced : NewFile::Existing::kStays);
  if (error != 0) return Refuse(output + ": " + SystemErrorText(error));
  std::printf("wrote %s\n", output.c_str());
  return report.ExitStatus();
}

}  // namespace launcher::doctor
