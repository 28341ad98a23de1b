#include <dlfcn.h>
#include <pwd.h>
#include <sys/utsname.h>
#include <sys/wait.h>
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

fs::path ProgramFolder() { return fs::read_symlink("/proc/self/exe").parent_path(); }

std::optional<fs::path> InSearchPath(const char* name) {
  std::istringstream folders(Environment("LD_LIBRARY_PATH"));
  for (std::string folder; std::getline(folders, folder, ':');) {
    if (!folder.empty() && fs::exists(fs::path(folder) / name)) return fs::path(folder) / name;
  }
  return std::nullopt;
}

std::uint32_t Number(const std::string& bytes, std::size_t at, std::size_t size) {
  std::uint32_t number = 0;
  while (size-- > 0) {
    number =
        number << 8 | static_cast<unsigned char>(at + size < bytes.size() ? bytes[at + size] : 0);
  }
  return number;
}

// The algorithm of Windows for the checksum of a program file, whose own field counts as zero.
std::uint32_t Checksum(const std::string& bytes, std::size_t field) {
  std::uint32_t sum = 0;
  for (std::size_t at = 0; at < bytes.size(); at += 2) {
    if (at == field || at == field + 2) continue;
    sum += Number(bytes, at, 2);
    sum = (sum & 0xFFFF) + (sum >> 16);
  }
  return sum + static_cast<std::uint32_t>(bytes.size());
}

}  // namespace

const char* const kLibraryName = "libLauncherDll.so";
const char* const kSteamName = "libsteam_api.so";
const bool kIsWindows = false;

std::vector<std::string> Arguments(int count, char** arguments) {
  return {arguments, arguments + count};
}

// Programs are in bin/ and libraries in lib/ beside it.
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

// Libraries for Linux have no version. Of a library for Windows only the header is examined:
// doctor.exe does more. The numbers are offsets and values of the PE format.
std::string ExamineFile(const fs::path& /*path*/, const std::string& bytes,
                        std::string& /*version*/) {
  constexpr std::uint32_t kElf = 0x464C457F;  // the first four bytes
  if (Number(bytes, 0, 4) == kElf) return "image.unversioned";
  const std::size_t header = Number(bytes, 60, 4);
  if (bytes.compare(0, 2, "MZ") != 0 || Number(bytes, header, 4) != 0x4550) return "image.none";
  if (Number(bytes, header + 4, 2) != 0x14C) return "image.processor";
  if ((Number(bytes, header + 22, 2) & 0x2000) == 0) return "image.program";
  const bool fits = Checksum(bytes, header + 88) == Number(bytes, header + 88, 4);
  return fits ? "version.foreign" : "image.checksum";
}

std::optional<LoadedLibrary> Load(const fs::path& path, std::string& error) {
  void* const handle = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
  if (handle == nullptr) {
    const char* const why = dlerror();
    error = why != nullptr ? why : "no reason is known";
    return std::nullopt;
  }
  return LoadedLibrary{handle};
}

void* LoadedLibrary::Find(const std::string& name) const { return dlsym(handle, name.c_str()); }

void* LoadedLibrary::FindOrdinal(std::uint32_t /*ordinal*/) const { return nullptr; }

int RunThisProgram(const std::vector<std::string>& arguments) {
  std::vector<char*> words = {const_cast<char*>("doctor")};
  for (const std::string& argument : arguments) {
    words.push_back(const_cast<char*>(argument.c_str()));
  }
  words.push_back(nullptr);
  const pid_t child = fork();
  if (child == 0) {
    execv("/proc/self/exe", words.data());
    _exit(1);
  }
  int status = 1;
  return child > 0 && waitpid(child, &status, 0) == child ? status : 1;
}

bool SurvivesCodePage(const fs::path& /*path*/) { return true; }

std::pair<std::string, std::string> ThisUser() {
  const passwd* const user = getpwuid(getuid());
  std::string folder = Environment("HOME");
  while (!folder.empty() && folder.back() == '/') folder.pop_back();
  return {folder, user != nullptr ? user->pw_name : ""};
}

void ShowUtf8() {}

void WaitForKeyAfterDoubleClick() {}

std::string NarrowPath(const fs::path& path) { return path.string(); }

std::string SystemName() {
  utsname system = {};
  if (uname(&system) != 0) return "unknown";
  return std::string(system.sysname) + ' ' + system.release + ' ' + system.machine;
}

}  // namespace launcher::doctor
