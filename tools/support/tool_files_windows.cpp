// new_file.h and input_file.h on Windows.

#include <windows.h>

#include <algorithm>
#include <cstdio>

#include "support/input_file.h"
#include "support/new_file.h"

namespace launcher {
namespace {

constexpr DWORD kShareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;

constexpr std::size_t kLargestTransfer = 64u << 20;

// Not in every version of the headers as a number for the call below.
constexpr auto kDisposition = static_cast<FILE_INFO_BY_HANDLE_CLASS>(4);

SystemError LastError() { return static_cast<SystemError>(GetLastError()); }

HANDLE Handle(std::intptr_t handle) { return reinterpret_cast<HANDLE>(handle); }

// Whether the system removes the file once the last handle to it closes, also that of a process
// that was ended.
bool SetGoesOnClose(HANDLE handle, bool goes) {
  BOOLEAN disposition = goes ? TRUE : FALSE;
  return SetFileInformationByHandle(handle, kDisposition, &disposition, sizeof disposition) !=
         FALSE;
}

std::string TemporaryNameBeside(const std::string& path) {
  static LONG number = 0;
  LARGE_INTEGER now = {};
  QueryPerformanceCounter(&now);
  char name[64];
  std::snprintf(name, sizeof name, ".new-%08lx%08lx%08lx.tmp", GetCurrentProcessId(), now.LowPart,
                static_cast<unsigned long>(InterlockedIncrement(&number)));
  const std::size_t separator = path.find_last_of("\\/:");
  return (separator == std::string::npos ? "" : path.substr(0, separator + 1)) + name;
}

SystemError WriteAll(HANDLE handle, const void* data, std::size_t size) {
  const char* next = static_cast<const char*>(data);
  while (size > 0) {
    DWORD written = 0;
    if (!WriteFile(handle, next, static_cast<DWORD>(std::min(size, kLargestTransfer)), &written,
                   nullptr)) {
      return LastError();
    }
    next += written;
    size -= written;
  }
  return 0;
}

}  // namespace

std::string SystemErrorText(SystemError error) {
  char text[512] = "";
  DWORD length = FormatMessageA(FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS, nullptr,
                                static_cast<DWORD>(error), 0, text, sizeof text, nullptr);
  while (length > 0 &&
         (static_cast<unsigned char>(text[length - 1]) <= ' ' || text[length - 1] == '.')) {
    --length;
  }
  return length > 0 ? std::string(text, length) : "system error " + std::to_string(error);
}

bool MeansThatItExists(SystemError error) {
  return error == ERROR_ALREADY_EXISTS || error == ERROR_FILE_EXISTS;
}

bool MeansThatTheDiskIsFull(SystemError error) {
  return error == ERROR_DISK_FULL || error == ERROR_HANDLE_DISK_FULL ||
         error == 1295;  // ERROR_DISK_QUOTA_EXCEEDED
}

bool HasFileAt(const std::string& path) {
  if (GetFileAttributesA(path.c_str()) == INVALID_FILE_ATTRIBUTES) return false;
  const HANDLE there = CreateFileA(path.c_str(), 0, kShareAll, nullptr, OPEN_EXISTING,
                                   FILE_FLAG_BACKUP_SEMANTICS, nullptr);
  if (there == INVALID_HANDLE_VALUE) return true;
  const bool isFile = GetFileType(there) == FILE_TYPE_DISK;
  CloseHandle(there);
  return isFile;
}

SystemError MakeDirectory(const std::string& path) {
  if (CreateDirectoryA(path.c_str(), nullptr)) return 0;
  const SystemError error = LastError();
  const DWORD attributes = GetFileAttributesA(path.c_str());
  const bool isThere =
      attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
  return isThere ? 0 : error;
}

std::string FileNameOf(const std::string& path) {
  return path.substr(path.find_last_of("\\/:") + 1);
}

std::string PathIn(const std::string& directory, const std::string& name) {
  return directory + '\\' + name;
}

SystemError NewFile::Open(const std::string& path) {
  Abandon();
  place_ = path;
  // A device's name leads to it from every directory.
  const HANDLE there = CreateFileA(path.c_str(), GENERIC_WRITE, kShareAll, nullptr, OPEN_EXISTING,
                                   FILE_ATTRIBUTE_NORMAL, nullptr);
  if (there != INVALID_HANDLE_VALUE) {
    isDirect_ = GetFileType(there) != FILE_TYPE_DISK;
    if (isDirect_) {
      handle_ = reinterpret_cast<std::intptr_t>(there);
      return 0;
    }
    CloseHandle(there);
  }
  isDirect_ = false;
  temporary_ = TemporaryNameBeside(path);
  const HANDLE handle =
      CreateFileA(temporary_.c_str(), GENERIC_WRITE | DELETE, FILE_SHARE_READ | FILE_SHARE_DELETE,
                  nullptr, CREATE_NEW, FILE_ATTRIBUTE_NORMAL, nullptr);
  if (handle == INVALID_HANDLE_VALUE) {
    temporary_.clear();
    return LastError();
  }
  handle_ = reinterpret_cast<std::intptr_t>(handle);
  // Where the file system has no such thing, a killed process leaves the file, and only that.
  SetGoesOnClose(handle, true);
  return 0;
}

SystemError NewFile::Write(const void* data, std::size_t size) {
  return WriteAll(Handle(handle_), data, size);
}

SystemError NewFile::Commit(Existing existing, bool isSafe) {
  const HANDLE handle = Handle(handle_);
  if (isSafe && !isDirect_ && !FlushFileBuffers(handle)) return LastError();
  if (!isDirect_ && !SetGoesOnClose(handle, false)) {
    // It never was to go, unless the answer is about something else.
    const SystemError error = LastError();
    if (error != ERROR_INVALID_PARAMETER && error != ERROR_NOT_SUPPORTED) return error;
  }
  handle_ = -1;
  if (!CloseHandle(handle)) return LastError();
  if (isDirect_) return 0;
  const DWORD flags = (existing == Existing::kReplaced ? DWORD{MOVEFILE_REPLACE_EXISTING} : 0) |
                      (isSafe ? DWORD{MOVEFILE_WRITE_THROUGH} : 0);
  if (!MoveFileExA(temporary_.c_str(), place_.c_str(), flags)) return LastError();
  temporary_.clear();
  return 0;
}

void NewFile::Abandon() {
  if (handle_ != -1) CloseHandle(Handle(handle_));
  handle_ = -1;
  if (!temporary_.empty()) DeleteFileA(temporary_.c_str());
  temporary_.clear();
}

// The system removes them by itself: they go on close.
void AbandonNewFiles() {}

InputFile::~InputFile() {
  if (isOwned_ && handle_ != -1) CloseHandle(Handle(handle_));
}

SystemError InputFile::Open(const std::string& path) {
  isOwned_ = true;
  // The flag has a directory open too, so that it is known as one.
  handle_ = reinterpret_cast<std::intptr_t>(CreateFileA(
      path.c_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
      OPEN_EXISTING, FILE_FLAG_SEQUENTIAL_SCAN | FILE_FLAG_BACKUP_SEMANTICS, nullptr));
  return handle_ == -1 ? LastError() : 0;
}

void InputFile::OpenStandardInput() {
  isOwned_ = false;
  handle_ = reinterpret_cast<std::intptr_t>(GetStdHandle(STD_INPUT_HANDLE));
}

bool InputFile::IsDirectory() const {
  BY_HANDLE_FILE_INFORMATION information = {};
  return GetFileInformationByHandle(Handle(handle_), &information) &&
         (information.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
}

std::optional<std::uint64_t> InputFile::Size() const {
  LARGE_INTEGER size = {};
  LARGE_INTEGER position = {};
  if (GetFileType(Handle(handle_)) != FILE_TYPE_DISK || !GetFileSizeEx(Handle(handle_), &size)) {
    return {};
  }
  // A redirected file may have been read from already.
  SetFilePointerEx(Handle(handle_), {}, &position, FILE_CURRENT);
  return static_cast<std::uint64_t>(std::max<LONGLONG>(size.QuadPart - position.QuadPart, 0));
}

SystemError InputFile::Read(void* data, std::size_t size, std::size_t* readSize) {
  DWORD count = 0;
  const BOOL isRead = ReadFile(
      Handle(handle_), data, static_cast<DWORD>(std::min(size, kLargestTransfer)), &count, nullptr);
  *readSize = count;
  // A pipe ends so when its writer has gone.
  return isRead || GetLastError() == ERROR_BROKEN_PIPE ? 0 : LastError();
}

std::optional<std::uint64_t> SizeOfFileAt(const std::string& path) {
  WIN32_FILE_ATTRIBUTE_DATA data = {};
  if (!GetFileAttributesExA(path.c_str(), GetFileExInfoStandard, &data) ||
      (data.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0) {
    return {};
  }
  return std::uint64_t{data.nFileSizeHigh} << 32 | data.nFileSizeLow;
}

SystemError WriteToStandardOutput(const void* data, std::size_t size) {
  return WriteAll(GetStdHandle(STD_OUTPUT_HANDLE), data, size);
}

}  // namespace launcher
