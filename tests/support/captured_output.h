// The output of the process.

#ifndef LAUNCHER_TESTS_SUPPORT_CAPTURED_OUTPUT_H_
#define LAUNCHER_TESTS_SUPPORT_CAPTURED_OUTPUT_H_

#include <gtest/gtest.h>

#include <algorithm>
#include <string>

namespace launcher::test {

// Run `body` and return what it printed, with "\n" as line end on every platform.
template <class Body>
std::string StandardOutputOf(Body body) {
  testing::internal::CaptureStdout();
  body();
  std::string text = testing::internal::GetCapturedStdout();
  text.erase(std::remove(text.begin(), text.end(), '\r'), text.end());
  return text;
}

template <class Body>
std::string StandardErrorOf(Body body) {
  testing::internal::CaptureStderr();
  body();
  std::string text = testing::internal::GetCapturedStderr();
  text.erase(std::remove(text.begin(), text.end(), '\r'), text.end());
  return text;
}

// The line that each lookup prints.
inline std::string CallLine(int label) {
  return "QX_LoadStringToMemory called with label: " + std::to_string(label) + "\n";
}

}  // namespace launcher::test

#endif  // LAUNCHER_TESTS_SUPPORT_CAPTURED_OUTPUT_H_
