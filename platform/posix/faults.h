// How the layer's functions fail: for a reason, on purpose, and without an exception. And a count
// of what is open.

#ifndef LAUNCHER_PLATFORM_POSIX_FAULTS_H_
#define LAUNCHER_PLATFORM_POSIX_FAULTS_H_

#include <new>
#include <string>
#include <vector>

#include "platform/win32.h"

namespace launcher::posix {

// Win32 error codes that the layer leaves.
inline constexpr DWORD kErrorFileNotFound = 2;
inline constexpr DWORD kErrorAccessDenied = 5;
inline constexpr DWORD kErrorInvalidHandle = 6;
inline constexpr DWORD kErrorNotEnoughMemory = 8;
inline constexpr DWORD kErrorGeneralFailure = 31;
inline constexpr DWORD kErrorInvalidParameter = 87;
inline constexpr DWORD kErrorInsufficientBuffer = 122;
inline constexpr DWORD kErrorNoAccess = 998;

// Makes the n-th call from now of the native layer's function `name` fail, counted from 1, and with
// `andAllAfter` every later one too. A null `name` counts the calls of all functions together.
// Replaces what was asked for before.
void FailCall(const char* name, int n, bool andAllAfter = false);

// Also makes every call of the function `name` fail, uncounted, until StopFailing.
void FailEveryCall(const char* name);

// Ends both. Returns whether any call failed because of FailCall.
bool StopFailing();

// Writes down the names of the layer's functions as they are called, but for those that cannot
// fail.
void StartRecording();
std::vector<std::string> StopRecording();

// The handles, blocks, hashes and providers of the native layer that are open at the moment.
int OpenObjectCount();

// For the layer's functions: whether this call is to fail. `name` is the function's.
bool MustFail(const char* name);

// For the layer's functions: leave the reason for GetLastError and answer FALSE.
BOOL Fail(DWORD error);

// For the layer's functions: counts an object that opens (1) or closes (-1).
void CountObject(int change);

// For the layer's functions: what `body` answers, or `failure` where it runs out of memory. A
// system call throws nothing.
template <class Result, class Body>
Result WithoutThrowing(Result failure, Body body) noexcept {
  try {
    return body();
  } catch (const std::bad_alloc&) {
    Fail(kErrorNotEnoughMemory);
    return failure;
  }
}

}  // namespace launcher::posix

#endif  // LAUNCHER_PLATFORM_POSIX_FAULTS_H_
