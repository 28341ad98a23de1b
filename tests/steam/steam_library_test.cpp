// Finds a Steam client library that is loaded from a folder where anybody could put it, or that is
// not found where it belongs.

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <string>

#include "support/scratch_directory.h"
#include "support/system.h"

namespace launcher {
namespace {

namespace fs = std::filesystem;

class SteamLibrary : public test::ScratchTest {
 protected:
  // A program and the library under test in a folder where there is no Steam.
  SteamLibrary() {
    fs::create_directory("game");
    Copy(test::ProgramBeside("steam_child"), "game");
    Copy(LAUNCHER_LIBRARY, "game");
    test::SetLibraryPath(fs::absolute("game").string());
  }
  ~SteamLibrary() override { test::SetLibraryPath(""); }

  static void Copy(const fs::path& file, const fs::path& folder) {
    fs::copy_file(file, folder / file.filename());
  }

  const fs::path steam_ = test::PathBeside(SCRIPTED_STEAM);
  const std::string program_ =
      '"' +
      fs::absolute(fs::path("game") / fs::path(test::ProgramBeside("steam_child")).filename())
          .string() +
      '"';
};

TEST_F(SteamLibrary, MayBeMissingAndIsNotTakenFromTheCurrentDirectory) {
  EXPECT_EQ(test::RunProgram(program_), 0);
  Copy(steam_, ".");
  EXPECT_EQ(test::RunProgram(program_), 0);
}

TEST_F(SteamLibrary, IsTakenFromTheLibrarysFolder) {
  fs::create_directory("lib");
  const fs::path library = fs::path(LAUNCHER_LIBRARY).filename();
  fs::rename("game" / library, "lib" / library);
  test::SetLibraryPath(fs::absolute("lib").string());
  EXPECT_EQ(test::RunProgram(program_), 0);
  Copy(steam_, "lib");
  EXPECT_EQ(test::RunProgram(program_), 1);
}

#if defined(_WIN32)  // The native library is found by such a path, and Steam's then as well.
TEST_F(SteamLibrary, IsNotTakenFromThePath) {
  fs::create_directory("planted");
  Copy(steam_, "planted");
  test::SetLibraryPath(fs::absolute("planted").string());
  EXPECT_EQ(test::RunProgram(program_), 0);
}
#endif

TEST_F(SteamLibrary, IsTakenFromTheProgramsFolder) {
  Copy(steam_, "game");
  EXPECT_EQ(test::RunProgram(program_), 1);
}

}  // namespace
}  // namespace launcher
