#include "doctor/checkup.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>
#include <random>
#include <string>
#include <system_error>
#include <utility>
#include <vector>

#include "doctor/export_list.h"
#include "doctor/file_bytes.h"
#include "doctor/known_answers.h"
#include "doctor/library_calls.h"
#include "doctor/steam_check.h"
#include "support/quiet_library.h"

namespace launcher::doctor {
namespace {

namespace fs = std::filesystem;

constexpr const char* kReinstall = "take the library from the package anew";

std::string Shown(const fs::path& path) { return path.u8string(); }

// The bits that a library of a format must have to be of use, here or at the player's.
int NeededBits(ImageFormat format) { return format == ImageFormat::pe ? 32 : kProcessBits; }

// Answers whether the file can be a LauncherDll, as far as its bytes tell.
bool ExamineImage(const fs::path& path, const Image& image, Report& report) {
  const std::string name = path.filename().u8string();
  if (!image.fault.empty()) {
    report.Add({"image", Status::broken, name + " is damaged or no library: " + image.fault,
                "a download or a copy that ended early, or another file under this name",
                kReinstall});
    return false;
  }
  bool fits = true;
  const int needed = NeededBits(image.format);
  if (image.bits != needed || !image.isLibrary) {
    fits = false;
    report.Add({"bitness", Status::broken,
                name +
                    (image.isLibrary ? " is for " + image.machine : " is a program, no library") +
                    "; it must be a library of " + std::to_string(needed) + " bits",
                "Windows loads only libraries of the program's own kind (error 193), and the "
                "game's launcher is a 32-bit program",
                "put the 32-bit " + name + " of the package in its place"});
  } else {
    const bool isHere = image.format == kMachineFormat;
    report.Add({"bitness", Status::ok,
                name + " is for " + image.machine +
                    (isHere ? ", as this process (" + std::to_string(kProcessBits) + " bits)"
                            : "; doctor itself runs on another system")});
  }
  if (image.format != ImageFormat::pe) return fits;

  if (image.version.empty()) {
    report.Add({"version", Status::warning, name + " tells no version in its properties",
                "it was built or changed by hand", kReinstall});
  } else if (image.version != QX_VERSION) {
    report.Add({"version", Status::warning,
                name + " has the version " + image.version + ", doctor " QX_VERSION,
                "one of the two is older", "take both from one package"});
  } else {
    report.Add({"version", Status::ok, name + " has the version " + image.version});
  }
  return fits;
}

std::string Listed(const std::vector<std::string>& names) {
  constexpr std::size_t kShown = 6;
  std::string text;
  for (std::size_t i = 0; i < names.size() && i < kShown; ++i) {
    text += (i == 0 ? "" : ", ") + names[i];
  }
  if (names.size() > kShown) text += " and " + Counted(names.size() - kShown, "more");
  return text;
}

// What is missing by name; `find` answers whether an export is there.
template <class IsThere>
bool CheckNames(IsThere isThere, bool isDecorated, const std::string& cause, Report& report) {
  std::vector<std::string> missing;
  for (const Export& entry : Exports()) {
    const std::string& name = isDecorated ? entry.decorated : entry.name;
    if (!isThere(name)) missing.push_back(name);
  }
  if (missing.empty()) {
    report.Add({"exports", Status::ok,
                "all " + std::to_string(Exports().size()) + " functions are there by name"});
    return true;
  }
  report.Add({"exports", Status::broken,
              Counted(missing.size(), "function") + " of " + std::to_string(Exports().size()) +
                  (missing.size() == 1 ? " is" : " are") + " missing: " + Listed(missing),
              cause, kReinstall});
  return false;
}

bool CheckExportTable(const Image& image, Report& report) {
  const bool hasPlainNames = image.exports.count(Exports().front().name) != 0;
  const bool fits = CheckNames(
      [&](const std::string& name) { return image.exports.count(name) != 0; }, true,
      hasPlainNames ? "it was linked so that the names lost their decoration (_NAME@BYTES)"
                    : "an older library, or another one of the same name",
      report);

  std::vector<std::string> wrong;
  for (const Export& entry : Exports()) {
    const auto found = image.exports.find(entry.decorated);
    if (found != image.exports.end() && found->second != entry.ordinal) {
      wrong.push_back(entry.decorated + " (" + std::to_string(found->second) + " in place of " +
                      std::to_string(entry.ordinal) + ")");
    }
  }
  if (!wrong.empty()) {
    report.Add({"ordinals", Status::broken,
                Counted(wrong.size(), "function") + " with another ordinal: " + Listed(wrong),
                "linked without the list of ordinals: a program that imports by ordinal calls the "
                "wrong function",
                kReinstall});
  } else if (fits) {
    report.Add({"ordinals", Status::ok,
                "the ordinals are 1 to " + std::to_string(Exports().size()) + ", as they must"});
  }
  return fits && wrong.empty();
}

std::optional<LoadedLibrary> Load(const fs::path& path, Report& report) {
  std::string error;
  std::optional<LoadedLibrary> library = LoadedLibrary::Load(path, error);
  if (!library) {
    report.Add({"load", Status::broken, "the library cannot be loaded: " + error,
                "126: a library that it needs is missing; 193: another bitness, or damaged; 5: no "
                "right to read it; else a guard against malware may hold it back",
                std::string(kReinstall) + ", and look what the guard says"});
    return std::nullopt;
  }
  const fs::path where = library->Where();
  std::error_code error2;
  if (where.empty() || fs::equivalent(where, path, error2)) {
    report.Add({"load", Status::ok, "it loads"});
  } else {
    report.Add({"load", Status::warning, "the system loaded another file: " + Shown(where),
                "a library of this name was loaded before", "remove the one that is not wanted"});
  }
  return library;
}

// A name in the folder for temporary files that nobody else has.
fs::path TemporaryFile() {
  std::random_device random;
  return fs::temp_directory_path() / ("doctor-" + std::to_string(random()) + ".tmp");
}

struct DisplayModes {
  std::size_t count = 0;
  std::string largest;
};

// What QX_EnumDisplayMode wrote. A list whose last mode is missing ends in a comma, so the text is
// not read as JSON.
DisplayModes ReadModes(const std::string& text) {
  DisplayModes modes;
  std::uint64_t most = 0;
  for (std::size_t at = text.find("{\"Width\""); at != std::string::npos;
       at = text.find("{\"Width\"", at + 1)) {
    // Width and height stand behind the colons in turn.
    std::uint64_t numbers[2] = {};
    const char* next = text.c_str() + at;
    for (std::uint64_t& number : numbers) {
      next = std::strchr(next, ':');
      if (next == nullptr) return modes;
      number = std::strtoul(++next, nullptr, 10);
    }
    ++modes.count;
    const std::uint64_t pixels = numbers[0] * numbers[1];
    if (pixels <= most) continue;
    most = pixels;
    modes.largest = std::to_string(numbers[0]) + " x " + std::to_string(numbers[1]);
  }
  return modes;
}

void CheckDisplay(const LoadedLibrary& library, Report& report) {
  constexpr std::size_t kRoom = std::size_t{1} << 20;
  std::string text(kRoom, '\0');
  const SystemError error = RunQuietly(
      [&] { text.resize(QX_IN(library, QX_EnumDisplayMode)(0, 0, text.data(), kRoom)); });
  if (error != 0) return;
  const DisplayModes modes = ReadModes(text);
  if (modes.count != 0) {
    report.Add({"display", Status::ok,
                Counted(modes.count, "display mode") + ", the largest " + modes.largest});
  } else if (!kIsWindows) {
    report.Add({"display", Status::ok, "no question here: this system has no Direct3D"});
  } else {
    report.Add({"display", Status::warning, "Direct3D 9 tells no display mode",
                "no driver for the graphics card, a session over remote desktop, or no screen",
                "install the card's driver, and start the game at the machine itself"});
  }
}

void CheckCodePage(const fs::path& folder, const std::string& what, Report& report) {
  switch (SurvivesCodePage(folder)) {
    case CodePageAnswer::noQuestion:
      report.Add({"code-page", Status::ok, "no question here: this system has no ANSI code page"});
      break;
    case CodePageAnswer::survives:
      report.Add(
          {"code-page", Status::ok, "the path of " + what + " is the same in the ANSI code page"});
      break;
    case CodePageAnswer::doesNot:
      report.Add(
          {"code-page", Status::broken,
           "the path of " + what + " has characters outside the ANSI code page: " + Shown(folder),
           "the library takes paths in the ANSI code page: the client cannot be started "
           "from there, and files are not found",
           "install the game in a folder with plain letters"});
      break;
  }
}

// The folder that a lookup's file stands in.
fs::path FolderOf(const fs::path& file) {
  std::error_code error;
  return fs::absolute(file, error).parent_path();
}

}  // namespace

std::optional<LoadedLibrary> OpenLibrary(const Subject& subject, Report& report) {
  fs::path path = subject.library;
  const bool isGiven = !path.empty();
  if (!isGiven) {
    const std::optional<fs::path> found = FindLibrary();
    if (!found) {
      report.Add({"library", Status::broken,
                  std::string(kLibraryName) + " is not to be found, beside doctor or elsewhere",
                  "doctor does not lie in the launcher's folder, or a guard against malware took "
                  "the library away",
                  "put doctor beside the launcher, or name the file with --library"});
      return std::nullopt;
    }
    path = *found;
  }
  std::error_code error;
  path = fs::absolute(path, error).lexically_normal();
  Image image;
  try {
    image = ReadImage(path);
  } catch (const std::exception& failure) {
    report.Add({"library", Status::broken, Shown(path) + ": " + failure.what(),
                "not there, or this user may not read it", "look at the path and its permissions"});
    return std::nullopt;
  }
  const bool isBeside = fs::equivalent(path.parent_path(), ProgramFolder(), error);
  report.Add({"library", Status::ok,
              "found " + Shown(path) +
                  (isGiven    ? ", as named"
                   : isBeside ? ", beside doctor"
                              : ", where the system looks for libraries")});
  bool fits = ExamineImage(path, image, report);
  if (image.format == ImageFormat::pe && image.fault.empty()) {
    fits = CheckExportTable(image, report) && fits;
  }
  if (!fits) return std::nullopt;
  if (image.format != kMachineFormat) {
    report.Add({"load", Status::ok,
                "not tried: a library of another system. Its file was looked at, and it was not "
                "called"});
    return std::nullopt;
  }
  std::optional<LoadedLibrary> library = Load(path, report);
  if (!library || kMachineFormat == ImageFormat::pe) return library;
  const bool hasAll =
      CheckNames([&](const std::string& name) { return library->Find(name) != nullptr; },
                 kNamesAreDecorated, "an older library, or another one of the same name", report);
  return hasAll ? library : std::nullopt;
}

std::optional<std::string> ReadSettings(const Subject& subject, Report& report) {
  const std::string name = Shown(subject.config);
  std::error_code error;
  if (!fs::exists(subject.config, error)) {
    report.Add({"settings", Status::ok,
                "there is no " + name +
                    "; the library writes one with the defaults when a text is "
                    "first looked up. It is looked for in the launcher's working directory"});
    return std::nullopt;
  }
  try {
    return ReadBytes(subject.config, kLargestConfig);
  } catch (const std::exception& failure) {
    report.Add({"settings", Status::broken, name + " cannot be read: " + failure.what(),
                "this user may not read it, another program holds it, or it is no file",
                "look at its permissions, and close other programs; until then the library takes "
                "its defaults"});
  }
  return std::nullopt;
}

std::optional<LibraryVerdict> AskLibrary(const LoadedLibrary& library, const std::string& bytes) {
  LibraryVerdict verdict = {};
  bool isWritten = false;
  const fs::path errors = TemporaryFile();
  const std::string errorsName = NarrowPath(errors);
  const SystemError error = RunQuietly([&] {
    std::ofstream file("config.json", std::ios::binary);
    file << bytes;
    file.close();
    isWritten = !file.fail() && std::freopen(errorsName.c_str(), "wb", stderr) != nullptr;
    if (!isWritten) return;
    verdict.loads = QX_IN(library, QX_IsStaging)() == 1;
  });
  std::setvbuf(stderr, nullptr, _IONBF, 0);
  constexpr std::size_t kLongestError = 65536;
  try {
    if (error == 0 && isWritten) verdict.error = ReadBytes(errors, kLongestError);
  } catch (const std::exception&) {
    verdict.error.clear();
  }
  std::error_code ignored;
  fs::remove(errors, ignored);
  if (error != 0 || !isWritten) return std::nullopt;
  const std::string before = "Error: ";
  if (verdict.error.compare(0, before.size(), before) == 0) verdict.error.erase(0, before.size());
  verdict.error.erase(verdict.error.find_last_not_of("\r\n") + 1);
  return verdict;
}

std::optional<std::string> AskDefaults(const LoadedLibrary& library) {
  std::string text;
  const SystemError error = RunQuietly([&] {
    if (QX_IN(library, QX_IsStaging)() != 1) return;
    try {
      text = ReadBytes("config.json", kLargestConfig);
    } catch (const std::exception&) {
      text.clear();
    }
  });
  if (error != 0 || text.empty()) return std::nullopt;
  return text;
}

void CheckConfig(const Subject& subject, const std::optional<LoadedLibrary>& library,
                 Report& report) {
  const std::optional<std::string> bytes = ReadSettings(subject, report);
  if (!bytes) return;
  std::optional<LibraryVerdict> verdict;
  if (library) verdict = AskLibrary(*library, *bytes);
  CheckConfig(*bytes, Shown(subject.config), verdict, report);
}

void CheckAll(const Subject& subject, Report& report) {
  report.Add(
      {"doctor", Status::ok,
       "version " QX_VERSION ", " + std::to_string(kProcessBits) + " bits, on " + SystemName()});
  const std::optional<LoadedLibrary> library = OpenLibrary(subject, report);
  if (library) CheckKnownAnswers(*library, report);
  CheckConfig(subject, library, report);
  if (library) {
    CheckSteam(*library, report);
    CheckDisplay(*library, report);
    CheckCodePage(library->Where().parent_path(), "the library", report);
  }
  if (kIsWindows) CheckCodePage(FolderOf(subject.config), "the settings file", report);
}

}  // namespace launcher::doctor
