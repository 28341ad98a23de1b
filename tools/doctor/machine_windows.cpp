#include <windows.h>

// Behind windows.h.
#include <shellapi.h>

#include <cstdlib>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "doctor/machine.h"

namespace launcher::doctor {
namespace {

namespace fs = std::filesystem;

constexpr DWORD kLongestPath = 32768;

std::string Utf8(const std::wstring& text) { return fs::path(text).u8string(); }

std::wstring Environment(const wchar_t* name) {
  const wchar_t* const value = _wgetenv(name);
  return value != nullptr ? value : L"";
}

std::wstring ModuleFile(HMODULE module) {
  std::wstring file(kLongestPath, L'\0');
  file.resize(GetModuleFileNameW(module, file.data(), kLongestPath));
  return file;
}

UINT codePageBefore = 0;

void RestoreCodePage() { SetConsoleOutputCP(codePageBefore); }

// RtlGetVersion, unlike GetVersionEx, tells the truth to programs without a manifest.
using RtlGetVersionFunction = LONG(WINAPI*)(OSVERSIONINFOW*);

}  // namespace

const char* const kLibraryName = "LauncherDll.dll";
const char* const kSteamName = "steam_api.dll";
const ImageFormat kMachineFormat = ImageFormat::pe;
const bool kNamesAreDecorated = true;
const bool kTextEndsAtControlZ = true;
const bool kIsWindows = true;

std::vector<std::string> Arguments(int /*count*/, char** /*arguments*/) {
  int count = 0;
  wchar_t** const wide = CommandLineToArgvW(GetCommandLineW(), &count);
  std::vector<std::string> arguments;
  for (int i = 0; wide != nullptr && i < count; ++i) arguments.push_back(Utf8(wide[i]));
  LocalFree(wide);
  return arguments;
}

fs::path ProgramFolder() { return fs::path(ModuleFile(nullptr)).parent_path(); }

std::optional<fs::path> FindLibrary() {
  std::wstring found(kLongestPath, L'\0');
  const std::wstring name = fs::path(kLibraryName).wstring();
  const DWORD length =
      SearchPathW(nullptr, name.c_str(), nullptr, kLongestPath, found.data(), nullptr);
  if (length == 0 || length >= kLongestPath) return std::nullopt;
  found.resize(length);
  return fs::path(found);
}

// Beside the program, which is the launcher where doctor lies with it, then the system's.
std::optional<fs::path> FindSteam(const fs::path& /*libraryFolder*/) {
  std::wstring system(MAX_PATH, L'\0');
  system.resize(GetSystemDirectoryW(system.data(), MAX_PATH));
  for (const fs::path& folder : {ProgramFolder(), fs::path(system)}) {
    if (fs::exists(folder / kSteamName)) return folder / kSteamName;
  }
  return std::nullopt;
}

std::optional<LoadedLibrary> LoadedLibrary::Load(const fs::path& path, std::string& error) {
  const HMODULE module = LoadLibraryW(path.c_str());
  if (module == nullptr) {
    error = "error " + std::to_string(GetLastError()) + " of Windows";
    return std::nullopt;
  }
  return LoadedLibrary(module);
}

void* LoadedLibrary::Find(const std::string& name) const {
  return reinterpret_cast<void*>(GetProcAddress(static_cast<HMODULE>(handle_), name.c_str()));
}

fs::path LoadedLibrary::Where() const { return ModuleFile(static_cast<HMODULE>(handle_)); }

CodePageAnswer SurvivesCodePage(const fs::path& path) {
  const std::wstring wide = path.wstring();
  std::string narrow(wide.size() * 4, '\0');
  BOOL isReplaced = FALSE;
  // UTF-8 as the code page takes neither the flag nor the question.
  const bool isUtf8 = GetACP() == CP_UTF8;
  const int length = WideCharToMultiByte(
      CP_ACP, isUtf8 ? 0 : WC_NO_BEST_FIT_CHARS, wide.c_str(), static_cast<int>(wide.size()),
      narrow.data(), static_cast<int>(narrow.size()), nullptr, isUtf8 ? nullptr : &isReplaced);
  std::wstring back(wide.size() * 2 + 1, L'\0');
  const int backLength = MultiByteToWideChar(CP_ACP, 0, narrow.c_str(), length, back.data(),
                                             static_cast<int>(back.size()));
  back.resize(static_cast<std::size_t>(backLength));
  return isReplaced == FALSE && back == wide ? CodePageAnswer::survives : CodePageAnswer::doesNot;
}

UserTraces ThisUser() {
  return {Utf8(Environment(L"USERPROFILE")), "%USERPROFILE%", Utf8(Environment(L"USERNAME")),
          "%USERNAME%"};
}

void ShowUtf8() {
  DWORD mode = 0;
  if (codePageBefore != 0 || GetConsoleMode(GetStdHandle(STD_OUTPUT_HANDLE), &mode) == FALSE)
    return;
  codePageBefore = GetConsoleOutputCP();
  // The console outlives this process.
  if (SetConsoleOutputCP(CP_UTF8) != FALSE) std::atexit(RestoreCodePage);
}

// What the code page lacks becomes a question mark, which no file name has.
std::string NarrowPath(const fs::path& path) {
  const std::wstring wide = path.wstring();
  std::string narrow(wide.size() * 4, '\0');
  narrow.resize(static_cast<std::size_t>(
      WideCharToMultiByte(CP_ACP, 0, wide.c_str(), static_cast<int>(wide.size()), narrow.data(),
                          static_cast<int>(narrow.size()), nullptr, nullptr)));
  return narrow;
}

std::string SystemName() {
  OSVERSIONINFOW version = {};
  version.dwOSVersionInfoSize = sizeof version;
  const auto ask = reinterpret_cast<RtlGetVersionFunction>(
      reinterpret_cast<void*>(GetProcAddress(GetModuleHandleW(L"ntdll.dll"), "RtlGetVersion")));
  if (ask == nullptr || ask(&version) != 0) return "Windows";
  return "Windows " + std::to_string(version.dwMajorVersion) + '.' +
         std::to_string(version.dwMinorVersion) + '.' + std::to_string(version.dwBuildNumber);
}

}  // namespace launcher::doctor
