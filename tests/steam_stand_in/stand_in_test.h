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

// CMakeLists.txt sets STEAM_STAND_IN to "stand_in", which each test has in its current directory.
class StandInTest : public ScratchTest {
 protected:
  ~StandInTest() override { SteamAPI_Shutdown(); }

  static void WriteSettings(const std::string& settings) {
    std::filesystem::create_directories("stand_in");
    WriteFile("stand_in/steam_settings.json", settings);
  }

  // Begins a new session.
  static void Start(const std::string& settings) {
    SteamAPI_Shutdown();
    WriteSettings(settings);
    ASSERT_TRUE(SteamAPI_Init());
  }

  // The URL of a page of tests/support/http_server.py.
  static std::string UrlOf(const std::string& page) {
    const char* const port = std::getenv("TEST_HTTP_PORT");
    if (port == nullptr) ADD_FAILURE() << "no server: run this program by http_server.py";
    return std::string("http://127.0.0.1:") + (port == nullptr ? "1" : port) + page;
  }
};

}  // namespace launcher::test

#endif  // LAUNCHER_TESTS_STEAM_STAND_IN_STAND_IN_TEST_H_
