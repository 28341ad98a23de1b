// A stand-in with a folder of a test's own.

#ifndef LAUNCHER_TESTS_STEAM_STAND_IN_STAND_IN_TEST_H_
#define LAUNCHER_TESTS_STEAM_STAND_IN_STAND_IN_TEST_H_

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <string>

#include "platform/steam_api.h"
#include "steam_stand_in/stand_in.h"
#include "support/data_file.h"
#include "support/scratch_directory.h"

namespace launcher::test {

inline void SetEnvironment(const char* name, const char* value) {
#if defined(_WIN32)
  _putenv_s(name, value);
#else
  setenv(name, value, 1);
#endif
}

class StandInTest : public ScratchTest {
 protected:
  StandInTest() { SetEnvironment("STEAM_STAND_IN", "stand_in"); }
  ~StandInTest() override { SteamAPI_Shutdown(); }

  static void WriteSettings(const std::string& settings) {
    std::filesystem::create_directories("stand_in");
    WriteFile("stand_in/steam_settings.json", settings);
  }

  // Begins a session anew.
  static void Start(const std::string& settings) {
    SteamAPI_Shutdown();
    WriteSettings(settings);
    ASSERT_TRUE(SteamAPI_Init());
  }
};

}  // namespace launcher::test

#endif  // LAUNCHER_TESTS_STEAM_STAND_IN_STAND_IN_TEST_H_
