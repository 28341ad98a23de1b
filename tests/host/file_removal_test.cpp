// For faults of file removal in real directories: a neighbour, the target of a link or a path that
// was cut removed too, an entry left, a wrong result, a level that takes much of the stack.

#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <tuple>

#include "launcher_dll.h"
#include "support/data_file.h"
#include "support/scratch_directory.h"
#include "support/system.h"

namespace launcher {
namespace {

namespace fs = std::filesystem;

// What a test removes is called "tree". All else in its directory must stay.
class FileRemoval : public test::ScratchTest {
 protected:
  FileRemoval() {
    for (const char* const file : {"witness/inner/file", "tree.txt", "tre/file", "treeside/file"}) {
      Make(file);
    }
  }
  ~FileRemoval() override {
    std::error_code failed;
    fs::remove_all("tree", failed);
    EXPECT_EQ(std::distance(fs::recursive_directory_iterator("."), {}), 8);
  }

  static void Make(const fs::path& file) {
    if (file.has_parent_path()) fs::create_directories(file.parent_path());
    test::WriteFile(file.string(), "content");
  }

  // Makes a file that cannot be removed, or lets it be removed.
  static void Hold(const fs::path& file, bool isHeld) {
    if (isHeld) Make(file);
    fs::permissions(file, fs::perms(0222),
                    isHeld ? fs::perm_options::remove : fs::perm_options::add);
  }

  static void MakeTree() {
    for (const char* const file : {"tree/a", "tree/b/c/d", "tree/b/f/g/h", "tree/z.z"}) Make(file);
    fs::create_directories("tree/b/.empty");
  }
};

TEST_F(FileRemoval, TakesADirectoryWithAllThatIsInIt) {
  for (const std::string& path : {std::string("tree"), std::string("tree\\"), std::string("tree/"),
                                  std::string(".\\tre\\..\\tree"), fs::absolute("tree").string()}) {
    for (const std::uint32_t keepDirectory : {0u, 1u, 0x80000000u}) {
      MakeTree();
      EXPECT_EQ(QX_RemoveDirectory(path.c_str(), keepDirectory), QX_SUCCEEDED) << path;
      EXPECT_EQ(fs::exists("tree"), keepDirectory != 0);
      EXPECT_TRUE(keepDirectory == 0 || fs::is_empty("tree"));
    }
  }
}

TEST_F(FileRemoval, ReportsWhatItCannotRemove) {
  const std::tuple<const char*, ResultCode, ResultCode, ResultCode> cases[] = {
      {nullptr, QX_BAD_ARGUMENT, QX_BAD_ARGUMENT, QX_BAD_ARGUMENT},
      {"missing\\inner", QX_FAILED, QX_SUCCEEDED, QX_FAILED},
      {"tre?", QX_FAILED, QX_SUCCEEDED, QX_FAILED},
      {"tree\\held", QX_FAILED, QX_SUCCEEDED, QX_FAILED},  // read-only
      {"tree\\file", QX_FAILED, QX_SUCCEEDED, QX_SUCCEEDED},
      {"tree", QX_FAILED, QX_SUCCEEDED, QX_FAILED},
  };
  Make("tree/file");
  Hold("tree/held", true);
  MakeTree();
  for (const auto& [path, removed, emptied, asFile] : cases) {
    SCOPED_TRACE(path != nullptr ? path : "null");
    EXPECT_EQ(QX_RemoveDirectory(path, 0), removed);
    EXPECT_EQ(QX_RemoveDirectory(path, 1), emptied);
    EXPECT_EQ(QX_RemoveFile(path), asFile);
  }
  EXPECT_EQ(std::distance(fs::directory_iterator("tree"), {}), 1) << "the file that is held";
  Hold("tree/held", false);
}

TEST_F(FileRemoval, RemovesLinksAndDoesNotFollowThem) {
  const ResultCode result = test::SystemRemovesLinks() ? QX_SUCCEEDED : QX_FAILED;
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
  Hold("tree/target/held", true);
  test::MakeLink("target", "tree/link");
  for (const std::uint32_t keepDirectory : {1u, 0u}) {
    Make("tree/target/inner/file");
    EXPECT_EQ(QX_RemoveDirectory("tree\\link", keepDirectory), keepDirectory != 0 ? 0 : result);
    EXPECT_FALSE(fs::exists("tree/target/inner"));
    EXPECT_EQ(fs::exists("tree/link"), keepDirectory != 0 || result == QX_FAILED);
  }
  Hold("tree/target/held", false);
  test::RemoveLink("tree/link");
}

// A path that was cut would be that of a neighbour: each of these is the beginning of the next.
// Windows itself makes such names only where long paths are switched on.
TEST_F(FileRemoval, LeavesWhatDoesNotFitAPath) {
  const fs::path folder = fs::path("tree") / std::string(200, 'a');
  const auto path = [&](std::size_t length, char letter) {
    return folder / std::string(length - folder.string().size() - 1, letter);
  };
  constexpr std::size_t kLongestListed = 255;  // with the search pattern
  for (std::size_t length = 253; length <= 262; ++length) {
    Make(path(length, 'd') / "end");
    Make(path(length, 'f'));
  }
  // From the longest on, so that one that is cut would take the file of one that is not yet due.
  for (std::size_t length = 262; length >= 253; --length) {
    EXPECT_TRUE(fs::exists(path(length, 'd') / "end")) << length;
    EXPECT_EQ(QX_RemoveDirectory(path(length, 'd').string().c_str(), 0),
              length > kLongestListed ? QX_FAILED : QX_SUCCEEDED);
  }
  Make(path(kLongestListed, 'd') / "end");
  EXPECT_EQ(QX_RemoveDirectory("tree", 0), QX_FAILED);
  for (std::size_t length = 253; length <= 262; ++length) {
    EXPECT_EQ(fs::exists(path(length, 'd') / "end"), length > kLongestListed) << length;
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
  fs::path deepest = "tree";
  while (deepest.string().size() <= 253) deepest /= "d";
  Make(deepest / "file");
  test::RunInThread(64 << 10, [] { EXPECT_EQ(QX_RemoveDirectory("tree", 0), QX_SUCCEEDED); });
  EXPECT_FALSE(fs::exists("tree"));
}

}  // namespace
}  // namespace launcher
