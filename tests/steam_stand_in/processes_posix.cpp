#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <stdexcept>

#include "steam_stand_in/processes.h"

namespace launcher::test {

void SetEnvironment(const char* name, const char* value) { setenv(name, value, 1); }

Child::Child(const std::string& program, const std::string& argument) : process_(fork()) {
  if (process_ < 0) throw std::runtime_error("no process for " + program);
  if (process_ > 0) return;
  execl(program.c_str(), program.c_str(), argument.c_str(), static_cast<char*>(nullptr));
  _exit(127);
}

bool Child::Kill() {
  const auto process = static_cast<pid_t>(process_);
  kill(process, SIGKILL);
  int status = 0;
  return waitpid(process, &status, 0) == process && WIFSIGNALED(status);
}

}  // namespace launcher::test
