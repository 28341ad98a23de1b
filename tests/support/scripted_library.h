// Libraries that do what a test's script says.

#ifndef LAUNCHER_TESTS_SUPPORT_SCRIPTED_LIBRARY_H_
#define LAUNCHER_TESTS_SUPPORT_SCRIPTED_LIBRARY_H_

#include "support/system.h"

namespace launcher::test {

// Loads the library `name`, which lies beside the program, and answers its script, which `getter`
// gives. To be called ahead of the library under test, which then finds the scripted one.
template <class Script>
Script& LoadScript(const char* name, const char* getter) {
  return *reinterpret_cast<Script* (*)()>(LoadFunction(PathBeside(name), getter))();
}

}  // namespace launcher::test

#endif  // LAUNCHER_TESTS_SUPPORT_SCRIPTED_LIBRARY_H_
