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

namespace fs = std::filesystem;

using HeldDirectories = test::ScratchTest;

int tries = 0;
int moves = 0;

// Tries to move each directory of the tree that `path` goes through, and to replace it.
void TryToMove(std::string path) {
  for (std::size_t end = path.rfind('\\'); end != std::string::npos; end = path.rfind('\\')) {
    path.resize(end);
    ++tries;
    moves += MoveFileA(path.c_str(), "moved") != FALSE ? 1 : 0;
    moves += MoveFileExA("other", path.c_str(), MOVEFILE_REPLACE_EXISTING) != FALSE ? 1 : 0;
    moves += RemoveDirectoryA(path.c_str()) != FALSE ? 1 : 0;
  }
  EXPECT_NE(MoveFileA("other", "moved"), FALSE) << "what nobody holds can be moved";
  EXPECT_NE(MoveFileA("moved", "other"), FALSE);
}

BOOL WINAPI MoveAndDelete(const char* path) {
  TryToMove(path);
  return DeleteFileA(path);
}

BOOL WINAPI MoveAndRemove(const char* path) {
  TryToMove(path);
  return RemoveDirectoryA(path);
}

HANDLE WINAPI MoveAndList(const char* pattern, WIN32_FIND_DATAA* entry) {
  TryToMove(pattern);
  const HANDLE listing = FindFirstFileA(pattern, entry);
  TryToMove(pattern);
  return listing;
}

TEST_F(HeldDirectories, CannotBeMoved) {
  fs::create_directories("tree/a/b/c");
  fs::create_directory("other");
  for (const char* const file : {"tree/a/b/c/file", "tree/a/b/file", "tree/file"}) {
    test::WriteFile(file, "");
  }
  const test::ImportPatch list("FindFirstFileA", reinterpret_cast<void*>(MoveAndList));
  const test::ImportPatch deleteFile("DeleteFileA", reinterpret_cast<void*>(MoveAndDelete));
  const test::ImportPatch remove("RemoveDirectoryA", reinterpret_cast<void*>(MoveAndRemove));
  EXPECT_EQ(QX_RemoveDirectory("tree", 0), QX_SUCCEEDED);
  // Two for each of 4 listings, of 1 to 4 directories; 4, 3 and 1 for the files; 3, 2 and 1 for the
  // directories inside.
  EXPECT_EQ(tries, 20 + 8 + 6);
  EXPECT_EQ(moves, 0);
}

}  // namespace
}  // namespace launcher
