// A stand-in with a folder of a test's own.

#ifndef LAUNCHER_TESTS_STEAM_STAND_IN_STAND_IN_TEST_H_
#define LAUNCHER_TESTS_STEAM_STAND_IN_STAND_IN_TEST_H_

#include <gtest/gtest.h>

#include "steam_stand_in/stand_in.h"
#include "support/data_file.h"
#include "support/scratch_directory.h"
#include "support/system.h"

namespace launcher::test {

// CMakeLists.txt sets STEAM_STAND_IN to "stand_in", which each test has in its current directory.
class StandInTest : public ScratchTest {
 protected:
  ~StandInTest() override { SteamAPI_Shutdown(); }

  // Ends the session, if there is one, and starts another with these settings.
  static bool Start(const std::string& settings) {
    SteamAPI_Shutdown();
    std::filesystem::create_directories("stand_in");
    WriteFile("stand_in/steam_settings.json", settings);
    return SteamAPI_Init();
  }
};

}  // namespace launcher::test

#endif  // LAUNCHER_TESTS_STEAM_STAND_IN_STAND_IN_TEST_H_
