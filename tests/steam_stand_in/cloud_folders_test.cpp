// Finds a cloud file that is lost, half written, over the quota or out of step with its copy in the
// cloud, and a name that leads out of the cloud's folder.

#include <limits>
#include <string>
#include <utility>
#include <vector>

#include "steam_stand_in/stand_in_test.h"
#include "support/run_program.h"
#include "support/system.h"

namespace launcher {
namespace {

namespace fs = std::filesystem;

const std::string kLocal = "stand_in/7/remote/";
const std::string kCloud = "stand_in/7/cloud/";
const std::string kStaging = "stand_in/7/staging/";

class StandInCloud : public test::StandInTest {
 protected:
  StandInCloud() { Start(R"({"accountId": 7, "quotaBytes": 10})"); }

  static bool Write(const std::string& name, const std::string& content) {
    return Storage().FileWrite(name.c_str(), content.data(),
                               static_cast<std::int32_t>(content.size()));
  }

  static std::string Read(const std::string& name) {
    char buffer[64];
    const std::int32_t size = Storage().FileRead(name.c_str(), buffer, sizeof buffer);
    return {buffer, static_cast<std::size_t>(size)};
  }

  static ISteamRemoteStorage& Storage() { return *SteamRemoteStorage(); }

  // The names and sizes, as "name 1, other 2, ".
  static std::string Listed() {
    std::string list;
    const std::int32_t count = Storage().GetFileCount();
    for (std::int32_t i = 0; i < count; ++i) {
      std::int32_t size = -1;
      list += Storage().GetFileNameAndSize(i, &size);
      list += ' ' + std::to_string(size) + ", ";
    }
    return list;
  }
};

TEST_F(StandInCloud, KeepsFilesAndReadsWhatFits) {
  const std::string content("a\0\r\n\x1Ax", 6);
  EXPECT_FALSE(Storage().FileWrite("save", nullptr, 1));
  EXPECT_FALSE(Storage().FileWrite("save", "x", -1));
  EXPECT_FALSE(fs::exists("stand_in/7"));
  ASSERT_TRUE(Write("save", content));
  EXPECT_EQ(Storage().GetFileSize("save"), 6);
  EXPECT_EQ(test::ReadFile(kLocal + "save"), content);
  EXPECT_EQ(test::ReadFile(kCloud + "save"), content);
  for (const auto& [capacity, size] : {std::pair{7, 6}, {6, 6}, {5, 5}, {0, 0}, {-1, 0}}) {
    std::string buffer(8, '#');
    EXPECT_EQ(Storage().FileRead("save", buffer.data(), capacity), size);
    const auto read = static_cast<std::size_t>(size);
    EXPECT_EQ(buffer, content.substr(0, read) + std::string(8 - read, '#'));
  }
  EXPECT_EQ(Storage().FileRead("save", nullptr, 6), 0);
  ASSERT_TRUE(Write("save", ""));
  EXPECT_TRUE(Storage().FileExists("save"));
  EXPECT_EQ(Storage().GetFileSize("save"), 0);
  Start(R"({"accountId": 8})");
  EXPECT_FALSE(Storage().FileExists("save"));
}

TEST_F(StandInCloud, RefusesNamesThatWindowsCannotHave) {
  const std::string refused[] = {
      "", "/a", "\\a", "\\\\server\\share", "C:a", ".", "..", "../a", "a\\../..\\b", "a/./b",
      "a//b", "a/", "a.", "a ", "a.../b", "a\nb", "a\x1F", "a\x7F", "a*", "a?", "a\"b", "a<", "a>",
      "a|b", "CON", "con", "Con.txt", "con.tar.gz", "con .txt", "a/con", "con/a", "prn", "AUX.c",
      "nul", "CONIN$", "conout$", "COM1", "com9.log", "LPT1", "lpt9", "COM\xC2\xB9",
      // Too long, and no UTF-8: cut, overlong, a surrogate, beyond Unicode.
      std::string(260, 'a'), "a\xFF", "a\xC3", "a\xC3z", "\xC1\xBF", "\xE0\x9F\xBF",
      "\xF0\x8F\xBF\xBF", "\xED\xA0\x80", "\xED\xBF\xBF", "\xF4\x90\x80\x80"};
  for (const std::string& name : refused) {
    SCOPED_TRACE(name);
    EXPECT_FALSE(Write(name, "x"));
    EXPECT_EQ(Read(name), "");
    EXPECT_FALSE(Storage().FileExists(name.c_str()));
    EXPECT_EQ(Storage().GetFileSize(name.c_str()), 0);
    EXPECT_FALSE(Storage().FileForget(name.c_str()));
    EXPECT_FALSE(Storage().FileDelete(name.c_str()));
    EXPECT_FALSE(fs::exists("stand_in/7"));
  }
  EXPECT_FALSE(Storage().FileWrite(nullptr, "x", 1));
  for (const char* const name : {"a.b", ".a", "..a", "a b", "con1", "xcon", "com", "com0", "com10",
                                 "~a", "a%2e%2e", "\xC2\x80", "\xE0\xA0\x80", "\xED\x9F\xBF",
                                 "\xEE\x80\x80", "\xF0\x90\x80\x80", "\xF4\x8F\xBF\xBD"}) {
    SCOPED_TRACE(name);
    EXPECT_TRUE(Write(name, "x"));
    EXPECT_EQ(Listed(), std::string(name) + " 1, ");
    EXPECT_TRUE(Storage().FileDelete(name));
  }
}

TEST_F(StandInCloud, ListsFilesAndFoldersInTheOrderOfNames) {
  ASSERT_TRUE(Write("a\\b/c", "x"));
  EXPECT_EQ(Read("a/b\\c"), "x");
  // A name is a file or a folder, and an empty folder goes with its last file.
  EXPECT_FALSE(Write("a/b", "y"));
  EXPECT_FALSE(Write("a/b/c/d", "y"));
  EXPECT_FALSE(Storage().FileExists("a"));
  EXPECT_FALSE(Storage().FileDelete("a"));
  EXPECT_TRUE(Storage().FileDelete("a/b/c"));
  EXPECT_FALSE(fs::exists(kCloud + "a"));
  EXPECT_TRUE(fs::exists(kLocal));
  ASSERT_TRUE(Write("a", "y"));
  ASSERT_TRUE(Storage().FileDelete("a"));
  for (const char* const name : {"b", "a/z", "c", "a.x"}) ASSERT_TRUE(Write(name, name));
  EXPECT_EQ(Listed(), "a.x 3, a/z 3, b 1, c 1, ");

  constexpr int kGreatest = std::numeric_limits<int>::max();
  for (const int index : {4, -1, kGreatest, -kGreatest - 1}) {
    std::int32_t size = 99;
    EXPECT_STREQ(Storage().GetFileNameAndSize(index, &size), "");
    EXPECT_EQ(size, 0);
  }
  // The list stays until this process counts or changes files.
  test::WriteFile(kLocal + "0", "x");
  EXPECT_STREQ(Storage().GetFileNameAndSize(0, nullptr), "a.x");
  EXPECT_EQ(Storage().GetFileCount(), 5);
  EXPECT_STREQ(Storage().GetFileNameAndSize(0, nullptr), "0");
  EXPECT_TRUE(Storage().FileDelete("0"));
  EXPECT_STREQ(Storage().GetFileNameAndSize(0, nullptr), "a.x");
  EXPECT_TRUE(Write("0", ""));
  EXPECT_STREQ(Storage().GetFileNameAndSize(0, nullptr), "0");
}

TEST_F(StandInCloud, RespectsTheQuota) {
  struct Case {
    const char* name;
    std::size_t size;
    bool fits;
  };
  const Case cases[] = {{"a", 11, false},
                        {"a", 10, true},
                        {"b", 1, false},
                        {"b", 0, true},
                        // Only the difference counts for a file that is replaced.
                        {"a", 10, true},
                        {"a", 11, false},
                        {"a", 6, true},
                        {"b", 5, false},
                        {"b", 4, true}};
  for (const Case& each : cases) {
    EXPECT_EQ(Write(each.name, std::string(each.size, 'x')), each.fits) << each.size;
  }
  // A forgotten file stays and makes room.
  EXPECT_TRUE(Storage().FileForget("b"));
  EXPECT_TRUE(Write("c", "zzzz"));
  EXPECT_FALSE(Write("b", "z"));
  EXPECT_EQ(Read("b"), "xxxx");
  EXPECT_TRUE(Storage().FileDelete("c"));
  EXPECT_TRUE(Write("b", "z"));
}

TEST_F(StandInCloud, ForgetsAndDeletes) {
  ASSERT_TRUE(Write("a", "x"));
  EXPECT_TRUE(Storage().FileForget("a"));
  EXPECT_FALSE(fs::exists(kCloud + "a"));
  EXPECT_EQ(Listed(), "a 1, ");
  EXPECT_TRUE(Storage().FileForget("a"));
  ASSERT_TRUE(Write("a", "y"));
  EXPECT_TRUE(Storage().FileDelete("a"));
  EXPECT_FALSE(fs::exists(kCloud + "a"));
  EXPECT_FALSE(fs::exists(kLocal + "a"));
  EXPECT_FALSE(Storage().FileDelete("a"));
  EXPECT_FALSE(Storage().FileForget("a"));
}

TEST_F(StandInCloud, HasNeitherCopiesNorAQuotaIfItIsOff) {
  ASSERT_TRUE(Write("a", "x"));
  Storage().SetCloudEnabledForApp(0x100);
  EXPECT_TRUE(Storage().IsCloudEnabledForApp());
  Storage().SetCloudEnabledForApp(0);
  EXPECT_FALSE(Storage().IsCloudEnabledForApp());
  const std::string large(11, 'y');
  ASSERT_TRUE(Write("a", large));
  for (const char* const which : {"Account", "App"}) {
    Start(R"({"accountId": 7, "quotaBytes": 10, "cloudEnabledFor)" + std::string(which) +
          "\": false}");
    ASSERT_TRUE(Write("b", large));
    EXPECT_EQ(test::ReadFile(kCloud + "a"), "x");
    EXPECT_FALSE(fs::exists(kCloud + "b"));
  }
}

TEST_F(StandInCloud, CatchesUpWhenASessionBegins) {
  for (const char* const name : {"changed", "lost", "forgotten"}) ASSERT_TRUE(Write(name, "x"));
  Storage().FileForget("forgotten");
  SteamAPI_Shutdown();
  test::WriteFile(kLocal + "changed", "y");
  fs::remove(kLocal + "lost");
  test::WriteFile(kStaging + "999999999-1", "half a fi");
  ASSERT_TRUE(SteamAPI_Init());
  EXPECT_EQ(test::ReadFile(kLocal + "changed"), "y");
  EXPECT_EQ(test::ReadFile(kCloud + "changed"), "y");
  EXPECT_EQ(test::ReadFile(kLocal + "lost"), "x");
  EXPECT_EQ(test::ReadFile(kLocal + "forgotten"), "x");
  EXPECT_FALSE(fs::exists(kCloud + "forgotten"));
  EXPECT_TRUE(fs::is_empty(kStaging));

  // A file that outgrew the quota meanwhile stays, and its copy too. 9 bytes and 1 still fit.
  for (const std::size_t size : {std::size_t{10}, std::size_t{9}}) {
    SteamAPI_Shutdown();
    const std::string content(size, 'z');
    test::WriteFile(kLocal + "changed", content);
    ASSERT_TRUE(SteamAPI_Init());
    EXPECT_EQ(test::ReadFile(kLocal + "changed"), content);
    EXPECT_EQ(test::ReadFile(kCloud + "changed"), size == 9 ? content : "y");
  }
}

TEST_F(StandInCloud, ReplacesFilesByWholeOnes) {
  ASSERT_TRUE(Write("save", "old"));
  // Another name of the old file shows whether somebody wrote into it.
  for (const std::string& folder : {kLocal, kCloud}) {
    fs::create_hard_link(folder + "save", "stand_in/" + std::to_string(folder.size()));
  }
  ASSERT_TRUE(Write("save", "new"));
  for (const std::string& folder : {kLocal, kCloud}) {
    EXPECT_EQ(test::ReadFile("stand_in/" + std::to_string(folder.size())), "old");
    EXPECT_EQ(test::ReadFile(folder + "save"), "new");
  }
  fs::create_directories(kLocal + "b");
  EXPECT_FALSE(Write("b", "y"));
  EXPECT_FALSE(fs::exists(kCloud + "b"));
  EXPECT_TRUE(fs::is_empty(kStaging));
}

// A writer that ends at any moment leaves whole files.
TEST_F(StandInCloud, IsWholeAfterAKilledWriter) {
  Start(R"({"accountId": 7})");
  SteamAPI_Shutdown();
  const std::string writer = '"' + test::ProgramBeside("steam_stand_in_writer") + "\" ";
  for (int round = 0; round < 5; ++round) {
    ASSERT_EQ(test::RunProgram(writer + std::to_string(5 + 7 * round)), 9);
    for (const std::string& folder : {kLocal, kCloud}) {
      const std::string content = test::ReadFile(folder + "save");
      EXPECT_TRUE(content == std::string(300'000, content[0])) << content.size();
    }
  }
  ASSERT_TRUE(SteamAPI_Init());
  EXPECT_EQ(Listed(), "save 300000, ");
  EXPECT_TRUE(test::ReadFile(kLocal + "save") == test::ReadFile(kCloud + "save"));
  EXPECT_TRUE(!fs::exists(kStaging) || fs::is_empty(kStaging));
}

}  // namespace
}  // namespace launcher
