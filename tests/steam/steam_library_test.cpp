// Finds a Steam client library that is loaded from a folder where anybody could put it, or that is
// not found in its own.

#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "support/scratch_directory.h"
#include "support/system.h"

namespace launcher {
namespace {

namespace fs = std::filesystem;

using SteamLibrary = test::ScratchTest;

TEST_F(SteamLibrary, IsTakenFromTheFoldersOfTheProgramAndTheLibraryOnly) {
  const std::string steam = test::PathBeside(SCRIPTED_STEAM);
  const std::string child = test::ProgramBeside("steam_child");
  const fs::path program = fs::absolute("game") / fs::path(child).filename();
  // Copies a file into a folder, which is created if it is missing.
  const auto copy = [](const std::string& file, const fs::path& folder) {
    fs::create_directory(folder);
    fs::copy_file(file, folder / fs::path(file).filename());
  };
  copy(steam, ".");  // the current directory
  // The folders of the library, of another copy of Steam, and on the path, and whether Steam is
  // found. The program is in "game".
  const std::tuple<const char*, const char*, const char*, bool> cases[] = {
    {"game", "other", "game", false},
    {"game", "game", "game", true},
    {"lib", "other", "lib", false},
    {"lib", "lib", "lib", true},
#if defined(_WIN32)  // The native library is found by such a path, and Steam's then as well.
    {"game", "other", "other", false},
#endif
  };
  for (const auto& [library, folder, path, isFound] : cases) {
    for (const char* const each : {"game", "lib", "other"}) fs::remove_all(each);
    copy(child, "game");
    copy(LAUNCHER_LIBRARY, library);
    copy(steam, folder);
    test::SetLibraryPath(fs::absolute(path).string());
    EXPECT_EQ(test::RunProgram('"' + program.string() + '"'), isFound);
  }
  test::SetLibraryPath("");
}

}  // namespace
}  // namespace launcher
