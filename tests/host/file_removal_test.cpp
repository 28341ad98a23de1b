// For faults of file removal in real directories: a neighbour, the target of a link or a path that
// was cut removed too, an entry left, a wrong result, a level that takes much of the stack.

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <string>

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
  ~FileRemoval() override { EXPECT_EQ(WitnessCount(), 8); }

  static void Make(const fs::path& file) {
    if (file.has_parent_path()) fs::create_directories(file.parent_path());
    test::WriteFile(file.string(), "content");
  }

  static void MakeTree() {
    for (const char* const file : {"tree/a", "tree/b/c/d", "tree/b/f/g/h", "tree/z.z"}) Make(file);
    fs::create_directories("tree/b/.empty");
  }

 private:
  static std::ptrdiff_t WitnessCount() {
    return std::count_if(fs::recursive_directory_iterator("."), {}, [](const auto& entry) {
      const std::string path = entry.path().generic_string();
      return path != "./tree" && path.rfind("./tree/", 0) != 0;
    });
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
  struct Case {
    const char* path;
    ResultCode removed;
    ResultCode emptied;
    ResultCode asFile;
  };
  const Case cases[] = {
      {nullptr, QX_BAD_ARGUMENT, QX_BAD_ARGUMENT, QX_BAD_ARGUMENT},
      {"missing\\inner", QX_FAILED, QX_SUCCEEDED, QX_FAILED},
      {"tre?", QX_FAILED, QX_SUCCEEDED, QX_FAILED},
      {"tree\\held", QX_FAILED, QX_SUCCEEDED, QX_FAILED},  // read-only
      {"tree\\file", QX_FAILED, QX_SUCCEEDED, QX_SUCCEEDED},
      {"tree", QX_FAILED, QX_SUCCEEDED, QX_FAILED},
  };
  Make("tree/file");
  Make("tree/held");
  fs::permissions("tree/held", fs::perms(0222), fs::perm_options::remove);
  MakeTree();
  for (const Case& tried : cases) {
    SCOPED_TRACE(tried.path != nullptr ? tried.path : "null");
    EXPECT_EQ(QX_RemoveDirectory(tried.path, 0), tried.removed);
    EXPECT_EQ(QX_RemoveDirectory(tried.path, 1), tried.emptied);
    EXPECT_EQ(QX_RemoveFile(tried.path), tried.asFile);
  }
  EXPECT_EQ(std::distance(fs::directory_iterator("tree"), {}), 1) << "the file that is held";
  fs::permissions("tree/held", fs::perms::owner_write, fs::perm_options::add);
  EXPECT_EQ(QX_RemoveFile("tree/held"), QX_SUCCEEDED);
}

TEST_F(FileRemoval, RemovesLinksAndDoesNotFollowThem) {
  const bool removesLinks = test::SystemRemovesLinks();
  MakeTree();
  const std::pair<const char*, std::string> links[] = {
      {"tree/b/c/link", fs::absolute("witness").string()},
      {"tree/b/link", "../../witness/inner"},
      {"tree/self", "."},
      {"tree/up", ".."},
  };
  for (const auto& [link, target] : links) test::MakeLink(target, link);
  // For a link to a file Wine removes the file.
  if (removesLinks) test::MakeLink("../witness/inner/file", "tree/file");
  ASSERT_TRUE(fs::exists("tree/up/tree/self/b/link/file"));
  EXPECT_EQ(QX_RemoveDirectory("tree", 0), removesLinks ? QX_SUCCEEDED : QX_FAILED);
  for (const auto& [link, target] : links) {
    EXPECT_EQ(fs::exists(link), !removesLinks);
    test::RemoveLink(link);
  }
  EXPECT_EQ(QX_RemoveDirectory("tree", 1), QX_SUCCEEDED);

  // A link that the caller names leads to its directory, as anywhere else in a path.
  Make("tree/target/inner/file");
  test::MakeLink("target", "tree/link");
  EXPECT_EQ(QX_RemoveDirectory("tree\\link", 1), QX_SUCCEEDED);
  EXPECT_TRUE(fs::exists("tree/link"));
  EXPECT_TRUE(fs::is_empty("tree/target"));
  EXPECT_EQ(QX_RemoveDirectory("tree\\link", 0), removesLinks ? QX_SUCCEEDED : QX_FAILED);
  EXPECT_TRUE(fs::exists("tree/target"));
  test::RemoveLink("tree/link");
}

// A path that was cut would be that of a neighbour: each of these is the beginning of the next.
// Windows itself makes such names only where long paths are switched on.
TEST_F(FileRemoval, LeavesWhatDoesNotFitAPath) {
  const fs::path folder = fs::path("tree") / std::string(200, 'a');
  const auto directory = [&](std::size_t length) {
    return folder / std::string(length - folder.string().size() - 1, 'b');
  };
  constexpr std::size_t kFirst = 253;
  constexpr std::size_t kLast = 262;
  for (std::size_t length = kFirst; length <= kLast; ++length) Make(directory(length) / "f");
  for (std::size_t length = kFirst; length <= kLast; ++length) {
    const bool fits = length + 4 < 260;  // with the search pattern
    EXPECT_EQ(QX_RemoveDirectory(directory(length).string().c_str(), 0),
              fits ? QX_SUCCEEDED : QX_FAILED)
        << length;
    for (std::size_t other = kFirst; other <= kLast; ++other) {
      EXPECT_EQ(fs::exists(directory(other) / "f"), other > std::min<std::size_t>(length, 255));
    }
  }

  // In a walk the directory of 256 characters is found, but what is in it is not.
  Make(folder / "short");
  EXPECT_EQ(QX_RemoveDirectory("tree", 0), QX_FAILED);
  EXPECT_FALSE(fs::exists(folder / "short"));
  EXPECT_TRUE(fs::exists(directory(256) / "f"));
  fs::current_path(folder);  // from here all paths are short enough
  for (const auto& entry : fs::directory_iterator(".")) {
    EXPECT_EQ(QX_RemoveDirectory(entry.path().filename().string().c_str(), 0), QX_SUCCEEDED);
  }
  fs::current_path("../..");
}

TEST_F(FileRemoval, TakesATreeAsDeepAsPathsGoWithLittleStack) {
  fs::path deepest = "tree";
  fs::create_directory(deepest);
  while (deepest.string().size() + 4 < 260) {  // each is listed by a pattern
    test::WriteFile((deepest / "file").string(), "");
    deepest /= "d";
    fs::create_directory(deepest);
  }
  test::RunInThread(64 << 10, [] { EXPECT_EQ(QX_RemoveDirectory("tree", 0), QX_SUCCEEDED); });
  EXPECT_FALSE(fs::exists("tree"));
}

}  // namespace
}  // namespace launcher
