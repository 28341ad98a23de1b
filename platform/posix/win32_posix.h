// The native layer: the Win32 names that the library uses, on Linux.
//
// It exists so that the sources of src/ run natively under sanitizers, fuzzers and coverage. Each
// function does what the Windows one does, as far as the library uses it, with real processes,
// memory, files and digests. What Linux cannot do fails, as a call of Windows would. By faults.h a
// test can make any function fail.
//
// The comments describe only what differs from Windows.

#ifndef LAUNCHER_PLATFORM_POSIX_WIN32_POSIX_H_
#define LAUNCHER_PLATFORM_POSIX_WIN32_POSIX_H_

#include <cstddef>
#include <cstdint>
#include <cstdio>

#define WINAPI

using BOOL = int;
using BYTE = std::uint8_t;
using DWORD = std::uint32_t;
using UINT = std::uint32_t;
using SIZE_T = std::size_t;
using HANDLE = void*;
using HINSTANCE = void*;
using HLOCAL = void*;
using LPVOID = void*;
using ALG_ID = std::uint32_t;
using HCRYPTPROV = std::uintptr_t;
using HCRYPTHASH = std::uintptr_t;
using HCRYPTKEY = std::uintptr_t;

inline constexpr BOOL FALSE = 0;
inline constexpr BOOL TRUE = 1;

DWORD GetLastError();

// ---- Processes ----

inline constexpr DWORD CREATE_NEW_CONSOLE = 0x10;
inline constexpr DWORD PROCESS_VM_READ = 0x10;
inline constexpr DWORD STILL_ACTIVE = 259;
inline constexpr DWORD WAIT_OBJECT_0 = 0;
inline constexpr DWORD WAIT_TIMEOUT = 258;
inline constexpr DWORD WAIT_FAILED = 0xFFFFFFFF;

struct STARTUPINFOA {
  DWORD cb;
};

struct PROCESS_INFORMATION {
  HANDLE hProcess;
  HANDLE hThread;
  DWORD dwProcessId;
  DWORD dwThreadId;
};

DWORD GetCurrentProcessId();
DWORD GetCurrentThreadId();

// With full access or PROCESS_VM_READ only. The kernel decides what is permitted when the process's
// memory is read or written.
HANDLE OpenProcess(DWORD access, BOOL inheritHandle, DWORD processId);

// Takes the program from the start of the command line and the rest as its arguments, by the rules
// of CommandLineToArgvW. The child keeps the standard streams, inherits no other descriptor, and
// may read this process's memory, as any child of the same user may on Windows. Only what the
// library passes is accepted: no application name, attributes, environment or directory. The system
// cuts an exit code to 8 bits; if signal N ends a child, its exit code is 0x80000000 + N.
BOOL CreateProcessA(const char* application, char* commandLine, void* processAttributes,
                    void* threadAttributes, BOOL inheritHandles, DWORD flags, void* environment,
                    const char* directory, STARTUPINFOA* startup, PROCESS_INFORMATION* started);
BOOL GetExitCodeProcess(HANDLE process, DWORD* exitCode);

// Takes a process handle and a time of 0 only, so it never waits.
DWORD WaitForSingleObject(HANDLE object, DWORD milliseconds);

BOOL CloseHandle(HANDLE object);
void Sleep(DWORD milliseconds);

// ---- Memory ----

inline constexpr DWORD MEM_COMMIT = 0x1000;
inline constexpr DWORD MEM_RESERVE = 0x2000;
inline constexpr DWORD MEM_RELEASE = 0x8000;
inline constexpr DWORD PAGE_READWRITE = 4;
inline constexpr UINT LMEM_FIXED = 0;

// In this process only, and below 4 GiB, since the library passes addresses on as 32 bits.
void* VirtualAllocEx(HANDLE process, void* address, SIZE_T size, DWORD type, DWORD protection);
BOOL VirtualFreeEx(HANDLE process, void* address, SIZE_T size, DWORD type);
BOOL WriteProcessMemory(HANDLE process, void* address, const void* data, SIZE_T size,
                        SIZE_T* written);
BOOL ReadProcessMemory(HANDLE process, const void* address, void* buffer, SIZE_T size,
                       SIZE_T* read);

HLOCAL LocalAlloc(UINT flags, SIZE_T size);
HLOCAL LocalFree(HLOCAL block);

// ---- Files; a backslash separates names as a slash does ----

inline constexpr int _SH_DENYNO = 0x40;

std::FILE* _fsopen(const char* path, const char* mode, int share);

// The attribute makes the compiler check the arguments against the format.
int printf_s(const char* format, ...) __attribute__((format(printf, 1, 2)));

struct __stat64 {
  std::int64_t st_size;
};
int _stat64(const char* path, struct __stat64* status);

inline const HANDLE INVALID_HANDLE_VALUE = reinterpret_cast<HANDLE>(std::intptr_t{-1});
inline constexpr DWORD INVALID_FILE_ATTRIBUTES = 0xFFFFFFFF;
inline constexpr DWORD FILE_ATTRIBUTE_READONLY = 0x1;
inline constexpr DWORD FILE_ATTRIBUTE_DIRECTORY = 0x10;
inline constexpr DWORD FILE_ATTRIBUTE_NORMAL = 0x80;
inline constexpr DWORD FILE_ATTRIBUTE_REPARSE_POINT = 0x400;

// A file is read-only if its owner may not write it. A symbolic link to a directory is a directory
// and a reparse point; any other link counts as a file.
DWORD GetFileAttributesA(const char* path);

inline constexpr DWORD FILE_LIST_DIRECTORY = 0x1;
inline constexpr DWORD FILE_SHARE_READ = 0x1;
inline constexpr DWORD FILE_SHARE_WRITE = 0x2;
inline constexpr DWORD OPEN_EXISTING = 3;
inline constexpr DWORD FILE_FLAG_BACKUP_SEMANTICS = 0x02000000;
inline constexpr DWORD FILE_FLAG_OPEN_REPARSE_POINT = 0x00200000;

// Opens a directory with FILE_LIST_DIRECTORY, and with FILE_FLAG_OPEN_REPARSE_POINT also a link
// itself. Unlike on Windows, the handle does not prevent others from moving the directory.
HANDLE CreateFileA(const char* path, DWORD access, DWORD share, void* security, DWORD creation,
                   DWORD flags, HANDLE pattern);

struct BY_HANDLE_FILE_INFORMATION {
  DWORD dwFileAttributes;
};
BOOL GetFileInformationByHandle(HANDLE file, BY_HANDLE_FILE_INFORMATION* information);

struct WIN32_FIND_DATAA {
  DWORD dwFileAttributes;
  char cFileName[260];
};

// Takes a directory's path followed by "\*.*", which finds all names, but no network path. The
// names are those that exist at the first call, in ascending order.
HANDLE FindFirstFileA(const char* pattern, WIN32_FIND_DATAA* entry);
BOOL FindNextFileA(HANDLE listing, WIN32_FIND_DATAA* entry);
BOOL FindClose(HANDLE listing);

// Refuses a directory, a link to one, and a file that is read-only.
BOOL DeleteFileA(const char* path);

// Removes an empty directory, or a link to any.
BOOL RemoveDirectoryA(const char* path);

// ---- The time ----

// Seconds since 1970; `now` may be null.
std::int64_t _time64(std::int64_t* now);

// ---- The command line; the ANSI code page is UTF-8 and a wide character is a code point ----

inline constexpr UINT CP_ACP = 0;

// False for every byte.
BOOL IsDBCSLeadByte(BYTE byte);

char* GetCommandLineA();
wchar_t* GetCommandLineW();
wchar_t** CommandLineToArgvW(const wchar_t* commandLine, int* count);

// From NUL-terminated text (a length of -1) in code page 0 only.
int WideCharToMultiByte(UINT codePage, DWORD flags, const wchar_t* text, int length,
                        char* destination, int capacity, const char* defaultCharacter,
                        BOOL* usedDefault);

// ---- SHA-256, by libcrypto ----

using NTSTATUS = std::int32_t;
using BCRYPT_ALG_HANDLE = void*;
using BCRYPT_HASH_HANDLE = void*;

inline bool BCRYPT_SUCCESS(NTSTATUS status) { return status >= 0; }

// With the pseudo-handle of SHA-256 only.
NTSTATUS BCryptCreateHash(BCRYPT_ALG_HANDLE algorithm, BCRYPT_HASH_HANDLE* hash, BYTE* object,
                          DWORD objectSize, BYTE* secret, DWORD secretSize, DWORD flags);
NTSTATUS BCryptHashData(BCRYPT_HASH_HANDLE hash, BYTE* data, DWORD size, DWORD flags);
NTSTATUS BCryptFinishHash(BCRYPT_HASH_HANDLE hash, BYTE* digest, DWORD size, DWORD flags);
NTSTATUS BCryptDestroyHash(BCRYPT_HASH_HANDLE hash);

inline constexpr DWORD PROV_RSA_AES = 24;
inline constexpr DWORD CRYPT_VERIFYCONTEXT = 0xF0000000;
inline constexpr ALG_ID CALG_SHA_256 = 0x800C;
inline constexpr DWORD HP_HASHVAL = 2;

BOOL CryptAcquireContextA(HCRYPTPROV* provider, const char* container, const char* name, DWORD type,
                          DWORD flags);
BOOL CryptCreateHash(HCRYPTPROV provider, ALG_ID algorithm, HCRYPTKEY key, DWORD flags,
                     HCRYPTHASH* hash);
BOOL CryptHashData(HCRYPTHASH hash, const BYTE* data, DWORD size, DWORD flags);
BOOL CryptGetHashParam(HCRYPTHASH hash, DWORD parameter, BYTE* value, DWORD* size, DWORD flags);
BOOL CryptDestroyHash(HCRYPTHASH hash);
BOOL CryptReleaseContext(HCRYPTPROV provider, DWORD flags);

#endif  // LAUNCHER_PLATFORM_POSIX_WIN32_POSIX_H_
