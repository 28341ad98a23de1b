// What file removal asks of the system, and what it does where the system fails.

#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "launcher_dll.h"
#include "platform/posix/faults.h"
#include "support/data_file.h"
#include "support/scratch_directory.h"

namespace launcher {
namespace {

namespace fs = std::filesystem;

using Calls = std::vector<std::string>;

class RemovalCalls : public test::ScratchTest {
 protected:
  RemovalCalls() {
    fs::create_directories("tree/inner");
    for (const char* const file : {"tree/a", "tree/inner/b", "tree/z"}) test::WriteFile(file, "");
  }
  ~RemovalCalls() override { EXPECT_EQ(posix::OpenObjectCount(), 0); }

  static std::size_t FilesLeft() {
    std::size_t count = 0;
    for (const auto& entry : fs::recursive_directory_iterator(".")) {
      if (entry.is_regular_file()) ++count;
    }
    return count;
  }
};

// Behind these the search pattern would be that of a drive's root. Were it asked for, it would
// fail.
TEST_F(RemovalCalls, AreNoneForAPathThatNamesNothing) {
  for (const char* const path : {"", "C:", "z:", "\\\\?\\C:"}) {
    posix::FailCall(nullptr, 1, true);
    posix::StartRecording();
    EXPECT_EQ(QX_RemoveDirectory(path, 0), QX_FAILED);
    EXPECT_EQ(QX_RemoveDirectory(path, 1), QX_SUCCEEDED);
    EXPECT_EQ(posix::StopRecording(), Calls());
    posix::StopFailing();
  }
}

TEST_F(RemovalCalls, GoDepthFirst) {
  posix::StartRecording();
  EXPECT_EQ(QX_RemoveDirectory("tree", 0), QX_SUCCEEDED);
  const Calls expected = {"CreateFileA",
                          "FindFirstFileA",
                          "FindNextFileA",  // ".", ".."
                          "FindNextFileA",
                          "DeleteFileA",
                          "FindNextFileA",
                          "CreateFileA",
                          "GetFileInformationByHandle",
                          "GetFileAttributesA",
                          "FindFirstFileA",
                          "FindNextFileA",
                          "FindNextFileA",
                          "DeleteFileA",
                          "FindNextFileA",
                          "FindClose",
                          "CloseHandle",
                          "RemoveDirectoryA",
                          "FindNextFileA",
                          "DeleteFileA",
                          "FindNextFileA",
                          "FindClose",
                          "CloseHandle",
                          "RemoveDirectoryA"};
  EXPECT_EQ(posix::StopRecording(), expected);
}

TEST_F(RemovalCalls, GoOnWhereOneFails) {
  struct Case {
    const char* call;
    int nth;
    ResultCode result;
    std::size_t filesLeft;
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
      fs::create_directories("tree/inner");
      for (const char* const file : {"tree/a", "tree/inner/b", "tree/z"}) test::WriteFile(file, "");
      posix::FailCall(tried.call, tried.nth);
      EXPECT_EQ(QX_RemoveDirectory("tree", keepDirectory), keepDirectory == 0 ? tried.result : 0);
      EXPECT_EQ(posix::StopFailing(), keepDirectory == 0 || tried.nth == 1 || FilesLeft() != 0);
      EXPECT_EQ(FilesLeft(), tried.filesLeft);
    }
  }
}

// Names that this system allows and that would lead elsewhere on a path with backslashes.
TEST_F(RemovalCalls, LeaveNamesThatLeadElsewhere) {
  fs::create_directories("witness");
  const char* const files[] = {"witness/file", "tree/..\\witness\\file", "tree/dot.",
                               "tree/blank ",  "tree/inner/...",         "tree/inner/.. "};
  for (const char* const file : files) test::WriteFile(file, "");
  EXPECT_EQ(QX_RemoveDirectory("tree", 0), QX_FAILED);
  for (const char* const file : files) EXPECT_TRUE(fs::exists(file)) << file;
  EXPECT_EQ(FilesLeft(), std::size(files));
}

}  // namespace
}  // namespace launcher
