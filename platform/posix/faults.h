// Failures of the native layer's functions: with a Win32 reason, planned by a test, never by an
// exception. Also a count of what is open.

#ifndef LAUNCHER_PLATFORM_POSIX_FAULTS_H_
#define LAUNCHER_PLATFORM_POSIX_FAULTS_H_

#include <new>
#include <string>
#include <vector>

#include "platform/win32.h"

namespace launcher::posix {

// The Win32 error codes that the layer sets for GetLastError.
inline constexpr DWORD kErrorFileNotFound = 2;
inline constexpr DWORD kErrorAccessDenied = 5;
inline constexpr DWORD kErrorInvalidHandle = 6;
inline constexpr DWORD kErrorNotEnoughMemory = 8;
inline constexpr DWORD kErrorGeneralFailure = 31;
inline constexpr DWORD kErrorInvalidParameter = 87;
inline constexpr DWORD kErrorInsufficientBuffer = 122;
inline constexpr DWORD kErrorNoAccess = 998;

// Makes the n-th call of the native layer's function `name` from now on fail, counted from 1, and
// with `andAllAfter` every later one too. A null `name` counts the calls of all functions together.
// The text must stay valid until StopFailing. Replaces every earlier plan, also that of
// FailEveryCall.
void FailCall(const char* name, int n, bool andAllAfter = false);

// Also makes every call of the function `name` fail until StopFailing. FailCall does not count
// these calls.
void FailEveryCall(const char* name);

// Ends both plans. Returns true if any call failed because of FailCall.
bool StopFailing();

// Records the names of the layer's functions as they are called, except those that cannot fail.
// StopRecording returns them in order and forgets them.
void StartRecording();
std::vector<std::string> StopRecording();

// Returns how many handles, blocks, hashes and providers of the native layer are open.
int OpenObjectCount();

// For the layer's functions: true if this call must fail. `name` is the function's. A function that
// releases something does so before it asks, so that a planned failure leaves nothing open.
bool MustFail(const char* name);

// For the layer's functions: sets the reason for GetLastError and returns FALSE, which is 0.
BOOL Fail(DWORD error);

// For the layer's functions: counts an object that opens (1) or closes (-1).
void CountObject(int change);

// For the layer's functions: returns the result of `body`, or `failure` if memory runs out. A
// system call must not throw.
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
