#include "doctor/bundle.h"

#include <cstdio>
#include <ctime>
#include <exception>
#include <filesystem>
#include <stdexcept>
#include <string>
#include <system_error>
#include <utility>
#include <vector>

#include "doctor/config_text.h"
#include "doctor/file_bytes.h"
#include "doctor/zip_file.h"
#include "launcher_dll.h"
#include "support/output_file.h"
#include "support/terminal.h"

namespace launcher::doctor {
namespace {

namespace fs = std::filesystem;

using Files = std::vector<std::pair<std::string, std::string>>;

std::string TimeNow() {
  const std::time_t now = std::time(nullptr);
  char text[32] = "";
  // The one thread of this program makes the plain call safe.
  const std::tm* const parts = std::gmtime(&now);
  if (parts != nullptr) std::strftime(text, sizeof text, "%Y-%m-%d %H:%M UTC", parts);
  return text;
}

// A settings file as it may leave the machine. UTF-16 is turned into UTF-8, as otherwise the user's
// name would not be found in it.
std::string SettingsToSend(const std::string& bytes) {
  return WithoutUser(bytes.find('\0') == std::string::npos ? bytes : ReadConfigText(bytes).text);
}

// What a terminal shows of a text from elsewhere: no control characters.
std::string Harmless(std::string text) {
  for (char& c : text) {
    const auto byte = static_cast<unsigned char>(c);
    if ((byte < 0x20 && c != '\n' && c != '\t' && c != '\r') || byte == 0x7F) c = '?';
  }
  if (!text.empty() && text.back() != '\n') text += '\n';
  return text;
}

bool UserAgrees(const std::string& question) {
  std::printf("%s [y/N] ", question.c_str());
  std::fflush(stdout);
  const int answer = std::getchar();
  return answer == 'y' || answer == 'Y';
}

int Refuse(const std::string& why) {
  std::fprintf(stderr, "doctor: %s; nothing was written\n", why.c_str());
  return kBrokenStatus;
}

}  // namespace

int WriteBundle(const Subject& subject, const BundleOptions& options) {
  std::error_code ignored;
  if (!options.replaces && fs::exists(fs::symlink_status(options.output, ignored))) {
    return Refuse(WithoutUser(options.output.u8string()) +
                  " is there already: take another name, or --force");
  }
  const bool canAsk = IsTerminal(Stream::kInput) && IsTerminal(Stream::kOutput);
  if (!options.isAgreed && !canAsk) {
    return Refuse("there is no terminal to ask at: --yes agrees beforehand");
  }

  Report report;
  CheckAll(subject, report);
  Files files = {
      {"report.txt", report.Text()},
      {"report.json", report.JsonText()},
      {"versions.txt", "doctor " QX_VERSION "\n" + SystemName() + '\n' + TimeNow() + '\n'}};
  try {
    files.emplace_back("config.json", SettingsToSend(ReadBytes(subject.config, kLargestConfig)));
  } catch (const std::exception&) {
    // The report says that there is none, or why it cannot be read.
  }
  for (const auto& [name, content] : files) {
    std::printf("---- %s\n%s", name.c_str(), Harmless(content).c_str());
  }
  std::printf("----\n");
  if (!OutputIsWhole()) {
    return Refuse(
        "what would be written cannot be shown: the output is closed, or its disk is full");
  }
  const std::string output = WithoutUser(options.output.u8string());
  if (!options.isAgreed && !UserAgrees("Write this to " + output + "?")) {
    return Refuse("as you wish");
  }
  try {
    const std::string zip = MakeZip(files);
    const SystemError error = WriteOutputFile(
        NarrowPath(options.output), zip,
        options.replaces ? NewFile::Existing::kReplaced : NewFile::Existing::kStays);
    if (error != 0) return Refuse(output + ": " + SystemErrorText(error));
  } catch (const std::exception& failure) {
    return Refuse(output + ": " + failure.what());
  }
  std::printf("wrote %s\n", output.c_str());
  return report.ExitStatus();
}

}  // namespace launcher::doctor
