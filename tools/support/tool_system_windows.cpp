// output_file.h, process.h and terminal.h for Windows.

#include <fcntl.h>
#include <io.h>
#include <windows.h>

#include <cstdlib>
#include <vector>

#include "support/output_file.h"
#include "support/process.h"
#include "support/terminal.h"

namespace launcher {
namespace {

namespace fs = std::filesystem;

LONG isInterrupted = 0;

BOOL WINAPI SetFlag(DWORD event) {
  InterlockedExchange(&isInterrupted, 1);
  // If the window closes, the system ends the program when this returns: leave time to clean up.
  if (event != CTRL_C_EVENT && event != CTRL_BREAK_EVENT) Sleep(4000);
  return TRUE;
}

DWORD WINAPI RunWork(void* work) {
  (*static_cast<const std::function<void()>*>(work))();
  return 0;
}

}  // namespace

const char* const kNullDevice = "NUL";

// A character outside the code page becomes a question mark. No file name has one, so opening such
// a file fails.
std::string NarrowText(const fs::path& path) {
  const std::wstring& wide = path.native();
  std::string text(wide.size() * 2, '\0');
  const int size =
      WideCharToMultiByte(CP_ACP, WC_NO_BEST_FIT_CHARS, wide.data(), static_cast<int>(wide.size()),
                          text.data(), static_cast<int>(text.size()), "?", nullptr);
  text.resize(static_cast<std::size_t>(size));
  return text;
}

std::string SystemErrorText(SystemError error) {
  char words[512] = "";
  FormatMessageA(FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS, nullptr,
                 static_cast<DWORD>(error), 0, words, sizeof words, nullptr);
  std::string text = words;
  text.resize(text.find_last_not_of(". \r\n") + 1);
  return text.empty() ? "system error " + std::to_string(error) : text;
}

// If a stream writes too few bytes and the system reports no error, the disk is full.
SystemError LastFileError() {
  return static_cast<SystemError>(_doserrno != 0 ? _doserrno : ERROR_DISK_FULL);
}

bool MeansFullDisk(SystemError error) {
  return error == ERROR_DISK_FULL || error == ERROR_HANDLE_DISK_FULL ||
         error == 1295;  // ERROR_DISK_QUOTA_EXCEEDED
}

bool MeansNoReader(SystemError error) {
  return error == ERROR_NO_DATA || error == ERROR_BROKEN_PIPE || error == ERROR_PIPE_NOT_CONNECTED;
}

// Opens the path, since names such as NUL are devices in every directory.
bool IsDevice(const std::string& path) {
  constexpr DWORD kShareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;
  const HANDLE there = CreateFileA(path.c_str(), 0, kShareAll, nullptr, OPEN_EXISTING, 0, nullptr);
  if (there == INVALID_HANDLE_VALUE) return false;
  const bool isFile = GetFileType(there) == FILE_TYPE_DISK;
  CloseHandle(there);
  return !isFile;
}

bool IsLink(const fs::path& path) {
  const DWORD attributes = GetFileAttributesW(path.c_str());
  return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0;
}

void UseBinaryStreams() {
  _setmode(_fileno(stdin), _O_BINARY);
  _setmode(_fileno(stdout), _O_BINARY);
}

SystemError MakePrivateFolder(fs::path* folder) {
  wchar_t temporary[MAX_PATH] = L"";
  GetTempPathW(MAX_PATH, temporary);
  *folder = temporary + (L"launcher-" + std::to_wstring(GetCurrentProcessId())) + L'-' +
            std::to_wstring(GetTickCount());
  return CreateDirectoryW(folder->c_str(), nullptr) ? 0 : static_cast<SystemError>(GetLastError());
}

void SetPermissions(const fs::path& /*file*/, fs::perms /*permissions*/) {}

void WatchForInterrupts() { SetConsoleCtrlHandler(SetFlag, TRUE); }

bool Interrupted() { return InterlockedCompareExchange(&isInterrupted, 0, 0) != 0; }

// Not _isatty, which also returns true for other devices than a console.
bool IsTerminal(Stream stream) {
  DWORD mode = 0;
  const DWORD names[] = {STD_INPUT_HANDLE, STD_OUTPUT_HANDLE, STD_ERROR_HANDLE};
  return GetConsoleMode(GetStdHandle(names[static_cast<int>(stream)]), &mode) != FALSE;
}

// Not needed: on Windows a file's handle does not become a standard one.
void KeepClosedStreamsClosed() {}

// Consoles show escape sequences only after a request, and old ones not at all.
bool ShowsColour(Stream /*stream*/) { return false; }

int ProcessorCount() {
  SYSTEM_INFO system = {};
  GetSystemInfo(&system);
  return static_cast<int>(system.dwNumberOfProcessors);
}

void RunInThreads(int count, const std::function<void()>& work,
                  const std::function<void()>& watch) {
  std::vector<HANDLE> threads;
  for (int i = 0; i < count; ++i) {
    const HANDLE thread =
        CreateThread(nullptr, 0, RunWork, const_cast<std::function<void()>*>(&work), 0, nullptr);
    if (thread != nullptr) threads.push_back(thread);
  }
  if (threads.empty()) work();
  for (const HANDLE thread : threads) {
    while (WaitForSingleObject(thread, 50) == WAIT_TIMEOUT) watch();
    CloseHandle(thread);
  }
}

void EndAtOnce(int exitCode) {
  TerminateProcess(GetCurrentProcess(), static_cast<UINT>(exitCode));
  std::abort();  // not reached
}

}  // namespace launcher
