#include <dlfcn.h>
#include <pwd.h>
#include <sys/utsname.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <optional>
#include <sstream>
#include <string>
#include <vector>

#include "doctor/machine.h"

namespace launcher::doctor {
namespace {

namespace fs = std::filesystem;

std::string Environment(const char* name) {
  const char* const value = std::getenv(name);
  return value != nullptr ? value : "";
}

// Where the system looks for a library of this name, as far as the environment tells.
std::optional<fs::path> InSearchPath(const char* name) {
  std::istringstream folders(Environment("LD_LIBRARY_PATH"));
  for (std::string folder; std::getline(folders, folder, ':');) {
    if (!folder.empty() && fs::exists(fs::path(folder) / name)) return fs::path(folder) / name;
  }
  return std::nullopt;
}

}  // namespace

const char* const kLibraryName = "libLauncherDll.so";
const char* const kSteamName = "libsteam_api.so";
const ImageFormat kMachineFormat = ImageFormat::elf;
const bool kNamesAreDecorated = false;
const bool kTextEndsAtControlZ = false;
const bool kIsWindows = false;

std::vector<std::string> Arguments(int count, char** arguments) {
  return {arguments, arguments + count};
}

fs::path ProgramFolder() { return fs::read_symlink("/proc/self/exe").parent_path(); }

// Programs lie in bin/ and libraries in lib/ beside it.
std::optional<fs::path> FindLibrary() {
  for (const fs::path& folder : {ProgramFolder(), ProgramFolder().parent_path() / "lib"}) {
    if (fs::exists(folder / kLibraryName)) return folder / kLibraryName;
  }
  return InSearchPath(kLibraryName);
}

std::optional<fs::path> FindSteam(const fs::path& libraryFolder) {
  if (fs::exists(libraryFolder / kSteamName)) return libraryFolder / kSteamName;
  return InSearchPath(kSteamName);
}

std::optional<LoadedLibrary> LoadedLibrary::Load(const fs::path& path, std::string& error) {
  void* const handle = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
  if (handle == nullptr) {
    const char* const why = dlerror();
    error = why != nullptr ? why : "no reason is known";
    return std::nullopt;
  }
  return LoadedLibrary(handle);
}

void* LoadedLibrary::Find(const std::string& name) const { return dlsym(handle_, name.c_str()); }

fs::path LoadedLibrary::Where() const {
  void* const inside = dlsym(handle_, "QX_IsFailed");
  Dl_info found = {};
  return inside != nullptr && dladdr(inside, &found) != 0 ? found.dli_fname : fs::path();
}

CodePageAnswer SurvivesCodePage(const fs::path& /*path*/) { return CodePageAnswer::noQuestion; }

UserTraces ThisUser() {
  std::string name;
  if (const passwd* const user = getpwuid(getuid())) name = user->pw_name;
  return {Environment("HOME"), "~", name, "$USER"};
}

void ShowUtf8() {}

std::string NarrowPath(const fs::path& path) { return path.string(); }

std::string SystemName() {
  utsname system = {};
  if (uname(&system) != 0) return "unknown";
  return std::string(system.sysname) + ' ' + system.release + ' ' + system.machine;
}

}  // namespace launcher::doctor
