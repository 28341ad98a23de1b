// A Direct3D 9 that answers what a test tells it to.
//
// It is a library of the true one's name, loaded by the test before the first call of the library
// under test, which then finds it there.

#ifndef LAUNCHER_TESTS_HOST_SCRIPTED_D3D9_H_
#define LAUNCHER_TESTS_HOST_SCRIPTED_D3D9_H_

#include <cstdint>
#include <vector>

#include "support/failure_plan.h"

namespace launcher::test {

struct Direct3DScript {
  struct Mode {
    std::uint32_t width;
    std::uint32_t height;
    std::uint32_t refreshRate;
    bool answers = true;
  };

  bool isCreated = true;    // whether Direct3DCreate9 gives an object
  std::vector<Mode> modes;  // of the adapter and in the format that are asked for

  // A call that fails answers null, 0 or an error.
  FailurePlan failures;

  // Threads call at the same time: nothing below is kept.
  bool isShared = false;

  // What is asked for.
  std::uint32_t sdkVersion = 0;
  std::uint32_t adapter = 0;
  std::uint32_t format = 0;
  int openObjects = 0;
};

}  // namespace launcher::test

#endif  // LAUNCHER_TESTS_HOST_SCRIPTED_D3D9_H_
