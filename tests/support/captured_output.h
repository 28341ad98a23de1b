// The output of the process.

#ifndef LAUNCHER_TESTS_SUPPORT_CAPTURED_OUTPUT_H_
#define LAUNCHER_TESTS_SUPPORT_CAPTURED_OUTPUT_H_

#include <gtest/gtest.h>

#include <algorithm>
#include <string>

namespace launcher::test {

// The text with "\n" as line end on every platform.
inline std::string WithoutReturns(std::string text) {
  text.erase(std::remove(text.begin(), text.end(), '\r'), text.end());
  return text;
}

// Run `body` and return what it printed.
template <class Body>
std::string StandardOutputOf(Body body) {
  testing::internal::CaptureStdout();
  body();
  return WithoutReturns(testing::internal::GetCapturedStdout());
}

template <class Body>
std::string StandardErrorOf(Body body) {
  testing::internal::CaptureStderr();
  body();
  return WithoutReturns(testing::internal::GetCapturedStderr());
}

// The line that each lookup prints.
inline std::string CallLine(int label) {
  return "QX_LoadStringToMemory called with label: " + std::to_string(label) + "\n";
}

}  // namespace launcher::test

#endif  // LAUNCHER_TESTS_SUPPORT_CAPTURED_OUTPUT_H_
