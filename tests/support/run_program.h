// Programs that a test starts itself.

#ifndef LAUNCHER_TESTS_SUPPORT_RUN_PROGRAM_H_
#define LAUNCHER_TESTS_SUPPORT_RUN_PROGRAM_H_

#include <string>

namespace launcher::test {

// Runs a command line in the current directory to its end. Returns the exit code, or -1 if it could
// not be started.
int RunProgram(std::string commandLine);

}  // namespace launcher::test

#endif  // LAUNCHER_TESTS_SUPPORT_RUN_PROGRAM_H_
