// An empty path must not even be tried for real: its search pattern is a drive's root.

#include <gtest/gtest.h>

#include "launcher_dll.h"
#include "support/import_patch_windows.h"

namespace launcher {
namespace {

int calls = 0;

HANDLE WINAPI NoteFind(const char*, WIN32_FIND_DATAA*) {
  ++calls;
  return INVALID_HANDLE_VALUE;
}

BOOL WINAPI NoteRemoval(const char*) {
  ++calls;
  return FALSE;
}

TEST(RemovalCalls, AreNoneForAPathThatNamesNothing) {
  const test::ImportPatch find("FindFirstFileA", reinterpret_cast<void*>(NoteFind));
  const test::ImportPatch removeDirectory("RemoveDirectoryA", reinterpret_cast<void*>(NoteRemoval));
  const test::ImportPatch deleteFile("DeleteFileA", reinterpret_cast<void*>(NoteRemoval));
  for (const char* const path : {"", "C:", "z:"}) {
    EXPECT_EQ(QX_RemoveDirectory(path, 0), QX_FAILED);
    EXPECT_EQ(QX_RemoveDirectory(path, 1), QX_SUCCEEDED);
  }
  EXPECT_EQ(calls, 0);
  EXPECT_EQ(QX_RemoveDirectory("missing", 0), QX_FAILED);
  EXPECT_EQ(calls, 2) << "the patches do reach it";
}

}  // namespace
}  // namespace launcher
