// What a test must know of the system it runs on.

#ifndef LAUNCHER_TESTS_SUPPORT_SYSTEM_H_
#define LAUNCHER_TESTS_SUPPORT_SYSTEM_H_

#include <string>

namespace launcher::test {

// How a line ends in a text file.
extern const char* const kLineEnd;

// The path of a program that lies beside this one.
std::string ProgramBeside(const std::string& name);

// The handles that this process has open, as the system counts them.
int OpenHandleCount();

}  // namespace launcher::test

#endif  // LAUNCHER_TESTS_SUPPORT_SYSTEM_H_
