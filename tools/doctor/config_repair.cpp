#include "doctor/config_repair.h"

#include <cstdio>
#include <exception>
#include <filesystem>
#include <optional>
#include <stdexcept>
#include <string>
#include <system_error>

#include "doctor/file_bytes.h"
#include "support/output_file.h"

namespace launcher::doctor {
namespace {

namespace fs = std::filesystem;

constexpr int kMostCopies = 10000;

int Fail(const std::string& why) {
  std::fprintf(stderr, "doctor: %s; nothing was changed\n", WithoutUser(why).c_str());
  return kBrokenStatus;
}

void Say(const std::string& line) { std::printf("%s\n", WithoutUser(line).c_str()); }

void Check(SystemError error, const std::string& what) {
  if (error != 0) throw std::runtime_error(what + ": " + SystemErrorText(error));
}

// Puts a file with these bytes beside `path`, under the first free name with a number.
fs::path KeepCopy(const fs::path& path, const std::string& bytes) {
  for (int number = 1; number <= kMostCopies; ++number) {
    fs::path kept = path;
    kept += ".broken-" + std::to_string(number);
    std::error_code ignored;
    if (fs::exists(fs::symlink_status(kept, ignored))) continue;
    const SystemError error =
        WriteOutputFile(NarrowPath(kept), bytes, NewFile::Existing::kStays, true);
    if (error == 0) return kept;
    // Somebody else took the name at the same moment.
    if (MeansThatItExists(error)) continue;
    Check(error, "the broken file cannot be kept as " + kept.u8string());
  }
  throw std::runtime_error("there are too many broken files already");
}

// The file is written out of sight before anything else is, so that a full disk stops the repair
// early; it takes its place last.
fs::path Replace(const fs::path& path, const std::string& broken, const std::string& text) {
  const std::string what = path.u8string() + " cannot be written";
  OutputFile file;
  Check(file.Open(NarrowPath(path)), what);
  Check(file.Write(text.data(), text.size()), what);
  fs::path kept = KeepCopy(path, broken);
  try {
    if (ReadBytes(path, kLargestConfig) != broken) {
      throw std::runtime_error(path.u8string() + " was changed by another program meanwhile");
    }
    Check(file.Commit(NewFile::Existing::kReplaced, true), what);
  } catch (const std::exception&) {
    std::error_code ignored;
    fs::remove(kept, ignored);
    throw;
  }
  return kept;
}

}  // namespace

int RepairConfig(const Subject& subject, bool isDryRun) {
  Report problems;
  const std::string name = subject.config.u8string();
  const std::optional<std::string> bytes = ReadSettings(subject, problems);
  if (!bytes) {
    std::fputs(problems.Text().c_str(), stdout);
    return problems.ExitStatus();
  }
  if (ErrorOfConfig(*bytes).empty()) {
    Say(name + " loads and is left alone");
    return 0;
  }
  const std::optional<LoadedLibrary> library = OpenLibrary(subject, problems);
  if (!library) {
    std::fputs(problems.Text().c_str(), stdout);
    return Fail("a repair needs the library, which gives the defaults and has the last word");
  }

  try {
    const std::optional<std::string> defaults = AskDefaults(*library);
    if (!defaults) return Fail("the library gives no defaults");
    const Repair repair = RepairConfig(*bytes, *defaults);
    const std::optional<LibraryVerdict> verdict = AskLibrary(*library, repair.text);
    if (!verdict) return Fail("the library cannot be asked: is there room for temporary files?");
    if (!verdict->loads) {
      return Fail("the library does not load what the repair made: " + verdict->error);
    }
    for (const std::string& change : repair.changes) Say(change);
    if (isDryRun) {
      Say(name + " would be:");
      std::fputs(WithoutUser(repair.text).c_str(), stdout);
      return 0;
    }
    const fs::path kept = Replace(subject.config, *bytes, repair.text);
    Say("kept the broken file as " + kept.u8string());
    Say(name + " is repaired, and the library loads it");
    return 0;
  } catch (const std::exception& failure) {
    return Fail(failure.what());
  }
}

}  // namespace launcher::doctor
