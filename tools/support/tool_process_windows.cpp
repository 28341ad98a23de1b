// interrupt.h, terminal.h, quiet_library.h, threads.h and large_memory.h on Windows.

#include <direct.h>
#include <fcntl.h>
#include <io.h>
#include <windows.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "support/interrupt.h"
#include "support/large_memory.h"
#include "support/quiet_library.h"
#include "support/terminal.h"
#include "support/threads.h"

namespace launcher {
namespace {

LONG isInterrupted = 0;

BOOL WINAPI SetFlag(DWORD event) {
  InterlockedExchange(&isInterrupted, 1);
  // The system ends a program whose window closes once this returns; leave it time to tidy up.
  if (event != CTRL_C_EVENT && event != CTRL_BREAK_EVENT) Sleep(4000);
  return TRUE;
}

DWORD WINAPI RunWork(void* work) {
  (*static_cast<const std::function<void()>*>(work))();
  return 0;
}

}  // namespace

void WatchForInterrupts() { SetConsoleCtrlHandler(SetFlag, TRUE); }

bool Interrupted() { return InterlockedCompareExchange(&isInterrupted, 0, 0) != 0; }

// Other devices than a console count as terminals to _isatty.
bool IsTerminal(Stream stream) {
  DWORD mode = 0;
  const DWORD names[] = {STD_INPUT_HANDLE, STD_OUTPUT_HANDLE, STD_ERROR_HANDLE};
  return GetConsoleMode(GetStdHandle(names[static_cast<int>(stream)]), &mode) != FALSE;
}

// A file's handle is no standard one here, whatever its number.
void KeepClosedStreamsClosed() {}

// Consoles show escape sequences only once asked, and not all do.
bool ShowsColour(Stream /*stream*/) { return false; }

SystemError RunQuietly(const std::function<void()>& call) {
  char temporary[MAX_PATH] = "";
  char current[MAX_PATH] = "";
  if (GetCurrentDirectoryA(sizeof current, current) == 0 ||
      GetTempPathA(sizeof temporary, temporary) == 0) {
    return static_cast<SystemError>(GetLastError());
  }
  const std::string directory = temporary + ("launcher-" + std::to_string(GetCurrentProcessId())) +
                                '-' + std::to_string(GetTickCount());
  if (!CreateDirectoryA(directory.c_str(), nullptr)) {
    return static_cast<SystemError>(GetLastError());
  }
  SystemError error = 0;
  if (!SetCurrentDirectoryA(directory.c_str())) {
    error = static_cast<SystemError>(GetLastError());
  } else {
    // The library and this program have the one runtime of the system, and so the one stdout.
    std::fflush(nullptr);
    const int nowhere = _open("NUL", _O_WRONLY);
    int copies[2];
    for (int i = 0; i < 2; ++i) {
      copies[i] = _dup(i + 1);
      if (nowhere >= 0) _dup2(nowhere, i + 1);
    }
    call();
    std::fflush(nullptr);
    for (int i = 0; i < 2; ++i) {
      if (copies[i] < 0) {
        _close(i + 1);
      } else {
        _dup2(copies[i], i + 1);
        _close(copies[i]);
      }
    }
    if (nowhere > 2) _close(nowhere);
    DeleteFileA("config.json");
    if (!SetCurrentDirectoryA(current)) error = static_cast<SystemError>(GetLastError());
  }
  RemoveDirectoryA(directory.c_str());
  return error;
}

int ProcessorCount() {
  SYSTEM_INFO information = {};
  GetSystemInfo(&information);
  return std::max(1, static_cast<int>(information.dwNumberOfProcessors));
}

void RunInThreads(int count, const std::function<void()>& work,
                  const std::function<void()>& watch) {
  std::vector<HANDLE> threads;
  for (int i = 0; i < count; ++i) {
    const HANDLE thread =
        CreateThread(nullptr, 0, RunWork, const_cast<std::function<void()>*>(&work), 0, nullptr);
    if (thread != nullptr) threads.push_back(thread);
  }
  if (threads.empty()) {
    work();
    return;
  }
  for (const HANDLE thread : threads) {
    while (WaitForSingleObject(thread, 50) == WAIT_TIMEOUT) watch();
    CloseHandle(thread);
  }
}

// Only with a privilege that users lack.
void PreferLargePages(void* /*block*/, std::size_t /*size*/) {}

void EndAtOnce(int exitCode) {
  TerminateProcess(GetCurrentProcess(), static_cast<UINT>(exitCode));
  std::abort();  // not reached
}

}  // namespace launcher
