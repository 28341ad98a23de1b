// output_file.h and input_file.h on Windows.

#include <windows.h>

#include <algorithm>

#include "support/input_file.h"
#include "support/output_file.h"

namespace launcher {
namespace {

constexpr DWORD kShareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;

constexpr std::size_t kLargestTransfer = 64u << 20;

SystemError LastError() { return static_cast<SystemError>(GetLastError()); }

HANDLE Handle(std::intptr_t handle) { return reinterpret_cast<HANDLE>(handle); }

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

SystemError OutputFile::OpenDevice(const std::string& path, std::intptr_t* device) {
  // A device's name leads to it from every directory.
  const HANDLE there = CreateFileA(path.c_str(), GENERIC_WRITE, kShareAll, nullptr, OPEN_EXISTING,
                                   FILE_ATTRIBUTE_NORMAL, nullptr);
  if (there == INVALID_HANDLE_VALUE) return 0;
  if (GetFileType(there) == FILE_TYPE_DISK) {
    CloseHandle(there);
  } else {
    *device = reinterpret_cast<std::intptr_t>(there);
  }
  return 0;
}

SystemError OutputFile::WriteToDevice(std::intptr_t device, const void* data, std::size_t size) {
  return WriteAll(Handle(device), data, size);
}

SystemError OutputFile::CloseDevice(std::intptr_t device) {
  return CloseHandle(Handle(device)) ? 0 : LastError();
}

// A link is replaced by the new file.
std::string OutputFile::ResolvedPath(const std::string& path) { return path; }

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
