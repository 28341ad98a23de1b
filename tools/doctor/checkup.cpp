#include "doctor/checkup.h"

#include <cstdio>
#include <fstream>
#include <sstream>
#include <stdexcept>
#include <system_error>

#include "doctor/library_child.h"
#include "doctor/machine.h"
#include "launcher_dll.h"
#include "support/quiet_library.h"

namespace launcher::doctor {
namespace {

namespace fs = std::filesystem;

std::optional<fs::path> LibraryPath(const Subject& subject, Report& report) {
  const std::optional<fs::path> found = subject.library.empty() ? FindLibrary() : subject.library;
  if (!found) {
    report.Add("library.missing", {kLibraryName});
    return std::nullopt;
  }
  std::error_code error;
  const fs::path path = fs::absolute(*found, error).lexically_normal();
  const bool isOpen = std::ifstream(path).good() && !fs::is_directory(path, error);
  report.Add(isOpen ? "library.found" : "library.closed", {path.u8string()});
  return isOpen ? std::make_optional(path) : std::nullopt;
}

// Empty if there is no such file.
std::string Content(const char* name) {
  std::ostringstream content;
  content << std::ifstream(name, std::ios::binary).rdbuf();
  return content.str();
}

void CheckFolder(const fs::path& file, const std::string& what, Report& report) {
  std::error_code error;
  const fs::path folder = fs::absolute(file, error).parent_path();
  report.Add(SurvivesCodePage(folder) ? "folder.usable" : "folder.letters",
             {what, folder.u8string()});
}

}  // namespace

std::string ReadBytes(const fs::path& path, std::size_t limit) {
  if (fs::is_directory(path)) throw std::runtime_error("it is a folder");
  std::ifstream file(path, std::ios::binary);
  if (!file) throw std::runtime_error("it cannot be opened");
  std::string bytes;
  char piece[65536];
  while (file.read(piece, sizeof piece) || file.gcount() > 0) {
    bytes.append(piece, static_cast<std::size_t>(file.gcount()));
    if (bytes.size() > limit) throw std::runtime_error("it is too large");
  }
  if (file.bad()) throw std::runtime_error("it cannot be read to its end");
  return bytes;
}

std::optional<std::string> ReadConfig(const Subject& subject, Report& report) {
  const std::string name = subject.config.u8string();
  std::error_code error;
  if (!fs::exists(subject.config, error)) {
    report.Add("settings.absent", {name});
    return std::nullopt;
  }
  try {
    return ReadBytes(subject.config, kLargestConfig);
  } catch (const std::exception& failure) {
    report.Add("settings.closed", {name, failure.what()});
    return std::nullopt;
  }
}

LibraryReply AskLibrary(const Subject& subject, const char* mode,
                        const std::optional<std::string>& config, Report& report) {
  LibraryReply reply;
  const std::optional<fs::path> path = LibraryPath(subject, report);
  if (!path) return reply;
  std::string output;
  int status = 0;
  const SystemError error = RunQuietly([&] {
    if (config) std::ofstream("config.json", std::ios::binary) << *config;
    status = RunThisProgram({kChildArgument, mode, path->u8string()});
    reply.config = Content("config.json");
    output = Content(kReplyFile);
    std::remove(kReplyFile);
  });
  std::istringstream lines(output);
  for (std::string line; std::getline(lines, line);) {
    const Json json = Json::parse(line, nullptr, false);
    if (!json.is_object()) continue;
    if (json.count("loads") != 0) {
      reply.loads = json.at("loads") == true;
    } else if (json.count("id") != 0) {
      report.AddFinding(json);
    }
  }
  if (error != 0) report.Add("calls.none", {SystemErrorText(error)});
  if (status != 0) report.Add("load.crashed", {std::to_string(status)});
  return reply;
}

void CheckConfig(const Subject& subject, Report& report) {
  const std::optional<std::string> bytes = ReadConfig(subject, report);
  if (!bytes) return;
  // Findings about the library are not shown: they belong to the whole check-up.
  Report ofLibrary;
  const LibraryReply reply = AskLibrary(subject, kSettingsMode, *bytes, ofLibrary);
  if (!reply.loads) report.Add("library.unused");
  CheckConfigText(*bytes, subject.config.u8string(), reply.loads, report);
}

void CheckAll(const Subject& subject, Report& report) {
  report.Add("doctor", {QX_VERSION, SystemName()});
  const std::optional<std::string> bytes = ReadConfig(subject, report);
  const LibraryReply reply = AskLibrary(subject, kEverythingMode, bytes, report);
  if (bytes) CheckConfigText(*bytes, subject.config.u8string(), reply.loads, report);
  if (!kIsWindows) return;
  CheckFolder(subject.library.empty() ? FindLibrary().value_or("") : subject.library, "the library",
              report);
  CheckFolder(subject.config, "the settings file", report);
}

}  // namespace launcher::doctor
