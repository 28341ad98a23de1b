// Finds a cloud file that is lost, half written, over the quota or different from its copy in the
// cloud, and a name that leads out of the cloud's folder. On Linux the test replaces system calls,
// to see their order in a write, and to let each fail.

#include "steam_stand_in/stand_in_test.h"

#if !defined(_WIN32)
#include <fcntl.h>
#include <unistd.h>

#include <cerrno>

static std::string calls;            // f for a flush, m for a move
static std::size_t failingCall = 0;  // counted from 1

static int ResultOf(char call) {
  calls += call;
  errno = EIO;
  return calls.size() == failingCall ? -1 : 0;
}

// The program's own functions come before the system's.
extern "C" int fsync(int /*descriptor*/) { return ResultOf('f'); }
extern "C" int rename(const char* from, const char* to) noexcept {
  return ResultOf('m') != 0 ? -1 : renameat(AT_FDCWD, from, AT_FDCWD, to);
}
#endif

namespace launcher {
namespace {

namespace fs = std::filesystem;

const std::string kLocal = "stand_in/7/remote/";
const std::string kCloud = "stand_in/7/cloud/";

enum Action { kWrite, kForget, kDelete, kStart, kStartWithoutCloud };

class StandInCloud : public test::StandInTest {
 protected:
  StandInCloud() { Do(kStart); }

  static ISteamRemoteStorage& Storage() { return *SteamRemoteStorage(); }

  // For kStart, first replaces or removes the local file `name`. For kStartWithoutCloud, `name` is
  // App or Account.
  static bool Do(Action action, const std::string& name = "none", const std::string& content = "") {
    const auto size = static_cast<std::int32_t>(content.size());
    if (action == kWrite) return Storage().FileWrite(name.c_str(), content.data(), size);
    if (action == kForget) return Storage().FileForget(name.c_str());
    if (action == kDelete) return Storage().FileDelete(name.c_str());
    const std::string off = action == kStart ? "" : ", \"cloudEnabledFor" + name + "\": false";
    fs::remove(kLocal + name);
    if (size != 0) test::WriteFile(kLocal + name, content);
    return Start(R"({"accountId": 7, "quotaBytes": 4)" + off + '}');
  }

  // The files with their contents, as "a=12 b=34 ".
  static std::string FilesIn(const std::string& folder) {
    std::string files;
    for (const std::string name : {"a", "b", "b/c/e", "c", "d"}) {
      const std::string path = folder + name;
      if (fs::is_regular_file(path)) files += name + '=' + test::ReadFile(path) + ' ';
    }
    return files;
  }
};

TEST_F(StandInCloud, KeepsFilesAndTheirCopies) {
  // An action, its result, and the files and copies after it. The quota is 4 bytes.
  using Step = std::tuple<Action, const char*, const char*, bool, const char*, const char*>;
  const Step steps[] = {
      {kForget, "a", "", false, "", ""},
      {kWrite, "a", "12", true, "a=12 ", "a=12 "},
      {kWrite, "b", "345", false, "a=12 ", "a=12 "},
      {kWrite, "b", "34", true, "a=12 b=34 ", "a=12 b=34 "},
      // A forgotten file stays here and makes room.
      {kForget, "b", "", true, "a=12 b=34 ", "a=12 "},
      {kWrite, "c", "56", true, "a=12 b=34 c=56 ", "a=12 c=56 "},
      {kDelete, "c", "", true, "a=12 b=34 ", "a=12 "},
      // An empty folder goes with its last file.
      {kDelete, "b", "", true, "a=12 ", "a=12 "},
      {kWrite, "b\\c/e", "3", true, "a=12 b/c/e=3 ", "a=12 b/c/e=3 "},
      {kDelete, "b/c/e", "", true, "a=12 ", "a=12 "},
      {kWrite, "b", "9", true, "a=12 b=9 ", "a=12 b=9 "},
      // A new session copies to the cloud what changed outside a session, if it fits the quota, and
      // fetches files that only the cloud has.
      {kStart, "a", "5678", true, "a=5678 b=9 ", "a=12 b=9 "},
      {kStart, "b", "3", true, "a=5678 b=3 ", "a=12 b=3 "},
      {kStart, "a", "56", true, "a=56 b=3 ", "a=56 b=3 "},
      {kForget, "b", "", true, "a=56 b=3 ", "a=56 "},
      {kStart, "a", "", true, "a=56 b=3 ", "a=56 "},
      {kStart, "../cloud/c", "12345", true, "a=56 b=3 c=12345 ", "a=56 c=12345 "},
      // The cloud is over its quota already.
      {kWrite, "d", "", false, "a=56 b=3 c=12345 ", "a=56 c=12345 "},
      {kDelete, "c", "", true, "a=56 b=3 ", "a=56 "},
      // Without the cloud there are neither copies nor a quota.
      {kStartWithoutCloud, "App", "", true, "a=56 b=3 ", "a=56 "},
      {kWrite, "a", "78", true, "a=78 b=3 ", "a=56 "},
      {kStartWithoutCloud, "Account", "", true, "a=78 b=3 ", "a=56 "},
      {kWrite, "b", "12345", true, "a=78 b=12345 ", "a=56 "},
  };
  for (const auto& [action, name, content, succeeds, files, copies] : steps) {
    SCOPED_TRACE(std::string(name) + ' ' + content + ' ' + files);
    EXPECT_EQ(Do(action, name, content), succeeds);
    EXPECT_EQ(FilesIn(kLocal), files);
    EXPECT_EQ(FilesIn(kCloud), copies);
  }
}

TEST_F(StandInCloud, ReadsWhatFitsAndSwitchesTheCloud) {
  EXPECT_TRUE(Do(kWrite, "a", "1\r\n\x1A"));
  const std::tuple<int, int, const char*> cases[] = {
      {5, 4, "1\r\n\x1A#"}, {3, 3, "1\r\n##"}, {-1, 0, "#####"}};
  for (const auto& [capacity, count, text] : cases) {
    std::string buffer(5, '#');
    EXPECT_EQ(Storage().FileRead("a", buffer.data(), capacity), count);
    EXPECT_EQ(buffer, text);
  }
  // Any value other than 0 enables the cloud.
  for (const int value : {0x100, 0}) {
    Storage().SetCloudEnabledForApp(value);
    EXPECT_EQ(Storage().IsCloudEnabledForApp(), value != 0);
  }
}

TEST_F(StandInCloud, KeepsItsListUntilFilesAreCountedOrChanged) {
  std::int32_t size = 99;
  const auto name = [&](int index) { return Storage().GetFileNameAndSize(index, &size); };
  for (const char* const file : {"b", "a/z", "a.x"}) Do(kWrite, file, "1");
  EXPECT_STREQ(name(0), "a.x");
  test::WriteFile(kLocal + "0", "12");
  EXPECT_STREQ(name(0), "a.x");
  EXPECT_EQ(Storage().GetFileCount(), 4);
  std::string names;
  for (const int index : {1, 2, 3, 4, -1}) names += name(index);
  EXPECT_EQ(names, "a.xa/zb");
  EXPECT_EQ(size, 0);
  EXPECT_STREQ(name(0), "0");
  EXPECT_EQ(size, 2);
  EXPECT_EQ(Storage().GetFileSize("0"), 2);
  EXPECT_TRUE(Storage().FileExists("0"));
  Do(kDelete, "0");
  EXPECT_STREQ(name(0), "a.x");
  Do(kWrite, "0");
  EXPECT_STREQ(name(0), "0");
}

TEST_F(StandInCloud, RefusesNamesThatWindowsCannotHave) {
  for (const char* const name :
       {"", "/a", "C:a", "..", "a\\", "a ", "a\x1F", "a\x7F", "Con.t.x", "con .txt", "nul/a",
        "conin$", "lpt9", "COM\xC2\xB9", "a\xFF", "\xC3", "\xC3z", "\xED\xA0\x80"}) {
    EXPECT_FALSE(Do(kWrite, name)) << name;
  }
  EXPECT_FALSE(Storage().FileWrite(nullptr, "", 0) || fs::exists("stand_in/7"));
  for (const char* const name : {"..a b", "con1", "xcon", "com0", "com10", "~", "\xC2\x80"}) {
    EXPECT_TRUE(Do(kWrite, name)) << name;
  }
  const std::string longest = std::string(200, 'a') + '/' + std::string(58, 'b');
  EXPECT_TRUE(test::kIsWindows || Do(kWrite, longest));
  EXPECT_FALSE(Do(kWrite, longest + 'b'));
}

#if !defined(_WIN32)
TEST_F(StandInCloud, KeepsTheOldFileIfAWriteFails) {
  const int lowest = dup(0);  // the next free descriptor
  // The call that fails, the calls up to it, and the contents of the file and its copy.
  const std::tuple<std::size_t, std::string, std::string> cases[] = {{0, "ffmfmf", "newnew"},
                                                                     {1, "f", "oldold"},
                                                                     {2, "ff", "oldold"},
                                                                     {3, "ffm", "oldold"},
                                                                     {5, "ffmfm", "newold"}};
  for (const auto& [failing, expected, contents] : cases) {
    failingCall = 0;
    Do(kWrite, "a", "old");
    calls.clear();
    failingCall = failing;
    EXPECT_EQ(Do(kWrite, "a", "new"), contents[0] == 'n');
    EXPECT_EQ(calls, expected);
    // If its first call fails, a new session leaves the copy as it is.
    calls.clear();
    failingCall = 1;
    Do(kStart);
    EXPECT_EQ(test::ReadFile(kLocal + "a") + test::ReadFile(kCloud + "a"), contents);
  }
  EXPECT_EQ(dup(0), lowest + 1) << "a file stayed open";
}

TEST_F(StandInCloud, RemovesWhatEndedProcessesWereWriting) {
  // This process writes nothing now, so a file with its id is from an earlier process.
  const std::string running = "1", writers[] = {running, "999999999", std::to_string(getpid())};
  const std::string folder = "stand_in/7/staging/";
  fs::create_directories(folder);
  for (const std::string& writer : writers) test::WriteFile(folder + writer + "-0", "");
  Do(kStartWithoutCloud, "App");
  for (const std::string& writer : writers) {
    EXPECT_EQ(fs::exists(folder + writer + "-0"), writer == running);
  }
}

TEST_F(StandInCloud, FollowsNoLinks) {
  test::WriteFile("a", "x");
  for (const std::string& folder : {kLocal, kCloud}) {
    fs::create_directories(folder);
    fs::create_directory_symlink(fs::absolute("."), folder + "folder");
    fs::create_symlink(fs::absolute("a"), folder + "file");
    test::WriteFile(folder + "con", "x");  // a refused name: not listed
    for (const char* const name : {"folder/a", "file"}) {
      EXPECT_FALSE(Do(kWrite, name, "y") || Do(kDelete, name) || Storage().FileExists(name));
    }
    EXPECT_EQ(Storage().GetFileCount(), 0);
    fs::remove_all(folder);
  }
  EXPECT_EQ(test::ReadFile("a"), "x");
}
#endif

}  // namespace
}  // namespace launcher
