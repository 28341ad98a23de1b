#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <string>
#include <vector>

#include "launcher_dll.h"
#include "support/data_file.h"
#include "support/scratch_directory.h"
#include "support/system.h"

namespace launcher {
namespace {

namespace fs = std::filesystem;

using Names = std::vector<std::string>;

// Every name below the current directory, but what belongs to "tree", in ascending order.
Names WitnessNames() {
  Names names;
  for (fs::recursive_directory_iterator entry("."); entry != fs::recursive_directory_iterator();
       ++entry) {
    if (entry->path() == fs::path(".") / "tree") {
      entry.disable_recursion_pending();
    } else {
      names.push_back(entry->path().generic_string());
    }
  }
  std::sort(names.begin(), names.end());
  return names;
}

// What a test removes is called "tree". All else in its directory is a witness, which ends as it
// began.
class FileRemoval : public test::ScratchTest {
 protected:
  FileRemoval() {
    for (const char* const file : {"witness/inner/file", "tree.txt", "tre/file", "treeside/file"}) {
      Make(file);
    }
    witness_ = WitnessNames();
  }
  ~FileRemoval() override { EXPECT_EQ(WitnessNames(), witness_); }

  static void Make(const fs::path& file) {
    if (file.has_parent_path()) fs::create_directories(file.parent_path());
    test::WriteFile(file.string(), "content");
  }

  static void MakeTree() {
    for (const char* const file :
         {"tree/a", "tree/b/c/d", "tree/b/e", "tree/b/f/g/h", "tree/z.z"}) {
      Make(file);
    }
    fs::create_directories("tree/b/empty");
    fs::create_directories("tree/.hidden");
  }

 private:
  Names witness_;
};

TEST_F(FileRemoval, TakesADirectoryWithAllThatIsInIt) {
  const std::string absolute = fs::absolute("tree").string();
  for (const std::string& path : {std::string("tree"), std::string("tree\\"), std::string("tree/"),
                                  std::string(".\\tre\\..\\tree"), absolute}) {
    SCOPED_TRACE(path);
    for (const std::uint32_t keepDirectory : {0u, 1u, 0x80000000u}) {
      MakeTree();
      EXPECT_EQ(QX_RemoveDirectory(path.c_str(), keepDirectory), QX_SUCCEEDED);
      EXPECT_EQ(fs::exists("tree"), keepDirectory != 0);
      EXPECT_TRUE(keepDirectory == 0 || fs::is_empty("tree"));
    }
  }
}

TEST_F(FileRemoval, TellsWhatItCannotRemove) {
  struct Case {
    const char* path;
    ResultCode removed;
    ResultCode emptied;
  };
  const Case cases[] = {
      {nullptr, QX_BAD_ARGUMENT, QX_BAD_ARGUMENT}, {"missing", QX_FAILED, QX_SUCCEEDED},
      {"missing\\inner", QX_FAILED, QX_SUCCEEDED}, {"tree.txt", QX_FAILED, QX_SUCCEEDED},  // a file
      {"tre?", QX_FAILED, QX_SUCCEEDED},
  };
  for (const Case& tried : cases) {
    SCOPED_TRACE(tried.path != nullptr ? tried.path : "null");
    EXPECT_EQ(QX_RemoveDirectory(tried.path, 0), tried.removed);
    EXPECT_EQ(QX_RemoveDirectory(tried.path, 1), tried.emptied);
  }

  EXPECT_EQ(QX_RemoveFile(nullptr), QX_BAD_ARGUMENT);
  EXPECT_EQ(QX_RemoveFile("missing"), QX_FAILED);
  EXPECT_EQ(QX_RemoveFile("witness"), QX_FAILED) << "a directory";
  Make("tree/file");
  EXPECT_EQ(QX_RemoveFile("tree\\file"), QX_SUCCEEDED);
  EXPECT_TRUE(fs::is_empty("tree"));
}

TEST_F(FileRemoval, GoesOnPastWhatResists) {
  MakeTree();
  Make("tree/b/c/held");
  fs::permissions("tree/b/c/held",
                  fs::perms::owner_write | fs::perms::group_write | fs::perms::others_write,
                  fs::perm_options::remove);
  for (const std::uint32_t keepDirectory : {0u, 1u}) {
    EXPECT_EQ(QX_RemoveDirectory("tree", keepDirectory), keepDirectory == 0 ? QX_FAILED : 0);
    EXPECT_EQ(std::distance(fs::recursive_directory_iterator("tree"), {}), 3);
    EXPECT_TRUE(fs::exists("tree/b/c/held"));
    MakeTree();
  }
  EXPECT_EQ(QX_RemoveFile("tree\\b\\c\\held"), QX_FAILED);
  fs::permissions("tree/b/c/held", fs::perms::owner_write, fs::perm_options::add);
  EXPECT_EQ(QX_RemoveDirectory("tree", 0), QX_SUCCEEDED);
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
  // For a link to a file Wine removes the file.
  if (result == QX_SUCCEEDED) test::MakeLink("../witness/inner/file", "tree/file");
  ASSERT_TRUE(fs::exists("tree/up/tree/self/b/link/file"));
  EXPECT_EQ(QX_RemoveDirectory("tree", 0), result);
  for (const auto& [link, target] : links) {
    EXPECT_EQ(fs::exists(link), result != QX_SUCCEEDED);
    test::RemoveLink(link);
  }
  EXPECT_FALSE(fs::exists("tree/file"));
  EXPECT_EQ(QX_RemoveDirectory("tree", 1), QX_SUCCEEDED);
  EXPECT_TRUE(!fs::exists("tree") || fs::is_empty("tree"));
}

// A named link stands for the directory that it leads to, as anywhere else in a path.
TEST_F(FileRemoval, EmptiesWhatANamedLinkLeadsTo) {
  Make("tree/target/inner/file");
  test::MakeLink("target", "tree/link");
  EXPECT_EQ(QX_RemoveDirectory("tree\\link", 1), QX_SUCCEEDED);
  EXPECT_TRUE(fs::exists("tree/link"));
  EXPECT_TRUE(fs::is_empty("tree/target"));

  Make("tree/target/kept");
  fs::permissions("tree/target/kept", fs::perms::owner_write, fs::perm_options::remove);
  EXPECT_EQ(QX_RemoveDirectory("tree\\link", 0),
            test::SystemRemovesLinks() ? QX_SUCCEEDED : QX_FAILED);
  EXPECT_TRUE(fs::exists("tree/target/kept"));
  test::RemoveLink("tree/link");
}

// A path that was cut would be that of a neighbour: each of these is the beginning of the next.
// Windows itself makes such names only where long paths are switched on.
TEST_F(FileRemoval, LeavesWhatDoesNotFitAPath) {
  const fs::path folder = fs::path("tree") / std::string(200, 'a');
  const std::size_t folderLength = folder.string().size() + 1;
  const auto directory = [&](std::size_t length) {
    return folder / std::string(length - folderLength, 'b');
  };
  for (std::size_t length = 250; length <= 265; ++length) Make(directory(length) / "f");
  for (std::size_t length = 250; length <= 265; ++length) {
    SCOPED_TRACE(length);
    const bool fits = length + 4 < 260;  // with the search pattern
    EXPECT_EQ(QX_RemoveDirectory(directory(length).string().c_str(), 0),
              fits ? QX_SUCCEEDED : QX_FAILED);
    EXPECT_EQ(fs::exists(directory(length)), !fits);
    for (std::size_t other = std::max<std::size_t>(length, 255) + 1; other <= 265; ++other) {
      EXPECT_TRUE(fs::exists(directory(other) / "f")) << other;
    }
  }

  // In a walk: the directory of 256 characters is found, but what is in it is not.
  Make(folder / "short");
  EXPECT_EQ(QX_RemoveDirectory("tree", 0), QX_FAILED);
  EXPECT_FALSE(fs::exists(folder / "short"));
  EXPECT_TRUE(fs::exists(directory(256) / "f"));
  // As the caller's own name it is short enough.
  EXPECT_EQ(QX_RemoveDirectory("tree", 1), QX_SUCCEEDED);
  fs::current_path(folder);
  EXPECT_EQ(QX_RemoveDirectory(directory(265).filename().string().c_str(), 0), QX_SUCCEEDED);
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

TEST_F(FileRemoval, TakesAWideTree) {
  fs::create_directories("tree/inner");
  for (int i = 0; i < test::kManyFiles; ++i) {
    test::WriteFile((i % 2 == 0 ? "tree/" : "tree/inner/") + std::to_string(i), "");
  }
  EXPECT_EQ(QX_RemoveDirectory("tree", 0), QX_SUCCEEDED);
  EXPECT_FALSE(fs::exists("tree"));
}

}  // namespace
}  // namespace launcher
