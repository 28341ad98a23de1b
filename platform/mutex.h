// A lock for std::lock_guard. It is not std::mutex, since some compilers for Windows have none.

#ifndef LAUNCHER_PLATFORM_MUTEX_H_
#define LAUNCHER_PLATFORM_MUTEX_H_

#if defined(_WIN32)
#include "platform/win32.h"
#else
#include <mutex>
#endif

namespace launcher {

#if defined(_WIN32)
class Mutex {
 public:
  Mutex() = default;
  Mutex(const Mutex&) = delete;
  Mutex& operator=(const Mutex&) = delete;
  // The standard's names.
  // NOLINTBEGIN(readability-identifier-naming)
  void lock() { AcquireSRWLockExclusive(&lock_); }
  void unlock() { ReleaseSRWLockExclusive(&lock_); }
  // NOLINTEND(readability-identifier-naming)

 private:
  SRWLOCK lock_ = SRWLOCK_INIT;
};
#else
using Mutex = std::mutex;
#endif

}  // namespace launcher

#endif  // LAUNCHER_PLATFORM_MUTEX_H_
