// Links and names that only Linux has, and a writer that is killed.

#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <string>

#include "steam_stand_in/stand_in_test.h"

namespace launcher {
namespace {

namespace fs = std::filesystem;

using StandInCloudFolder = test::StandInTest;

TEST_F(StandInCloudFolder, IsNotLeftOverLinks) {
  Start(R"({"accountId": 7})");
  fs::create_directories("outside");
  test::WriteFile("outside/a", "x");
  fs::create_directories("stand_in/7/remote");
  fs::create_directory_symlink(fs::absolute("outside"), "stand_in/7/remote/folder");
  fs::create_symlink(fs::absolute("outside/a"), "stand_in/7/remote/file");
  fs::create_symlink("file", "stand_in/7/remote/inner");

  ISteamRemoteStorage* const storage = SteamRemoteStorage();
  for (const char* const name : {"folder/a", "folder/b", "folder", "file", "inner"}) {
    SCOPED_TRACE(name);
    char buffer[8];
    EXPECT_FALSE(storage->FileWrite(name, "y", 1));
    EXPECT_FALSE(storage->FileExists(name));
    EXPECT_EQ(storage->FileRead(name, buffer, 8), 0);
    EXPECT_FALSE(storage->FileDelete(name));
  }
  EXPECT_EQ(storage->GetFileCount(), 0);
  EXPECT_EQ(test::ReadFile("outside/a"), "x");
  EXPECT_FALSE(fs::exists("outside/b"));
  EXPECT_TRUE(fs::is_symlink("stand_in/7/remote/file"));

  // Nor on the cloud's side.
  fs::create_directories("stand_in/7/cloud");
  fs::create_directory_symlink(fs::absolute("outside"), "stand_in/7/cloud/sub");
  EXPECT_FALSE(storage->FileWrite("sub/a", "y", 1));
  EXPECT_EQ(test::ReadFile("outside/a"), "x");
}

TEST_F(StandInCloudFolder, HasWholeFilesAfterAKill) {
  WriteSettings(R"({"accountId": 7})");
  const std::string contents[] = {std::string(3'000'000, 'a'), std::string(2'000'000, 'b')};
  const auto isWhole = [&](const std::string& name) {
    const std::string content = test::ReadFile("stand_in/7/" + name);
    return content == contents[0] || content == contents[1];
  };
  const pid_t writer = fork();
  if (writer == 0) {
    SteamAPI_Init();
    for (int i = 0;; ++i) {
      const std::string& content = contents[i % 2];
      SteamRemoteStorage()->FileWrite("a", content.data(), static_cast<int>(content.size()));
    }
  }
  for (int i = 0; !fs::exists("stand_in/7/cloud/a") && i < 60'000; ++i) usleep(1000);
  // The writer is inside a write: nothing else is staged.
  const auto isStaged = [] { return !fs::is_empty("stand_in/7/staging"); };
  for (int i = 0; !isStaged() && i < 1'000'000; ++i) {
  }
  kill(writer, SIGKILL);
  waitpid(writer, nullptr, 0);
  EXPECT_TRUE(isWhole("remote/a") && isWhole("cloud/a"));
  ASSERT_TRUE(SteamAPI_Init());
  EXPECT_FALSE(isStaged());
}

TEST_F(StandInCloudFolder, ListsCloudFilesOnly) {
  Start(R"({"accountId": 7})");
  fs::create_directories("stand_in/7/remote");
  for (const char* const name : {"a", "b:c", "con", "d.", "\xFF"}) {
    test::WriteFile(std::string("stand_in/7/remote/") + name, "x");
  }
  ASSERT_EQ(mkfifo("stand_in/7/remote/pipe", 0600), 0);
  ASSERT_EQ(SteamRemoteStorage()->GetFileCount(), 1);
  EXPECT_STREQ(SteamRemoteStorage()->GetFileNameAndSize(0, nullptr), "a");
  char buffer[8];
  EXPECT_EQ(SteamRemoteStorage()->FileRead("pipe", buffer, 8), 0);
}

}  // namespace
}  // namespace launcher
