// `doctor config repair`.

#include <cstdio>
#include <exception>
#include <filesystem>
#include <optional>
#include <stdexcept>
#include <string>
#include <system_error>

#include "doctor/commands.h"
#include "doctor/library_child.h"
#include "doctor/machine.h"
#include "support/output_file.h"

namespace launcher::doctor {
namespace {

namespace fs = std::filesystem;

void Print(const std::string& line) { std::printf("%s\n", WithoutUser(line).c_str()); }

void Check(SystemError error, const std::string& what) {
  if (error != 0) throw std::runtime_error(what + ": " + SystemErrorText(error));
}

// Writes a file with these bytes beside `path`, under the first free name with a number.
fs::path KeepCopy(const fs::path& path, const std::string& bytes) {
  for (int number = 1;; ++number) {
    fs::path kept = path;
    kept += ".broken-" + std::to_string(number);
    if (HasFileAt(NarrowPath(kept))) continue;
    const std::string what = "the broken file cannot be kept as " + kept.u8string();
    OutputFile file;
    Check(file.Open(NarrowPath(kept)), what);
    file.TakeAfter(path);  // the same permissions: the file can hold passwords
    Check(file.Write(bytes.data(), bytes.size()), what);
    const SystemError error = file.Commit(NewFile::Existing::kStays, true);
    if (error == 0) return kept;
    // Another program took the name at the same moment.
    if (MeansThatItExists(error)) continue;
    Check(error, what);
  }
}

// The new file is written first, under a temporary name, so that a full disk stops the repair
// early. It gets its own name last.
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

int Refuse(const std::string& why) {
  std::fprintf(stderr, "doctor: %s; nothing was written\n", WithoutUser(why).c_str());
  return kBrokenStatus;
}

int RepairConfigFile(const Subject& subject, bool isDryRun) {
  Report problems;
  const std::string name = subject.config.u8string();
  const std::optional<std::string> bytes = ReadConfig(subject, problems);
  if (!bytes) {
    std::fputs(problems.Text().c_str(), stdout);
    return problems.ExitStatus();
  }
  if (ErrorOfConfig(*bytes).empty()) {
    Print(name + " can be read and is not changed");
    return 0;
  }
  const LibraryReply defaults = AskLibrary(subject, kSettingsMode, std::nullopt, problems);
  if (!defaults.loads) {
    std::fputs(problems.Text().c_str(), stdout);
    return Refuse("a repair needs the library, which gives the defaults and tests the result");
  }

  try {
    const Repair repair = RepairConfigText(*bytes, defaults.config);
    const LibraryReply reply = AskLibrary(subject, kSettingsMode, repair.text, problems);
    if (!reply.loads.value_or(false)) return Refuse("the library cannot read the repaired file");
    for (const std::string& change : repair.changes) Print(change);
    if (isDryRun) {
      Print(name + " would be:");
      std::fputs(WithoutUser(repair.text).c_str(), stdout);
      return 0;
    }
    const fs::path kept = Replace(subject.config, *bytes, repair.text);
    Print("kept the broken file as " + kept.u8string());
    Print(name + " is repaired, and the library can read it");
    return 0;
  } catch (const std::exception& failure) {
    return Refuse(failure.what());
  }
}

}  // namespace launcher::doctor
