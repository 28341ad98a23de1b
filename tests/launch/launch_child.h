// What launch_child, the client of the launch tests, leaves in the current directory, for faults
// that only another process sees.
//
//   launch_child PPPPPPPPAAAAAAAA      as QX_CreateProcess starts it: writes its command line to a
//                                      file, then the data at that address, which begin with a
//                                      LaunchHeader or are a container of the C++ wrapper
//   launch_child CAPACITY ARGUMENT...  writes what QX_CommandLineToArgvA returns: the result and
//                                      the count, then each text on a line of its own

#ifndef LAUNCHER_TESTS_LAUNCH_LAUNCH_CHILD_H_
#define LAUNCHER_TESTS_LAUNCH_LAUNCH_CHILD_H_

#include <cstdint>

namespace launcher::test {

constexpr char kLineFile[] = "line.txt";
constexpr char kDataFile[] = "data.bin";
constexpr char kArgumentsFile[] = "arguments.txt";

// Before the data.
struct LaunchHeader {
  std::uint32_t exitCode;
  std::uint32_t delay;  // in milliseconds, before it reads the rest of the data
  std::uint32_t dataSize;
};

}  // namespace launcher::test

#endif  // LAUNCHER_TESTS_LAUNCH_LAUNCH_CHILD_H_
