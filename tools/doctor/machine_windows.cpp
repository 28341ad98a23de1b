#include <windows.h>

// These need <windows.h> first.
#include <conio.h>
#include <imagehlp.h>
#include <process.h>
#include <shellapi.h>

#include <cstdlib>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "doctor/machine.h"
#include "support/output_file.h"

namespace launcher::doctor {
namespace {

namespace fs = std::filesystem;

constexpr DWORD kLongestPath = 32768;

std::string Utf8(const std::wstring& text) { return fs::path(text).u8string(); }

std::wstring Environment(const wchar_t* name) {
  const wchar_t* const value = _wgetenv(name);
  return value != nullptr ? value : L"";
}

std::wstring ProgramFile() {
  std::wstring file(kLongestPath, L'\0');
  file.resize(GetModuleFileNameW(nullptr, file.data(), kLongestPath));
  return file;
}

fs::path ProgramFolder() { return fs::path(ProgramFile()).parent_path(); }

UINT codePageBefore = 0;

void RestoreCodePage() { SetConsoleOutputCP(codePageBefore); }

// RtlGetVersion, unlike GetVersionEx, returns the real version to programs without a manifest.
using RtlGetVersionFunction = LONG(WINAPI*)(OSVERSIONINFOW*);

std::string LastErrorText() {
  const DWORD error = GetLastError();
  return SystemErrorText(static_cast<SystemError>(error)) + " (error " + std::to_string(error) +
         ")";
}

// Empty if the file has none.
std::string FileVersion(const fs::path& path) {
  std::vector<char> block(GetFileVersionInfoSizeW(path.c_str(), nullptr));
  void* value = nullptr;
  UINT size = 0;
  if (block.empty() ||
      !GetFileVersionInfoW(path.c_str(), 0, static_cast<DWORD>(block.size()), block.data()) ||
      !VerQueryValueW(block.data(), L"\\", &value, &size) || size < sizeof(VS_FIXEDFILEINFO)) {
    return {};
  }
  const auto* const info = static_cast<const VS_FIXEDFILEINFO*>(value);
  return std::to_string(HIWORD(info->dwFileVersionMS)) + '.' +
         std::to_string(LOWORD(info->dwFileVersionMS)) + '.' +
         std::to_string(HIWORD(info->dwFileVersionLS));
}

}  // namespace

const char* const kLibraryName = "LauncherDll.dll";
const char* const kSteamName = "steam_api.dll";
const bool kIsWindows = true;

std::vector<std::string> Arguments(int /*count*/, char** /*arguments*/) {
  int count = 0;
  wchar_t** const wide = CommandLineToArgvW(GetCommandLineW(), &count);
  std::vector<std::string> arguments;
  for (int i = 0; wide != nullptr && i < count; ++i) arguments.push_back(Utf8(wide[i]));
  LocalFree(wide);
  return arguments;
}

std::optional<fs::path> FindLibrary() {
  std::wstring found(kLongestPath, L'\0');
  const DWORD length = SearchPathW(nullptr, fs::path(kLibraryName).c_str(), nullptr, kLongestPath,
                                   found.data(), nullptr);
  if (length == 0 || length >= kLongestPath) return std::nullopt;
  found.resize(length);
  return fs::path(found);
}

// The library looks beside the program first. Doctor is supposed to be in the launcher's folder.
std::optional<fs::path> FindSteam(const fs::path& libraryFolder) {
  std::wstring system(MAX_PATH, L'\0');
  system.resize(GetSystemDirectoryW(system.data(), MAX_PATH));
  for (const fs::path& folder : {ProgramFolder(), libraryFolder, fs::path(system)}) {
    if (fs::exists(folder / kSteamName)) return folder / kSteamName;
  }
  return std::nullopt;
}

std::string ExamineFile(const fs::path& path, const std::string& /*bytes*/, std::string& version) {
  // Maps the file without running its code.
  const HMODULE module = LoadLibraryExW(path.c_str(), nullptr, DONT_RESOLVE_DLL_REFERENCES);
  // The file is for another processor, or is not a library at all.
  if (module == nullptr && GetLastError() == ERROR_BAD_EXE_FORMAT) return "image.processor";
  if (module != nullptr) FreeLibrary(module);
  version = FileVersion(path);
  DWORD expected = 0;
  DWORD actual = 0;
  const DWORD result = MapFileAndCheckSumW(path.c_str(), &expected, &actual);
  return result == CHECKSUM_SUCCESS && expected == actual ? "" : "image.checksum";
}

std::optional<LoadedLibrary> Load(const fs::path& path, std::string& error) {
  const HMODULE module = LoadLibraryW(path.c_str());
  if (module == nullptr) {
    error = LastErrorText();
    return std::nullopt;
  }
  return LoadedLibrary{module};
}

void* LoadedLibrary::Find(const std::string& name) const {
  return reinterpret_cast<void*>(GetProcAddress(static_cast<HMODULE>(handle), name.c_str()));
}

void* LoadedLibrary::FindOrdinal(std::uint32_t ordinal) const {
  return reinterpret_cast<void*>(GetProcAddress(
      static_cast<HMODULE>(handle), reinterpret_cast<const char*>(std::uintptr_t{ordinal})));
}

int RunThisProgram(const std::vector<std::string>& arguments) {
  std::vector<std::wstring> quoted;  // file names have no quotes
  for (const std::string& argument : arguments) {
    quoted.push_back(L'"' + fs::u8path(argument).wstring() + L'"');
  }
  std::vector<const wchar_t*> words = {L"doctor"};
  for (const std::wstring& word : quoted) words.push_back(word.c_str());
  words.push_back(nullptr);
  // The child inherits this mode, in which a crash opens no window.
  SetErrorMode(SEM_FAILCRITICALERRORS | SEM_NOGPFAULTERRORBOX);
  return static_cast<int>(_wspawnv(_P_WAIT, ProgramFile().c_str(), words.data()));
}

bool SurvivesCodePage(const fs::path& path) {
  const std::string narrow = NarrowPath(path);
  std::wstring back(narrow.size(), L'\0');
  back.resize(static_cast<std::size_t>(
      MultiByteToWideChar(CP_ACP, 0, narrow.c_str(), static_cast<int>(narrow.size()), back.data(),
                          static_cast<int>(back.size()))));
  return back == path.wstring();
}

std::pair<std::string, std::string> ThisUser() {
  return {Utf8(Environment(L"USERPROFILE")), Utf8(Environment(L"USERNAME"))};
}

void ShowUtf8() {
  DWORD mode = 0;
  if (codePageBefore != 0 || GetConsoleMode(GetStdHandle(STD_OUTPUT_HANDLE), &mode) == FALSE)
    return;
  codePageBefore = GetConsoleOutputCP();
  // The console outlives this process.
  if (SetConsoleOutputCP(CP_UTF8) != FALSE) std::atexit(RestoreCodePage);
}

void WaitForKeyAfterDoubleClick() {
  DWORD processes[2];
  DWORD mode = 0;
  // With another process, such as a shell, the window stays open anyway.
  if (GetConsoleProcessList(processes, 2) != 1 ||
      !GetConsoleMode(GetStdHandle(STD_INPUT_HANDLE), &mode)) {
    return;
  }
  std::printf("\nPress a key to close this window.\n");
  std::fflush(stdout);
  _getch();
}

// A character outside the code page becomes a question mark, which no file name has.
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
