// What must not be tried for real, and what needs another code page.

#include <gtest/gtest.h>

#include <cstring>
#include <iterator>
#include <string>

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

// The search pattern behind these is a drive's root.
TEST(RemovalCalls, AreNoneForAPathThatNamesNothing) {
  const test::ImportPatch find("FindFirstFileA", reinterpret_cast<void*>(NoteFind));
  const test::ImportPatch removeDirectory("RemoveDirectoryA", reinterpret_cast<void*>(NoteRemoval));
  const test::ImportPatch deleteFile("DeleteFileA", reinterpret_cast<void*>(NoteRemoval));
  for (const char* const path : {"", "C:", "z:", "\\\\?\\C:"}) {
    EXPECT_EQ(QX_RemoveDirectory(path, 0), QX_FAILED);
    EXPECT_EQ(QX_RemoveDirectory(path, 1), QX_SUCCEEDED);
  }
  EXPECT_EQ(calls, 0);
  EXPECT_EQ(QX_RemoveDirectory("missing", 0), QX_FAILED);
  EXPECT_EQ(calls, 2) << "the patches do reach it";
}

const char* const kNames[] = {"\x83\\.txt", "\\x", "\x83/x", "\x83\x83\\x", "a\x83"};
std::size_t nextName = 0;
std::string deleted;

BOOL WINAPI GiveName(HANDLE, WIN32_FIND_DATAA* entry) {
  if (nextName == std::size(kNames)) return FALSE;
  *entry = {};
  std::strcpy(entry->cFileName, kNames[nextName++]);
  return TRUE;
}

HANDLE WINAPI GiveFirstName(const char*, WIN32_FIND_DATAA* entry) {
  GiveName(nullptr, entry);
  return &nextName;
}

BOOL WINAPI Close(HANDLE) { return TRUE; }

BOOL WINAPI NoteFile(const char* path) {
  deleted += std::string(path) + ' ';
  return TRUE;
}

BOOL WINAPI IsLeadByte(BYTE byte) { return byte == 0x83; }

// As in code page 932, where 0x83 begins a character of two bytes.
TEST(RemovalCalls, KnowASeparatorFromHalfACharacter) {
  const test::ImportPatch first("FindFirstFileA", reinterpret_cast<void*>(GiveFirstName));
  const test::ImportPatch next("FindNextFileA", reinterpret_cast<void*>(GiveName));
  const test::ImportPatch close("FindClose", reinterpret_cast<void*>(Close));
  const test::ImportPatch deleteFile("DeleteFileA", reinterpret_cast<void*>(NoteFile));
  const test::ImportPatch isLeadByte("IsDBCSLeadByte", reinterpret_cast<void*>(IsLeadByte));
  EXPECT_EQ(QX_RemoveDirectory("tree", 1), QX_SUCCEEDED);
  EXPECT_EQ(deleted, "tree\\\x83\\.txt tree\\a\x83 ");
}

}  // namespace
}  // namespace launcher
