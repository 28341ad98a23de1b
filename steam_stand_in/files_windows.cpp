#include <algorithm>
#include <limits>

#include "platform/owners.h"
#include "platform/win32.h"
#include "steam_stand_in/files.h"
// This needs <windows.h> first.
#include <bcrypt.h>

namespace launcher::stand_in {
namespace {

// A failed CreateFileW returns INVALID_HANDLE_VALUE; an empty KernelHandle is null.
KernelHandle Open(const Path& path, DWORD access, DWORD sharing, DWORD disposition) {
  const HANDLE file = CreateFileW(path.c_str(), access, sharing, nullptr, disposition,
                                  FILE_ATTRIBUTE_NORMAL, nullptr);
  return KernelHandle(file == INVALID_HANDLE_VALUE ? nullptr : file);
}

// ReadFile takes a size of 32 bits.
DWORD Step(std::size_t left) {
  constexpr std::size_t kLargest = std::numeric_limits<DWORD>::max();
  return static_cast<DWORD>(std::min(left, kLargest));
}

std::wstring EnvironmentText(const wchar_t* name) {
  std::wstring text;
  // The variable may grow between two calls.
  DWORD capacity = GetEnvironmentVariableW(name, nullptr, 0);
  while (capacity > text.size()) {
    text.resize(capacity);
    capacity = GetEnvironmentVariableW(name, text.data(), capacity);
  }
  text.resize(capacity);
  return text;
}

Path ProgramPath() {
  std::wstring text(MAX_PATH, L'\0');
  DWORD length = GetModuleFileNameW(nullptr, text.data(), static_cast<DWORD>(text.size()));
  while (length == text.size()) {
    text.resize(text.size() * 2);
    length = GetModuleFileNameW(nullptr, text.data(), static_cast<DWORD>(text.size()));
  }
  text.resize(length);
  return text;
}

}  // namespace

Path StandInFolder() {
  const std::wstring named = EnvironmentText(L"STEAM_STAND_IN");
  if (!named.empty()) return std::filesystem::absolute(named).make_preferred();
  return ProgramPath().parent_path() / L"steam_stand_in";
}

std::optional<std::string> NarrowText(const Path& path) {
  const std::wstring& wide = path.native();
  const int length = static_cast<int>(wide.size());
  // A similar character in its place would lead to another folder.
  BOOL isLossy = FALSE;
  const int size = WideCharToMultiByte(CP_ACP, WC_NO_BEST_FIT_CHARS, wide.data(), length, nullptr,
                                       0, nullptr, &isLossy);
  if (size == 0 || isLossy) return std::nullopt;
  std::string text(static_cast<std::size_t>(size), '\0');
  WideCharToMultiByte(CP_ACP, WC_NO_BEST_FIT_CHARS, wide.data(), length, text.data(), size, nullptr,
                      nullptr);
  return text;
}

bool FillRandom(void* buffer, std::size_t size) {
  return BCryptGenRandom(nullptr, static_cast<UCHAR*>(buffer), static_cast<ULONG>(size),
                         BCRYPT_USE_SYSTEM_PREFERRED_RNG) == 0;
}

bool IsLink(const Path& path) {
  const DWORD attributes = GetFileAttributesW(path.c_str());
  return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0;
}

std::optional<std::size_t> ReadStart(const Path& path, void* buffer, std::size_t capacity) {
  // Another process may replace the file while this one reads it.
  constexpr DWORD kAllSharing = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;
  const KernelHandle file = Open(path, GENERIC_READ, kAllSharing, OPEN_EXISTING);
  if (!file) return std::nullopt;
  std::size_t offset = 0;
  while (offset < capacity) {
    DWORD count = 0;
    if (!ReadFile(file.Get(), static_cast<char*>(buffer) + offset, Step(capacity - offset), &count,
                  nullptr)) {
      return std::nullopt;
    }
    if (count == 0) break;
    offset += count;
  }
  return offset;
}

unsigned long OwnProcessId() { return GetCurrentProcessId(); }

bool IsProcessRunning(unsigned long id) {
  const KernelHandle process(OpenProcess(SYNCHRONIZE, FALSE, id));
  if (!process) return GetLastError() == ERROR_ACCESS_DENIED;
  constexpr DWORD kNoWaiting = 0;
  return WaitForSingleObject(process.Get(), kNoWaiting) == WAIT_TIMEOUT;
}

}  // namespace launcher::stand_in
