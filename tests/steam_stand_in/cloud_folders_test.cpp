// The stand-in's cloud files: for names that lead out of the folder or collide on Windows, a wrong
// quota, a copy that is missing or goes before the file, and lists that are not current.

#include <algorithm>
#include <limits>
#include <string>
#include <utility>
#include <vector>

#include "steam_stand_in/stand_in_test.h"

namespace launcher {
namespace {

namespace fs = std::filesystem;

class StandInCloud : public test::StandInTest {
 protected:
  StandInCloud() { Start(R"({"accountId": 7, "quotaBytes": 10})"); }

  static bool Write(const std::string& name, const std::string& content) {
    return SteamRemoteStorage()->FileWrite(name.c_str(), content.data(),
                                           static_cast<std::int32_t>(content.size()));
  }

  static std::string Read(const char* name) {
    char buffer[64];
    const std::int32_t size = SteamRemoteStorage()->FileRead(name, buffer, sizeof buffer);
    return {buffer, static_cast<std::size_t>(size)};
  }

  static std::string Local(const std::string& name) {
    return test::ReadFile("stand_in/7/remote/" + name);
  }
  static std::string Copy(const std::string& name) {
    return test::ReadFile("stand_in/7/cloud/" + name);
  }

  using List = std::vector<std::pair<std::string, int>>;
  static List Listed() {
    List list;
    const std::int32_t count = SteamRemoteStorage()->GetFileCount();
    for (std::int32_t i = 0; i < count; ++i) {
      std::int32_t size = -1;
      const std::string name = SteamRemoteStorage()->GetFileNameAndSize(i, &size);
      list.emplace_back(name, size);
    }
    return list;
  }
};

TEST_F(StandInCloud, KeepsFiles) {
  const std::string content("a\0\r\n\x1A", 5);
  EXPECT_FALSE(SteamRemoteStorage()->FileExists("save"));
  ASSERT_TRUE(Write("save", content));
  EXPECT_TRUE(SteamRemoteStorage()->FileExists("save"));
  EXPECT_EQ(SteamRemoteStorage()->GetFileSize("save"), 5);
  EXPECT_EQ(Read("save"), content);
  EXPECT_EQ(Local("save"), content);
  EXPECT_EQ(Copy("save"), content);

  ASSERT_TRUE(Write("save", "b"));
  EXPECT_EQ(Read("save"), "b");
  ASSERT_TRUE(Write("save", ""));
  EXPECT_TRUE(SteamRemoteStorage()->FileExists("save"));
  EXPECT_EQ(SteamRemoteStorage()->GetFileSize("save"), 0);

  Start(R"({"accountId": 8})");
  EXPECT_FALSE(SteamRemoteStorage()->FileExists("save"));
}

TEST_F(StandInCloud, ReadsWhatFits) {
  ASSERT_TRUE(Write("save", "abcdef"));
  const std::pair<std::int32_t, const char*> cases[] = {
      {6, "abcdef"}, {3, "abc"}, {0, ""}, {-1, ""}, {7, "abcdef"}};
  for (const auto& [size, read] : cases) {
    std::string buffer(8, '#');
    const std::string expected(read);
    EXPECT_EQ(SteamRemoteStorage()->FileRead("save", buffer.data(), size),
              static_cast<std::int32_t>(expected.size()));
    EXPECT_EQ(buffer, expected + std::string(8 - expected.size(), '#'));
  }
  EXPECT_EQ(SteamRemoteStorage()->FileRead("save", nullptr, 6), 0);
}

TEST_F(StandInCloud, RefusesBadArguments) {
  EXPECT_FALSE(SteamRemoteStorage()->FileWrite("save", nullptr, 1));
  EXPECT_FALSE(SteamRemoteStorage()->FileWrite("save", "x", -1));
  EXPECT_FALSE(fs::exists("stand_in/7"));
}

// One of each kind that CloudName refuses: paths, characters, devices, encodings.
const std::string kRefusedNames[] = {"",
                                     "/a",
                                     "\\a",
                                     "\\\\server\\share",
                                     "C:\\a",
                                     "C:a",
                                     "a:b",
                                     ".",
                                     "..",
                                     "../a",
                                     "..\\a",
                                     "a/../b",
                                     "a\\../..\\b",
                                     "a/./b",
                                     "a//b",
                                     "a/",
                                     "a.",
                                     "a ",
                                     "a.../b",
                                     "a\nb",
                                     "a\tb",
                                     "a\x7F",
                                     "a*",
                                     "a?",
                                     "a\"b",
                                     "a<",
                                     "a>",
                                     "a|b",
                                     "CON",
                                     "con",
                                     "Con.txt",
                                     "con.tar.gz",
                                     "con .txt",
                                     "a/con",
                                     "con/a",
                                     "prn",
                                     "AUX.c",
                                     "nul",
                                     "CONIN$",
                                     "conout$",
                                     "COM1",
                                     "com9.log",
                                     "LPT1",
                                     "lpt9",
                                     "COM\xC2\xB9",
                                     "a\xFF",
                                     "a\xC3",
                                     "\xC0\xAF",
                                     "\xE0\x80\xAE",
                                     "\xED\xA0\x80",
                                     "\xF4\x90\x80\x80",
                                     std::string(260, 'a')};

TEST_F(StandInCloud, RefusesNames) {
  for (const std::string& name : kRefusedNames) {
    SCOPED_TRACE(name);
    EXPECT_FALSE(Write(name, "x"));
    EXPECT_EQ(Read(name.c_str()), "");
    EXPECT_FALSE(SteamRemoteStorage()->FileExists(name.c_str()));
    EXPECT_EQ(SteamRemoteStorage()->GetFileSize(name.c_str()), 0);
    EXPECT_FALSE(SteamRemoteStorage()->FileForget(name.c_str()));
    EXPECT_FALSE(SteamRemoteStorage()->FileDelete(name.c_str()));
    EXPECT_FALSE(fs::exists("stand_in/7"));
  }
  EXPECT_FALSE(SteamRemoteStorage()->FileWrite(nullptr, "x", 1));
  EXPECT_FALSE(SteamRemoteStorage()->FileExists(nullptr));
}

TEST_F(StandInCloud, TakesNamesThatOnlyLookBad) {
  const std::string longest = std::string(129, 'a') + '/' + std::string(129, 'b');
  EXPECT_TRUE(Write(longest, "x"));
  EXPECT_TRUE(SteamRemoteStorage()->FileDelete(longest.c_str()));
  for (const char* const name :
       {"a.b",  ".a",  "..a",     "a b",      "con1",         "cons",
        "xcon", "com", "com0",    "com10",    "lpt",          "nul_",
        "~a",   "a'b", "a%2e%2e", "\xC3\xA4", "\xE2\x82\xAC", "\xF0\x9F\x8E\xAE",
        "a/b",  "c\\d"}) {
    SCOPED_TRACE(name);
    EXPECT_TRUE(Write(name, "x"));
    EXPECT_EQ(Read(name), "x");
    EXPECT_TRUE(SteamRemoteStorage()->FileDelete(name));
  }
  EXPECT_EQ(Listed(), List());
}

TEST_F(StandInCloud, HasFolders) {
  ASSERT_TRUE(Write("a\\b/c", "x"));
  EXPECT_EQ(Read("a/b\\c"), "x");
  EXPECT_EQ(Listed(), (List{{"a/b/c", 1}}));
  // A name is a file or a folder.
  EXPECT_FALSE(Write("a/b", "y"));
  EXPECT_FALSE(Write("a/b/c/d", "y"));
  EXPECT_FALSE(SteamRemoteStorage()->FileExists("a"));
  EXPECT_EQ(Read("a"), "");
  EXPECT_FALSE(SteamRemoteStorage()->FileDelete("a"));
  EXPECT_TRUE(SteamRemoteStorage()->FileDelete("a/b/c"));
  EXPECT_TRUE(Write("a", "y"));
}

TEST_F(StandInCloud, ListsInTheOrderOfTheNames) {
  EXPECT_EQ(Listed(), List());
  for (const char* const name : {"b", "a/z", "a", "B", "a.x"}) Write(name, name);
  fs::remove_all("stand_in/7/remote");
  fs::create_directories("stand_in/7/remote/a");
  for (const char* const name : {"b", "a/z", "c", "a.x"}) Write(name, name);
  EXPECT_EQ(Listed(), (List{{"a.x", 3}, {"a/z", 3}, {"b", 1}, {"c", 1}}));

  for (const int index :
       {4, -1, std::numeric_limits<int>::max(), std::numeric_limits<int>::min()}) {
    std::int32_t size = 99;
    EXPECT_STREQ(SteamRemoteStorage()->GetFileNameAndSize(index, &size), "");
    EXPECT_EQ(size, 0);
  }
  EXPECT_STREQ(SteamRemoteStorage()->GetFileNameAndSize(0, nullptr), "a.x");

  // What another process does shows when the files are counted again.
  test::WriteFile("stand_in/7/remote/0", "x");
  EXPECT_STREQ(SteamRemoteStorage()->GetFileNameAndSize(0, nullptr), "a.x");
  EXPECT_EQ(SteamRemoteStorage()->GetFileCount(), 5);
  EXPECT_STREQ(SteamRemoteStorage()->GetFileNameAndSize(0, nullptr), "0");
  SteamRemoteStorage()->FileDelete("0");
  EXPECT_STREQ(SteamRemoteStorage()->GetFileNameAndSize(0, nullptr), "a.x");
}

TEST_F(StandInCloud, RespectsTheQuota) {
  EXPECT_FALSE(Write("a", std::string(11, 'x')));
  EXPECT_FALSE(SteamRemoteStorage()->FileExists("a"));
  EXPECT_TRUE(Write("a", std::string(10, 'x')));
  EXPECT_FALSE(Write("b", "y"));
  // Only the difference counts for a file that is replaced.
  EXPECT_TRUE(Write("a", std::string(10, 'z')));
  EXPECT_FALSE(Write("a", std::string(11, 'x')));
  EXPECT_EQ(Read("a"), std::string(10, 'z'));
  EXPECT_TRUE(Write("a", std::string(6, 'x')));
  EXPECT_TRUE(Write("b", std::string(4, 'y')));
  EXPECT_FALSE(Write("c", "z"));
  EXPECT_TRUE(SteamRemoteStorage()->FileDelete("b"));
  EXPECT_TRUE(Write("c", std::string(4, 'z')));
  // What is forgotten makes room and stays.
  EXPECT_TRUE(SteamRemoteStorage()->FileForget("c"));
  EXPECT_TRUE(Write("d", std::string(4, 'w')));
  EXPECT_EQ(Read("c"), "zzzz");
  EXPECT_FALSE(Write("c", "z"));
  EXPECT_EQ(Read("c"), "zzzz");
}

TEST_F(StandInCloud, ForgetsAndDeletes) {
  ASSERT_TRUE(Write("a", "x"));
  EXPECT_TRUE(SteamRemoteStorage()->FileForget("a"));
  EXPECT_FALSE(fs::exists("stand_in/7/cloud/a"));
  EXPECT_TRUE(SteamRemoteStorage()->FileExists("a"));
  EXPECT_EQ(Listed(), (List{{"a", 1}}));
  EXPECT_TRUE(SteamRemoteStorage()->FileForget("a"));

  ASSERT_TRUE(Write("a", "y"));
  EXPECT_EQ(Copy("a"), "y");
  EXPECT_TRUE(SteamRemoteStorage()->FileDelete("a"));
  EXPECT_FALSE(fs::exists("stand_in/7/cloud/a"));
  EXPECT_FALSE(fs::exists("stand_in/7/remote/a"));
  EXPECT_EQ(Listed(), List());
  EXPECT_FALSE(SteamRemoteStorage()->FileDelete("a"));
  EXPECT_FALSE(SteamRemoteStorage()->FileForget("a"));
}

TEST_F(StandInCloud, CanBeSwitchedOff) {
  for (const auto& [value, isEnabled] :
       {std::pair{0, false}, std::pair{1, true}, std::pair{0x100, true}, std::pair{-1, true}}) {
    SteamRemoteStorage()->SetCloudEnabledForApp(value);
    EXPECT_EQ(SteamRemoteStorage()->IsCloudEnabledForApp(), isEnabled);
  }
  ASSERT_TRUE(Write("a", "x"));
  SteamRemoteStorage()->SetCloudEnabledForApp(0);
  // Neither copies nor a quota then.
  ASSERT_TRUE(Write("a", "changed"));
  ASSERT_TRUE(Write("b", std::string(11, 'x')));
  EXPECT_EQ(Copy("a"), "x");
  EXPECT_FALSE(fs::exists("stand_in/7/cloud/b"));

  Start(R"({"accountId": 7, "quotaBytes": 10, "cloudEnabledForAccount": false})");
  EXPECT_TRUE(SteamRemoteStorage()->IsCloudEnabledForApp());
  ASSERT_TRUE(Write("c", std::string(11, 'x')));
  EXPECT_EQ(Copy("a"), "x");
}

TEST_F(StandInCloud, CatchesUpWhenASessionBegins) {
  for (const char* const name : {"changed", "lost", "forgotten"}) ASSERT_TRUE(Write(name, "x"));
  SteamRemoteStorage()->FileForget("forgotten");
  SteamAPI_Shutdown();
  test::WriteFile("stand_in/7/remote/changed", "y");
  fs::remove("stand_in/7/remote/lost");
  fs::create_directories("stand_in/7/staging");
  test::WriteFile("stand_in/7/staging/999999999-1", "half a fi");

  ASSERT_TRUE(SteamAPI_Init());
  EXPECT_EQ(Local("changed"), "y");
  EXPECT_EQ(Copy("changed"), "y");
  EXPECT_EQ(Local("lost"), "x");
  EXPECT_EQ(Local("forgotten"), "x");
  EXPECT_FALSE(fs::exists("stand_in/7/cloud/forgotten"));
  EXPECT_TRUE(fs::is_empty("stand_in/7/staging"));

  // A file that outgrew the quota without the cloud is kept here, and its copy as it is.
  SteamAPI_Shutdown();
  test::WriteFile("stand_in/7/remote/changed", std::string(11, 'z'));
  ASSERT_TRUE(SteamAPI_Init());
  EXPECT_EQ(Local("changed"), std::string(11, 'z'));
  EXPECT_EQ(Copy("changed"), "y");
}

// A process that is killed during a write leaves each file as it was or whole: the old file is
// never opened for writing, and the local file is replaced before its copy.
TEST_F(StandInCloud, ReplacesFilesAndDoesNotOverwriteThem) {
  ASSERT_TRUE(Write("a", "old"));
  fs::create_hard_link("stand_in/7/remote/a", "old local");
  fs::create_hard_link("stand_in/7/cloud/a", "old copy");
  ASSERT_TRUE(Write("a", "new"));
  EXPECT_EQ(test::ReadFile("old local") + test::ReadFile("old copy"), "oldold");
  EXPECT_EQ(Local("a") + Copy("a"), "newnew");
  fs::remove("stand_in/7/remote/a");
  fs::create_directories("stand_in/7/remote/a/in the way");
  EXPECT_FALSE(Write("a", "lost"));
  EXPECT_EQ(Copy("a"), "new");
}

TEST_F(StandInCloud, FailsWithoutItsFolder) {
  fs::create_directories("stand_in/7");
  test::WriteFile("stand_in/7/staging", "in the way");
  EXPECT_FALSE(Write("a", "x"));
  EXPECT_EQ(Listed(), List());
  fs::remove("stand_in/7/staging");
  ASSERT_TRUE(Write("a", "x"));
  test::WriteFile("stand_in/7/cloud/b", "x");
  fs::create_directories("stand_in/7/remote/b");
  EXPECT_FALSE(Write("b", "y"));
  EXPECT_EQ(Copy("b"), "x");
  EXPECT_TRUE(fs::is_empty("stand_in/7/staging"));
}

}  // namespace
}  // namespace launcher
