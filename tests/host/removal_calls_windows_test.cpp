// What must not be tried for real, what needs another code page, and what another program does
// during the removal.

#include <gtest/gtest.h>

#include <cstring>
#include <filesystem>
#include <iterator>
#include <string>

#include "launcher_dll.h"
#include "support/data_file.h"
#include "support/import_patch_windows.h"
#include "support/scratch_directory.h"

namespace launcher {
namespace {

namespace fs = std::filesystem;

using RemovalTree = test::ScratchTest;

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
  EXPECT_EQ(QX_RemoveDirectory("C:\\", 0), QX_FAILED);
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
TEST_F(RemovalTree, KnowsASeparatorFromHalfACharacter) {
  fs::create_directory("tree");
  const test::ImportPatch first("FindFirstFileA", reinterpret_cast<void*>(GiveFirstName));
  const test::ImportPatch next("FindNextFileA", reinterpret_cast<void*>(GiveName));
  const test::ImportPatch close("FindClose", reinterpret_cast<void*>(Close));
  const test::ImportPatch deleteFile("DeleteFileA", reinterpret_cast<void*>(NoteFile));
  const test::ImportPatch isLeadByte("IsDBCSLeadByte", reinterpret_cast<void*>(IsLeadByte));
  EXPECT_EQ(QX_RemoveDirectory("tree", 1), QX_SUCCEEDED);
  EXPECT_EQ(deleted, "tree\\\x83\\.txt tree\\a\x83 ");
}

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

TEST_F(RemovalTree, CannotBeMovedWhileItIsEmptied) {
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

BOOL WINAPI InformOfLink(HANDLE, BY_HANDLE_FILE_INFORMATION* information) {
  information->dwFileAttributes = FILE_ATTRIBUTE_DIRECTORY | FILE_ATTRIBUTE_REPARSE_POINT;
  return TRUE;
}

BOOL WINAPI ListLink(HANDLE listing, WIN32_FIND_DATAA* entry) {
  if (FindNextFileA(listing, entry) == FALSE) return FALSE;
  entry->dwFileAttributes |= FILE_ATTRIBUTE_REPARSE_POINT;
  return TRUE;
}

DWORD WINAPI SayLink(const char*) {
  return FILE_ATTRIBUTE_DIRECTORY | FILE_ATTRIBUTE_REPARSE_POINT;
}

// Each of the three is enough.
TEST_F(RemovalTree, KnowsALinkByHandleOrListingOrPath) {
  fs::create_directories("tree/a");
  test::WriteFile("tree/a/file", "");
  const std::pair<const char*, void*> says[] = {
      {"GetFileInformationByHandle", reinterpret_cast<void*>(InformOfLink)},
      {"FindNextFileA", reinterpret_cast<void*>(ListLink)},
      {"GetFileAttributesA", reinterpret_cast<void*>(SayLink)},
  };
  for (const auto& [name, function] : says) {
    SCOPED_TRACE(name);
    const test::ImportPatch patch(name, function);
    EXPECT_EQ(QX_RemoveDirectory("tree", 0), QX_FAILED);
    EXPECT_TRUE(fs::exists("tree/a/file"));
  }
  EXPECT_EQ(QX_RemoveDirectory("tree", 0), QX_SUCCEEDED);
}

}  // namespace
}  // namespace launcher
