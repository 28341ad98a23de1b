// What launch_child, the client of the launch tests, leaves in the current directory, for faults
// that only another process sees: its command line, and the data at the address in that line, which
// begin with a LaunchHeader or are a container of the C++ wrapper.

#ifndef LAUNCHER_TESTS_LAUNCH_LAUNCH_CHILD_H_
#define LAUNCHER_TESTS_LAUNCH_LAUNCH_CHILD_H_

#include <cstdint>

namespace launcher::test {

constexpr char kLineFile[] = "line.txt";
constexpr char kDataFile[] = "data.bin";

// Before the data.
struct LaunchHeader {
  std::uint32_t exitCode;
  std::uint32_t delay;  // in milliseconds, before it reads the rest of the data
  std::uint32_t dataSize;
};

}  // namespace launcher::test

#endif  // LAUNCHER_TESTS_LAUNCH_LAUNCH_CHILD_H_
