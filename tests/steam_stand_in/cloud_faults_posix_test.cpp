// Finds a cloud write that does not flush, that moves a file before both are on the disk, or that
// goes on after a failure; a link that leads out of the folder; a staged file of a running process
// that is removed. On Linux, where a test can take the place of the system's calls.

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <string>
#include <vector>

#include "steam_stand_in/stand_in_test.h"

namespace {

std::vector<std::string> events;
std::size_t failingEvent = 0;  // counted from 1

bool Fails(const std::string& event) {
  events.push_back(event);
  if (events.size() != failingEvent) return false;
  errno = EIO;
  return true;
}

}  // namespace

// The program's own functions come before the system's.
extern "C" int fsync(int descriptor) {
  struct stat status = {};
  if (fstat(descriptor, &status) == 0 && S_ISREG(status.st_mode) && Fails("flush")) return -1;
  return static_cast<int>(syscall(SYS_fsync, descriptor));
}

extern "C" int rename(const char* from, const char* to) noexcept {
  const std::string place = to;
  if (Fails("move to " + place.substr(place.rfind("/7/") + 3))) return -1;
  return renameat(AT_FDCWD, from, AT_FDCWD, to);
}

namespace launcher {
namespace {

namespace fs = std::filesystem;

class StandInCloudOnLinux : public test::StandInTest {
 protected:
  StandInCloudOnLinux() {
    Start(R"({"accountId": 7})");
    events.clear();
    failingEvent = 0;
  }
};

TEST_F(StandInCloudOnLinux, IsOnTheDiskBeforeItIsMoved) {
  const std::vector<std::string> all = {"flush", "flush", "move to remote/a", "move to cloud/a"};
  struct Case {
    std::size_t failing;
    bool isWritten;
    const char* local;
    const char* copy;
  };
  const Case cases[] = {{0, true, "new", "new"},
                        {1, false, "old", "old"},
                        {2, false, "old", "old"},
                        {3, false, "old", "old"},
                        {4, true, "new", "old"}};
  for (const Case& each : cases) {
    SCOPED_TRACE(each.failing);
    failingEvent = 0;
    ASSERT_TRUE(SteamRemoteStorage()->FileWrite("a", "old", 3));
    events.clear();
    failingEvent = each.failing;
    EXPECT_EQ(SteamRemoteStorage()->FileWrite("a", "new", 3), each.isWritten);
    const std::size_t count = each.failing == 0 ? all.size() : each.failing;
    EXPECT_EQ(events, std::vector<std::string>(all.begin(), all.begin() + static_cast<int>(count)));
    EXPECT_EQ(test::ReadFile("stand_in/7/remote/a"), each.local);
    EXPECT_EQ(test::ReadFile("stand_in/7/cloud/a"), each.copy);
    EXPECT_TRUE(fs::is_empty("stand_in/7/staging"));
  }
  // The last row's copy is made when the next session begins, as carefully.
  SteamAPI_Shutdown();
  events.clear();
  failingEvent = 1;
  ASSERT_TRUE(SteamAPI_Init());
  EXPECT_EQ(events, std::vector<std::string>{"flush"});
  EXPECT_EQ(test::ReadFile("stand_in/7/cloud/a"), "old");
}

TEST_F(StandInCloudOnLinux, IsNotLeftOverLinks) {
  fs::create_directories("outside");
  test::WriteFile("outside/a", "x");
  for (const std::string folder : {"stand_in/7/remote", "stand_in/7/cloud"}) {
    SCOPED_TRACE(folder);
    fs::create_directories(folder);
    fs::create_directory_symlink(fs::absolute("outside"), folder + "/folder");
    fs::create_symlink(fs::absolute("outside/a"), folder + "/file");
    for (const char* const name : {"folder/a", "folder", "file"}) {
      char buffer[8];
      EXPECT_FALSE(SteamRemoteStorage()->FileWrite(name, "y", 1));
      EXPECT_FALSE(SteamRemoteStorage()->FileExists(name));
      EXPECT_EQ(SteamRemoteStorage()->FileRead(name, buffer, 8), 0);
      EXPECT_FALSE(SteamRemoteStorage()->FileDelete(name));
    }
    EXPECT_EQ(test::ReadFile("outside/a"), "x");
    EXPECT_TRUE(fs::is_symlink(folder + "/file"));
    // Nor does the list have them, or what else is no cloud file.
    for (const char* const name : {"/a", "/b:c", "/con"}) test::WriteFile(folder + name, "x");
    ASSERT_EQ(mkfifo((folder + "/pipe").c_str(), 0600), 0);
    EXPECT_EQ(SteamRemoteStorage()->GetFileCount(), folder == "stand_in/7/remote" ? 1 : 0);
    fs::remove_all(folder);
  }
}

TEST_F(StandInCloudOnLinux, TakesNamesOf259BytesAndKeepsWhatOthersStage) {
  const std::string longest = std::string(129, 'a') + '/' + std::string(129, 'b');
  EXPECT_TRUE(SteamRemoteStorage()->FileWrite(longest.c_str(), "x", 1));
  EXPECT_FALSE(SteamRemoteStorage()->FileWrite((longest + 'b').c_str(), "x", 1));

  SteamAPI_Shutdown();
  const std::string staging = "stand_in/7/staging/";
  for (const int writer : {getpid(), getppid(), 1}) {
    test::WriteFile(staging + std::to_string(writer) + "-1", "half a fi");
  }
  ASSERT_TRUE(SteamAPI_Init());
  EXPECT_FALSE(fs::exists(staging + std::to_string(getpid()) + "-1"));
  EXPECT_TRUE(fs::exists(staging + std::to_string(getppid()) + "-1"));
  EXPECT_TRUE(fs::exists(staging + "1-1"));
}

}  // namespace
}  // namespace launcher
