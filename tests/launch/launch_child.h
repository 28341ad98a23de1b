// What launch_child, the client of the launch tests, leaves in the current directory.
//
//   launch_child PPPPPPPPAAAAAAAA      as QX_CreateProcess starts it: its command line; the data at
//                                      that address; ends with the exit code that the data ask for
//   launch_child CAPACITY ARGUMENT...  the result of QX_CommandLineToArgvA, the count, and each
//   text
//                                      of the block on a line of its own

#ifndef LAUNCHER_TESTS_LAUNCH_LAUNCH_CHILD_H_
#define LAUNCHER_TESTS_LAUNCH_LAUNCH_CHILD_H_

#include <cstdint>

namespace launcher::test {

constexpr char kLineFile[] = "line.txt";
constexpr char kDataFile[] = "data.bin";
constexpr char kArgumentsFile[] = "arguments.txt";

// Ahead of the data.
struct LaunchHeader {
  std::uint32_t exitCode;
  std::uint32_t dataSize;
};

}  // namespace launcher::test

#endif  // LAUNCHER_TESTS_LAUNCH_LAUNCH_CHILD_H_
