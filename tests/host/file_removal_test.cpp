// For faults of file removal in real directories: a neighbour, the target of a link or a path that
// was cut removed too, an entry left, a wrong result, a level that takes much of the stack, and on
// Windows a directory that another program can move away while it is emptied.

#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <tuple>
#include <vector>

#include "launcher_dll.h"
#include "support/data_file.h"
#include "support/scratch_directory.h"
#include "support/system.h"

#if defined(_WIN32)
#include "support/import_patch_windows.h"
#endif

namespace launcher {
namespace {

namespace fs = std::filesystem;

// What a test removes is called "tree". All else in its directory must stay.
class FileRemoval : public test::ScratchTest {
 protected:
  FileRemoval() { Make({"witness/inner/file", "./tree.txt", "tre/file", "treeside/file"}); }
  ~FileRemoval() override {
    std::error_code failed;
    for (const char* const held : {"tree/held", "tree/target/held"}) {
      fs::permissions(held, fs::perms(0222), fs::perm_options::add, failed);
    }
    fs::remove_all("tree", failed);
    EXPECT_EQ(std::distance(fs::recursive_directory_iterator("."), {}), 8);
  }

  static void Make(const std::vector<fs::path>& files) {
    for (const fs::path& file : files) {
      fs::create_directories(file.parent_path());
      test::WriteFile(file.string(), "content");
    }
  }

  static void MakeTree() {
    Make({"tree/a", "tree/b/c/d", "tree/b/f/g/h", "tree/z.z"});
    fs::create_directories("tree/b/.empty");
  }
};

TEST_F(FileRemoval, TakesADirectoryWithAllThatIsInIt) {
  for (const char* const path : {"tree", "tree\\", "tree/", ".\\tre\\..\\tree"}) {
    for (const std::uint32_t keepDirectory : {0u, 1u, 0x80000000u}) {
      MakeTree();
      EXPECT_EQ(QX_RemoveDirectory(path, keepDirectory), QX_SUCCEEDED) << path;
      EXPECT_EQ(fs::exists("tree") && fs::is_empty("tree"), keepDirectory != 0);
    }
  }
}

TEST_F(FileRemoval, ReportsWhatItCannotRemove) {
  const std::tuple<const char*, ResultCode, ResultCode, ResultCode> cases[] = {
      {nullptr, QX_BAD_ARGUMENT, QX_BAD_ARGUMENT, QX_BAD_ARGUMENT},
      {"missing\\inner", QX_FAILED, QX_SUCCEEDED, QX_FAILED},
      {"tree\\held", QX_FAILED, QX_SUCCEEDED, QX_FAILED},  // read-only
      {"tree\\file", QX_FAILED, QX_SUCCEEDED, QX_SUCCEEDED},
      {"tree", QX_FAILED, QX_SUCCEEDED, QX_FAILED},
  };
  Make({"tree/file", "tree/held"});
  fs::permissions("tree/held", fs::perms(0222), fs::perm_options::remove);
  MakeTree();
  for (const auto& [path, removed, emptied, asFile] : cases) {
    SCOPED_TRACE(path != nullptr ? path : "null");
    EXPECT_EQ(QX_RemoveDirectory(path, 0), removed);
    EXPECT_EQ(QX_RemoveDirectory(path, 1), emptied);
    EXPECT_EQ(QX_RemoveFile(path), asFile);
  }
  EXPECT_EQ(std::distance(fs::directory_iterator("tree"), {}), 1);
}

TEST_F(FileRemoval, RemovesLinksAndDoesNotFollowThem) {
  // Wine's functions cannot remove a link to a directory.
  const ResultCode result = test::kIsWindows ? QX_FAILED : QX_SUCCEEDED;
  MakeTree();
  const std::pair<const char*, std::string> links[] = {
      {"tree/b/c/link", fs::absolute("witness").string()},
      {"tree/b/link", "../../witness/inner"},
      {"tree/self", "."},
      {"tree/up", ".."},
  };
  for (const auto& [link, target] : links) test::MakeLink(target, link);
  EXPECT_EQ(QX_RemoveDirectory("tree", 0), result);
  for (const auto& [link, target] : links) {
    EXPECT_EQ(fs::exists(link), result == QX_FAILED);
    test::RemoveLink(link);
  }

  // A link that the caller names leads to its directory, as anywhere else in a path.
  Make({"tree/target/held"});
  fs::permissions("tree/target/held", fs::perms(0222), fs::perm_options::remove);
  test::MakeLink("target", "tree/link");
  for (const std::uint32_t keepDirectory : {1u, 0u}) {
    Make({"tree/target/inner/file"});
    EXPECT_EQ(QX_RemoveDirectory("tree\\link", keepDirectory), keepDirectory != 0 ? 0 : result);
    EXPECT_FALSE(fs::exists("tree/target/inner"));
    EXPECT_EQ(fs::exists("tree/link"), keepDirectory != 0 || result == QX_FAILED);
  }
  test::RemoveLink("tree/link");
}

// A path that was cut would be that of a neighbour: each of these is the beginning of the next.
// Windows itself makes such names only where long paths are switched on.
TEST_F(FileRemoval, LeavesWhatDoesNotFitAPath) {
  const fs::path folder = fs::path("tree") / std::string(200, 'a');
  const auto path = [&](std::size_t length, char letter) {
    return folder / std::string(length - folder.string().size() - 1, letter);
  };
  for (std::size_t length = 253; length <= 262; ++length) {
    Make({path(length, 'd') / "end", path(length, 'f')});
  }
  EXPECT_EQ(QX_RemoveDirectory("tree", 0), QX_FAILED);
  for (std::size_t length = 253; length <= 262; ++length) {
    EXPECT_EQ(fs::exists(path(length, 'd') / "end"), length > 255) << length;
    EXPECT_EQ(fs::exists(path(length, 'f')), length > 259) << length;
  }
  fs::current_path(folder);  // from here all paths are short enough
  for (const auto& entry : fs::directory_iterator(".")) {
    const std::string name = entry.path().filename().string();
    if (QX_RemoveFile(name.c_str()) != QX_SUCCEEDED) QX_RemoveDirectory(name.c_str(), 0);
  }
  fs::current_path("../..");
}

TEST_F(FileRemoval, TakesATreeAsDeepAsPathsGoWithLittleStack) {
  fs::path deepest = "t";  // a short name is no drive's
  while (deepest.string().size() < 253) deepest /= "d";
  Make({deepest / "files"});
  test::RunInThread(64 << 10, [] { EXPECT_EQ(QX_RemoveDirectory("t", 0), QX_SUCCEEDED); });
}

#if defined(_WIN32)

int moves = 0;

BOOL WINAPI MoveAndDelete(const char* path) {
  for (const char* const held : {"tree\\a\\b", "tree\\a", "tree"})
    moves += MoveFileA(held, "moved");
  // What nobody holds can be moved.
  EXPECT_TRUE(MoveFileA("treeside", "moved") && MoveFileA("moved", "treeside"));
  return DeleteFileA(path);
}

TEST_F(FileRemoval, KeepsOthersFromMovingTheTree) {
  Make({"tree/a/b/file"});
  const test::ImportPatch patch("DeleteFileA", reinterpret_cast<void*>(MoveAndDelete));
  EXPECT_EQ(QX_RemoveDirectory("tree", 0), QX_SUCCEEDED);
  EXPECT_EQ(moves, 0);
}

#endif

}  // namespace
}  // namespace launcher
