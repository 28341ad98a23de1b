// A Direct3D 9 whose modes and failures a test sets, to find queries of another adapter, format or
// index and objects that are not released.
//
// It is a library with the name of the system's own. The test loads it before the first call of the
// library under test, which then finds it.

#ifndef LAUNCHER_TESTS_HOST_SCRIPTED_D3D9_H_
#define LAUNCHER_TESTS_HOST_SCRIPTED_D3D9_H_

#include <cstdint>
#include <vector>

#include "support/faults.h"

namespace launcher::test {

struct Direct3DScript {
  struct Mode {
    std::uint32_t width;
    std::uint32_t height;
    std::uint32_t refreshRate;
    bool answers = true;
  };

  bool isCreated = true;    // false: Direct3DCreate9 returns null
  std::vector<Mode> modes;  // of the adapter and in the format that are asked for

  // A call that fails returns null, 0 or an error.
  FailurePlan failures;

  // Threads call at the same time, so nothing below is kept.
  bool isShared = false;

  // The arguments of the last calls.
  std::uint32_t sdkVersion = 0;
  std::uint32_t adapter = 0;
  std::uint32_t format = 0;
  int openObjects = 0;
};

}  // namespace launcher::test

#endif  // LAUNCHER_TESTS_HOST_SCRIPTED_D3D9_H_
