// NewFile on Windows. The wide functions, since not every name has a form in the ANSI code page.

#include <algorithm>
#include <utility>

#include "platform/new_file.h"
#include "platform/win32.h"

namespace launcher {
namespace {

// In bytes for one call of WriteFile, whose size has 32 bits.
constexpr std::size_t kLargestTransfer = std::size_t{64} << 20;

HANDLE Handle(std::intptr_t handle) { return reinterpret_cast<HANDLE>(handle); }

// Returns GetLastError(), but never 0: a failure must not look like success.
SystemError LastError() {
  const DWORD error = GetLastError();
  return static_cast<SystemError>(error != 0 ? error : DWORD{ERROR_GEN_FAILURE});
}

// Sets whether the system removes the file when its last handle closes. The handles of a killed
// process close too. Fails if the file system does not support it.
BOOL SetGoesOnClose(HANDLE handle, bool goes) {
  // FileDispositionInfo, which not every version of the headers has. Its data is one BOOLEAN.
  constexpr auto kDisposition = static_cast<FILE_INFO_BY_HANDLE_CLASS>(4);
  BOOLEAN disposition = goes ? TRUE : FALSE;
  return SetFileInformationByHandle(handle, kDisposition, &disposition, sizeof disposition);
}

}  // namespace

bool MeansThatItExists(SystemError error) {
  return error == ERROR_FILE_EXISTS || error == ERROR_ALREADY_EXISTS;
}

// The sizes include the terminator, which the path must not contain.
SystemPath SystemPathOf(const char* path) {
  const int capacity = MultiByteToWideChar(CP_ACP, MB_ERR_INVALID_CHARS, path, -1, nullptr, 0);
  if (capacity == 0) return {};
  SystemPath wide(static_cast<std::size_t>(capacity), L'\0');
  const int size =
      MultiByteToWideChar(CP_ACP, MB_ERR_INVALID_CHARS, path, -1, wide.data(), capacity);
  wide.resize(size == 0 ? 0 : static_cast<std::size_t>(size) - 1);
  return wide;
}

SystemError NewFile::Create(const SystemPath& temporary) {
  Abandon();
  SystemPath name = temporary;  // before the file exists, since memory can run out here
  // DELETE is for SetGoesOnClose. Only deletion is shared, so nobody reads half a file.
  const HANDLE handle = CreateFileW(name.c_str(), GENERIC_WRITE | DELETE, FILE_SHARE_DELETE,
                                    nullptr, CREATE_NEW, FILE_ATTRIBUTE_NORMAL, nullptr);
  if (handle == INVALID_HANDLE_VALUE) return LastError();
  handle_ = reinterpret_cast<std::intptr_t>(handle);
  temporary_ = std::move(name);
  isFlushed_ = false;
  goesOnClose_ = SetGoesOnClose(handle, true) != FALSE;
  return 0;
}

SystemError NewFile::Write(const void* data, std::size_t size) {
  const char* next = static_cast<const char*>(data);
  while (size > 0) {
    DWORD count = 0;
    if (!WriteFile(Handle(handle_), next, static_cast<DWORD>(std::min(size, kLargestTransfer)),
                   &count, nullptr)) {
      return LastError();
    }
    if (count == 0) return ERROR_WRITE_FAULT;  // otherwise this loop could run for ever
    next += count;
    size -= count;
  }
  return 0;
}

SystemError NewFile::WriteText(const std::string& text) {
  std::string lines;
  for (const char c : text) {
    if (c == '\n') lines += '\r';
    lines += c;
  }
  return Write(lines.data(), lines.size());
}

SystemError NewFile::Flush() {
  isFlushed_ = true;
  return FlushFileBuffers(Handle(handle_)) ? 0 : LastError();
}

SystemError NewFile::MoveTo(const SystemPath& place, Existing existing) {
  // Before the handle closes, since closing it would remove the file.
  const HANDLE handle = Handle(handle_);
  if (goesOnClose_ && !SetGoesOnClose(handle, false)) return LastError();
  handle_ = kNone;
  if (!CloseHandle(handle)) return LastError();
  // MOVEFILE_WRITE_THROUGH: returns after the disk has the new name.
  const DWORD flags = (existing != Existing::kStays ? DWORD{MOVEFILE_REPLACE_EXISTING} : 0) |
                      (isFlushed_ ? DWORD{MOVEFILE_WRITE_THROUGH} : 0);
  if (temporary_ != place && !MoveFileExW(temporary_.c_str(), place.c_str(), flags))
    return LastError();
  temporary_.clear();
  return 0;
}

void NewFile::Abandon() {
  // Closing can already remove the file. DeleteFileW then fails, which does no harm.
  if (handle_ != kNone) CloseHandle(Handle(std::exchange(handle_, kNone)));
  if (!temporary_.empty()) DeleteFileW(temporary_.c_str());
  temporary_.clear();
}

}  // namespace launcher
