// For faults of file removal that only its calls show: a handle that is open too long or too short,
// or that lets others move the directory, a call for a path that names nothing, a link or a name
// that leads elsewhere, a removal that stops at the first failure.

#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <tuple>

#include "launcher_dll.h"
#include "platform/posix/faults.h"
#include "support/data_file.h"
#include "support/scratch_directory.h"

namespace {

// If it is not null, every listing begins with this entry in place of ".".
const WIN32_FIND_DATAA* firstEntry = nullptr;

}  // namespace

// The linker's --wrap redirects the library's calls to the functions with __wrap.
extern "C" {

HANDLE __real__Z14FindFirstFileAPKcP16WIN32_FIND_DATAA(const char*, WIN32_FIND_DATAA*);
HANDLE __wrap__Z14FindFirstFileAPKcP16WIN32_FIND_DATAA(const char* path, WIN32_FIND_DATAA* found) {
  HANDLE listing = __real__Z14FindFirstFileAPKcP16WIN32_FIND_DATAA(path, found);
  if (firstEntry != nullptr) *found = *firstEntry;
  return listing;
}

// The native layer locks nothing, so this checks the arguments: others may list and change a
// directory but not move it. Only the caller's own path may be a link.
HANDLE __real__Z11CreateFileAPKcjjPvjjS1_(const char*, DWORD, DWORD, void*, DWORD, DWORD, HANDLE);
HANDLE __wrap__Z11CreateFileAPKcjjPvjjS1_(const char* path, DWORD access, DWORD share, void* none,
                                          DWORD creation, DWORD flags, HANDLE pattern) {
  EXPECT_EQ(access, DWORD{FILE_LIST_DIRECTORY});
  EXPECT_EQ(share, DWORD{FILE_SHARE_READ | FILE_SHARE_WRITE});
  EXPECT_EQ((flags & FILE_FLAG_OPEN_REPARSE_POINT) == 0, std::string(path) == "tree");
  return __real__Z11CreateFileAPKcjjPvjjS1_(path, access, share, none, creation, flags, pattern);
}

// As in code page 932, where 0x83 begins a character of two bytes.
BOOL __wrap__Z14IsDBCSLeadByteh(BYTE byte) { return byte == 0x83 ? TRUE : FALSE; }

}  // extern "C"

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

  // Removes a directory, and returns the names of the calls.
  static std::string CallsFor(const char* path, std::uint32_t keepDirectory, ResultCode result) {
    posix::StartRecording();
    EXPECT_EQ(QX_RemoveDirectory(path, keepDirectory), result);
    std::string calls;
    for (const std::string& call : posix::StopRecording()) calls += call + ' ';
    return calls;
  }

  // Empties the tree, whose listing begins with this entry. Returns the calls for this entry.
  static std::string CallsForEntry(const std::string& name, DWORD attributes) {
    MakeTree();
    WIN32_FIND_DATAA entry = {attributes, ""};
    name.copy(entry.cFileName, sizeof entry.cFileName - 1);
    firstEntry = &entry;
    const std::string calls = CallsFor("tree", 1, QX_SUCCEEDED);
    firstEntry = nullptr;
    const std::size_t listed = calls.find("FindFirstFileA ") + sizeof "FindFirstFileA";
    return calls.substr(listed, calls.find("FindNextFileA") - listed);
  }
};

// With a search pattern after them, these paths name the root of a drive. All calls fail, so that a
// fault removes nothing.
TEST_F(RemovalCalls, AreNoneForAPathThatNamesNothing) {
  posix::FailCall(nullptr, 1, true);
  for (const char* const path : {"", "C:", "\\\\?\\C:"}) {
    EXPECT_EQ(CallsFor(path, 0, QX_FAILED) + CallsFor(path, 1, QX_SUCCEEDED), "");
  }
  posix::StopFailing();
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
  // The call, which one fails, and how many entries stay.
  const std::tuple<const char*, int, std::ptrdiff_t> cases[] = {
      {"FindFirstFileA", 2, 3},
      {"FindNextFileA", 3, 4},  // a listing that breaks off
      {"DeleteFileA", 1, 2},
      {"RemoveDirectoryA", 1, 2},
      // A directory that cannot be held, or may be a link, is not emptied.
      {"CreateFileA", 1, 5},
      {"CreateFileA", 2, 3},
      {"GetFileInformationByHandle", 1, 3},
      {"GetFileAttributesA", 1, 3},
  };
  for (const auto& [call, nth, left] : cases) {
    MakeTree();
    posix::FailCall(call, nth);
    EXPECT_EQ(QX_RemoveDirectory("tree", 0), QX_FAILED) << call << nth;
    EXPECT_TRUE(posix::StopFailing());
    EXPECT_EQ(std::distance(fs::recursive_directory_iterator("."), {}), left) << call << nth;
  }
}

TEST_F(RemovalCalls, TakeOnlyNamesThatLeadToTheEntry) {
  // Names that only look like a path. 0x83 and the byte after it are one character; at the end of a
  // name, 0x83 is alone.
  for (const std::string& name : {std::string("\x83\\.txt"), std::string("a\x83\0\\", 4),
                                  std::string(".a"), std::string("..a"), std::string(" a")}) {
    EXPECT_EQ(CallsForEntry(name, FILE_ATTRIBUTE_NORMAL), "DeleteFileA ") << name;
  }
  for (const char* const name :
       {"\x83\x83\\x", "\\x", "x\\", "\x83/x", "a/x", "dot.", "blank ", ""}) {
    EXPECT_EQ(CallsForEntry(name, FILE_ATTRIBUTE_NORMAL), "") << name;
  }
}

// The listing, the handle and the path can each report a link. One report is enough.
TEST_F(RemovalCalls, EnterOnlyWhatIsNoLink) {
  fs::create_symlink("missing", "tree/link");  // only its handle reports it
  EXPECT_EQ(CallsForEntry("link", FILE_ATTRIBUTE_DIRECTORY),
            "CreateFileA GetFileInformationByHandle GetFileAttributesA CloseHandle "
            "RemoveDirectoryA ");
  EXPECT_EQ(CallsForEntry("inner", FILE_ATTRIBUTE_DIRECTORY | FILE_ATTRIBUTE_REPARSE_POINT),
            "RemoveDirectoryA ");
}

}  // namespace
}  // namespace launcher
