// For a directory that another program can move away or replace while it is emptied.

#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "launcher_dll.h"
#include "support/data_file.h"
#include "support/import_patch_windows.h"
#include "support/scratch_directory.h"

namespace launcher {
namespace {

using HeldDirectories = test::ScratchTest;

int moves = 0;

// Tries to move each directory of the tree, and to replace and remove it.
BOOL WINAPI MoveAndDelete(const char* path) {
  for (const char* const directory : {"tree\\a\\b", "tree\\a", "tree"}) {
    moves += MoveFileA(directory, "moved") != FALSE ? 1 : 0;
    moves += MoveFileExA("other", directory, MOVEFILE_REPLACE_EXISTING) != FALSE ? 1 : 0;
    moves += RemoveDirectoryA(directory) != FALSE ? 1 : 0;
  }
  EXPECT_NE(MoveFileA("other", "moved"), FALSE) << "what nobody holds can be moved";
  EXPECT_NE(MoveFileA("moved", "other"), FALSE);
  return DeleteFileA(path);
}

TEST_F(HeldDirectories, CannotBeMoved) {
  std::filesystem::create_directories("tree/a/b");
  std::filesystem::create_directory("other");
  test::WriteFile("tree/a/b/file", "");
  const test::ImportPatch patch("DeleteFileA", reinterpret_cast<void*>(MoveAndDelete));
  EXPECT_EQ(QX_RemoveDirectory("tree", 0), QX_SUCCEEDED);
  EXPECT_FALSE(std::filesystem::exists("tree"));
  EXPECT_EQ(moves, 0);
}

}  // namespace
}  // namespace launcher
