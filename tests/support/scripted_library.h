// Libraries that do what a test's script says.

#ifndef LAUNCHER_TESTS_SUPPORT_SCRIPTED_LIBRARY_H_
#define LAUNCHER_TESTS_SUPPORT_SCRIPTED_LIBRARY_H_

#include "support/system.h"

namespace launcher::test {

// Loads the library `name` from the folder of the program and returns its script, which the
// function `getter` returns. Call it before the library under test, which then finds the scripted
// one.
template <class Script>
Script& LoadScript(const char* name, const char* getter) {
  return *reinterpret_cast<Script* (*)()>(LoadFunction(PathBeside(name), getter))();
}

}  // namespace launcher::test

#endif  // LAUNCHER_TESTS_SUPPORT_SCRIPTED_LIBRARY_H_
