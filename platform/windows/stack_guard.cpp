// What -fstack-protector needs at run time. GCC's own library for it, libssp, acquires a
// cryptographic provider whenever a program or a DLL is loaded: that takes milliseconds, and loads
// libraries while the loader holds its lock.

#include <cstdint>

#include "platform/win32.h"

// The names and types that the compiler requires.
// NOLINTBEGIN(bugprone-reserved-identifier)
extern "C" {
std::uintptr_t __stack_chk_guard = 0;
[[noreturn]] void __stack_chk_fail();
}

// Ends the process without calling exception handlers: an attacker could have chosen one.
void __stack_chk_fail() {
#if defined(__i386__) || defined(__x86_64__)
  // The fast failure of Windows 8 and later, which also reports the crash. As Microsoft's
  // __fastfail, which GCC does not have.
  constexpr int kStackCookieCheckFailure = 2;
  if (IsProcessorFeaturePresent(PF_FASTFAIL_AVAILABLE)) {
    __asm__ volatile("int $0x29" : : "c"(kStackCookieCheckFailure));
  }
#endif
  constexpr UINT kStackBufferOverrun = 0xC0000409;
  TerminateProcess(GetCurrentProcess(), kStackBufferOverrun);
  __builtin_trap();
}

namespace launcher {
namespace {

// Chooses a value that differs between processes, from the sources that Microsoft's compilers use
// for the same purpose. Runs before the constructors of C++, at the first priority that is not
// reserved. It has no stack protector itself: that would find another value at the end of the
// function than at its start.
__attribute__((constructor(101), no_stack_protector)) void ChooseGuard() {
  FILETIME time = {};
  GetSystemTimeAsFileTime(&time);
  LARGE_INTEGER counter = {};
  QueryPerformanceCounter(&counter);
  const std::uintptr_t values[] = {time.dwLowDateTime,
                                   time.dwHighDateTime,
                                   counter.u.LowPart,
                                   GetCurrentProcessId(),
                                   GetCurrentThreadId(),
                                   reinterpret_cast<std::uintptr_t>(&time),
                                   reinterpret_cast<std::uintptr_t>(&__stack_chk_guard)};
  // FNV-1a, by words: http://www.isthe.com/chongo/tech/comp/fnv/
  std::uintptr_t guard = 0x811C9DC5;
  for (const std::uintptr_t value : values) guard = (guard ^ value) * 0x01000193;
  __stack_chk_guard = guard;
}

}  // namespace
}  // namespace launcher
// NOLINTEND(bugprone-reserved-identifier)
