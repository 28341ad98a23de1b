// Replaces a class of GoogleTest that needs std::mutex, which the win32 flavour of the compiler
// does not have. The compiler includes this file first. GTEST_HAS_NOTIFICATION_ makes GoogleTest
// leave out its own class.

#ifndef LAUNCHER_CMAKE_GTEST_NOTIFICATION_H_
#define LAUNCHER_CMAKE_GTEST_NOTIFICATION_H_

#include <atomic>

extern "C" __declspec(dllimport) void __stdcall Sleep(unsigned long milliseconds);

namespace testing::internal {

class Notification {
 public:
  void Notify() { isNotified_ = true; }
  void WaitForNotification() {
    while (!isNotified_) ::Sleep(1);
  }

 private:
  std::atomic<bool> isNotified_{false};
};

}  // namespace testing::internal

#endif  // LAUNCHER_CMAKE_GTEST_NOTIFICATION_H_
