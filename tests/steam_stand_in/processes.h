// Processes: a child that is killed, and this one's environment.

#ifndef LAUNCHER_TESTS_STEAM_STAND_IN_PROCESSES_H_
#define LAUNCHER_TESTS_STEAM_STAND_IN_PROCESSES_H_

#include <cstdint>
#include <string>

namespace launcher::test {

// For children too.
void SetEnvironment(const char* name, const char* value);

class Child {
 public:
  Child(const std::string& program, const std::string& argument);
  Child(const Child&) = delete;
  Child& operator=(const Child&) = delete;
  // Without warning, wherever it is. Answers false if it had ended by itself.
  bool Kill();

 private:
  std::intptr_t process_;  // its handle on Windows, elsewhere its id
};

}  // namespace launcher::test

#endif  // LAUNCHER_TESTS_STEAM_STAND_IN_PROCESSES_H_
