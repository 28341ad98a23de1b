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
    bool succeeds = true;  // the query of this mode
  };

  std::uint32_t adapter = 0;  // the only one that has modes
  std::vector<Mode> modes;    // in the format X8R8G8B8, the only one
  FailurePlan failures;       // a call that fails returns null, 0 or an error

  int openObjects = 0;
  bool isShared = false;  // threads call at the same time, so the objects are not counted
};

}  // namespace launcher::test

#endif  // LAUNCHER_TESTS_HOST_SCRIPTED_D3D9_H_
