// For faults of file removal that only its calls show: a handle that is open too long or too short,
// a call for a path that names nothing, a link or a name that leads elsewhere, a removal that stops
// at the first failure.

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <string>
#include <vector>

#include "launcher_dll.h"
#include "platform/posix/faults.h"
#include "support/data_file.h"
#include "support/scratch_directory.h"

namespace {

struct Entry {
  const char* name;
  DWORD attributes;
  DWORD attributesOfPath;
};

// If it is not null, every directory seems to have this entry alone.
const Entry* onlyEntry = nullptr;

}  // namespace

// The linker's --wrap redirects the library's calls to the functions with __wrap.
extern "C" HANDLE __real__Z14FindFirstFileAPKcP16WIN32_FIND_DATAA(const char*, WIN32_FIND_DATAA*);
extern "C" HANDLE __wrap__Z14FindFirstFileAPKcP16WIN32_FIND_DATAA(const char* pattern,
                                                                  WIN32_FIND_DATAA* found) {
  HANDLE listing = __real__Z14FindFirstFileAPKcP16WIN32_FIND_DATAA(pattern, found);
  if (onlyEntry != nullptr) {
    std::strcpy(found->cFileName, onlyEntry->name);
    found->dwFileAttributes = onlyEntry->attributes;
  }
  return listing;
}

extern "C" BOOL __real__Z13FindNextFileAPvP16WIN32_FIND_DATAA(HANDLE, WIN32_FIND_DATAA*);
extern "C" BOOL __wrap__Z13FindNextFileAPvP16WIN32_FIND_DATAA(HANDLE listing,
                                                              WIN32_FIND_DATAA* found) {
  if (onlyEntry != nullptr) return FALSE;
  return __real__Z13FindNextFileAPvP16WIN32_FIND_DATAA(listing, found);
}

extern "C" DWORD __real__Z18GetFileAttributesAPKc(const char*);
extern "C" DWORD __wrap__Z18GetFileAttributesAPKc(const char* path) {
  return onlyEntry != nullptr ? onlyEntry->attributesOfPath
                              : __real__Z18GetFileAttributesAPKc(path);
}

// As in code page 932, where 0x83 begins a character of two bytes.
extern "C" BOOL __wrap__Z14IsDBCSLeadByteh(BYTE byte) { return byte == 0x83 ? TRUE : FALSE; }

namespace launcher {
namespace {

namespace fs = std::filesystem;

class RemovalCalls : public test::ScratchTest {
 protected:
  RemovalCalls() { MakeTree(); }
  ~RemovalCalls() override { EXPECT_EQ(posix::OpenObjectCount(), 0); }

  static void MakeTree() {
    fs::create_directories("tree/inner");
    for (const char* const file : {"tree/a", "tree/inner/b", "tree/z"}) test::WriteFile(file, "");
  }

  static std::ptrdiff_t FilesLeft() {
    const auto isFile = [](const fs::directory_entry& entry) { return entry.is_regular_file(); };
    return std::count_if(fs::recursive_directory_iterator("."), {}, isFile);
  }

  // Removes a directory, and returns the names of the calls that this takes.
  static std::string CallsFor(const char* path, std::uint32_t keepDirectory, ResultCode result) {
    posix::StartRecording();
    EXPECT_EQ(QX_RemoveDirectory(path, keepDirectory), result);
    std::string calls;
    for (const std::string& call : posix::StopRecording()) calls += call + ' ';
    return calls;
  }
};

// The search pattern after these would list the root of a drive. Were it asked for, it would fail.
TEST_F(RemovalCalls, AreNoneForAPathThatNamesNothing) {
  for (const char* const path : {"", "C:", "z:", "\\\\?\\C:"}) {
    posix::FailCall(nullptr, 1, true);
    EXPECT_EQ(CallsFor(path, 0, QX_FAILED), "");
    EXPECT_EQ(CallsFor(path, 1, QX_SUCCEEDED), "");
    posix::StopFailing();
  }
}

TEST_F(RemovalCalls, GoDepthFirst) {
  EXPECT_EQ(CallsFor("tree", 0, QX_SUCCEEDED),
            "CreateFileA FindFirstFileA FindNextFileA FindNextFileA "  // ".", ".."
            "DeleteFileA FindNextFileA "
            "CreateFileA GetFileInformationByHandle GetFileAttributesA "
            "FindFirstFileA FindNextFileA FindNextFileA DeleteFileA FindNextFileA "
            "FindClose CloseHandle RemoveDirectoryA FindNextFileA "
            "DeleteFileA FindNextFileA FindClose CloseHandle RemoveDirectoryA ");
}

TEST_F(RemovalCalls, GoOnIfOneFails) {
  struct Case {
    const char* call;
    int nth;
    ResultCode result;
    std::ptrdiff_t filesLeft;
  };
  const Case cases[] = {
      {"FindFirstFileA", 1, QX_FAILED, 3},
      {"FindFirstFileA", 2, QX_FAILED, 1},
      {"FindNextFileA", 3, QX_FAILED, 2},  // a listing that breaks off
      {"FindClose", 1, QX_SUCCEEDED, 0},
      {"DeleteFileA", 1, QX_FAILED, 1},
      {"RemoveDirectoryA", 1, QX_FAILED, 0},
      {"RemoveDirectoryA", 2, QX_FAILED, 0},
      // A directory that cannot be held, or may be a link, is not emptied.
      {"CreateFileA", 1, QX_FAILED, 3},
      {"CreateFileA", 2, QX_FAILED, 1},
      {"GetFileInformationByHandle", 1, QX_FAILED, 1},
      {"GetFileAttributesA", 1, QX_FAILED, 1},
      {"CloseHandle", 1, QX_SUCCEEDED, 0},
  };
  for (const std::uint32_t keepDirectory : {0u, 1u}) {
    for (const Case& tried : cases) {
      SCOPED_TRACE(tried.call + std::to_string(tried.nth));
      MakeTree();
      posix::FailCall(tried.call, tried.nth);
      EXPECT_EQ(QX_RemoveDirectory("tree", keepDirectory), keepDirectory == 0 ? tried.result : 0);
      posix::StopFailing();
      EXPECT_EQ(FilesLeft(), tried.filesLeft);
    }
  }
}

TEST_F(RemovalCalls, LeaveNamesThatLeadElsewhere) {
  const std::pair<const char*, bool> names[] = {
      {"\x83\\.txt", true}, {"a\x83", true},        {".a", true},     {"..a", true},
      {" a", true},         {"\x83\x83\\x", false}, {"\\x", false},   {"x\\", false},
      {"\x83/x", false},    {"a/x", false},         {"..\\z", false}, {"dot.", false},
      {"blank ", false},    {".", false},           {"..", false},    {"", false},
  };
  for (const auto& [name, isRemoved] : names) {
    const Entry entry = {name, FILE_ATTRIBUTE_NORMAL, FILE_ATTRIBUTE_NORMAL};
    onlyEntry = &entry;
    EXPECT_EQ(CallsFor("tree", 1, QX_SUCCEEDED).find("DeleteFileA") != std::string::npos, isRemoved)
        << name;
    onlyEntry = nullptr;
  }
}

// The listing, the handle and the path are asked, and one of them is enough.
TEST_F(RemovalCalls, EnterOnlyWhatIsNoLink) {
  constexpr DWORD kDirectory = FILE_ATTRIBUTE_DIRECTORY;
  constexpr DWORD kLink = FILE_ATTRIBUTE_DIRECTORY | FILE_ATTRIBUTE_REPARSE_POINT;
  fs::create_directory_symlink("inner", "tree/link");
  const std::pair<Entry, bool> cases[] = {
      {{"inner", kDirectory, kDirectory}, true},
      {{"inner", kLink, kDirectory}, false},
      {{"link", kDirectory, kDirectory}, false},
      {{"inner", kDirectory, kLink}, false},
  };
  for (const auto& [entry, isEntered] : cases) {
    onlyEntry = &entry;
    const std::string calls = CallsFor("tree", 1, QX_SUCCEEDED);
    EXPECT_EQ(calls.find("FindFirstFileA") != calls.rfind("FindFirstFileA"), isEntered) << calls;
    onlyEntry = nullptr;
    MakeTree();
  }
}

}  // namespace
}  // namespace launcher
