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

// Copies a file into a folder, which is created if it is missing, and returns the copy's path.
std::string Copy(const std::string& file, const fs::path& folder) {
  fs::create_directory(folder);
  const fs::path copy = folder / fs::path(file).filename();
  fs::copy_file(file, copy, fs::copy_options::overwrite_existing);
  return fs::absolute(copy).string();
}

TEST_F(SteamLibrary, IsTakenFromTheFoldersOfTheProgramAndTheLibraryOnly) {
  const std::string steam = test::PathBeside(SCRIPTED_STEAM);
  Copy(steam, ".");  // the current directory
  // The folders of the library, of another copy of Steam, and on the path, and the exit code. The
  // program is in "game".
  const std::tuple<const char*, const char*, const char*, int> cases[] = {
    {"game", "other", "game", 0},
    {"game", "game", "game", 1},
    {"lib", "other", "lib", 0},
    {"lib", "lib", "lib", 1},
#if defined(_WIN32)  // The native library is found by such a path, and Steam's then as well.
    {"game", "other", "other", 0},
#endif
  };
  for (const auto& [library, folder, path, exitCode] : cases) {
    for (const char* const each : {"game", "lib", "other"}) fs::remove_all(each);
    const std::string program = Copy(test::ProgramBeside("steam_child"), "game");
    Copy(LAUNCHER_LIBRARY, library);
    Copy(steam, folder);
    test::SetLibraryPath(fs::absolute(path).string());
    EXPECT_EQ(test::RunProgram('"' + program + '"'), exitCode) << library << folder;
  }
  test::SetLibraryPath("");
}

}  // namespace
}  // namespace launcher
