// The fixture of tests with a scripted Steam client library.

#ifndef LAUNCHER_TESTS_STEAM_SCRIPTED_TEST_H_
#define LAUNCHER_TESTS_STEAM_SCRIPTED_TEST_H_

#include <gtest/gtest.h>

#include "launcher_dll.h"
#include "steam/scripted_steam.h"
#include "support/guarded_buffer.h"
#include "support/scratch_directory.h"
#include "support/system.h"

namespace launcher::test {

// Each test begins with a default script. SCRIPTED_STEAM is the library's path relative to the
// program.
class ScriptedTest : public ScratchTest {
 protected:
  ScriptedTest() { script_ = SteamScript(); }

  using Calls = std::vector<std::string>;

  SteamScript& script_ = LoadScript<SteamScript>(SCRIPTED_STEAM, "GetSteamScript");
};

}  // namespace launcher::test

#endif  // LAUNCHER_TESTS_STEAM_SCRIPTED_TEST_H_
