// Finds a user's file that is read or written in part, a failure of the system that is taken for
// another, and a path that does not fit or that Steam did not give.

#include <filesystem>

#include "steam/scripted_test.h"
#include "support/data_file.h"

namespace launcher {
namespace {

namespace fs = std::filesystem;
using test::Bytes;
using test::GuardedBuffer;

class UserDataFiles : public test::ScriptedTest {
 protected:
  UserDataFiles() {
    fs::create_directory("user");
    script_.folder = "user";
  }

  static ResultCode Read(const char* name, const GuardedBuffer& buffer) {
    return QX_SteamAPI_ReadFile(name, buffer.Data(), buffer.Size());
  }

  static void ExpectNoPath(const char* name) {
    EXPECT_EQ(QX_SteamAPI_IsFileExist(name), 0);
    EXPECT_EQ(Read(name, GuardedBuffer(20)), QX_FAILED);
    EXPECT_EQ(QX_SteamAPI_WriteFile(name, "data", 4), QX_FAILED);
  }
};

TEST_F(UserDataFiles, AreWrittenAndReadWhole) {
  const GuardedBuffer buffer(5);
  EXPECT_EQ(QX_SteamAPI_IsFileExist("save"), 0);
  EXPECT_EQ(Read("save", buffer), QX_NOT_FOUND);
  EXPECT_EQ(QX_SteamAPI_WriteFile("save", "much longer", 11), QX_SUCCEEDED);
  EXPECT_EQ(QX_SteamAPI_WriteFile("save", "a\r\n\0z", 5), QX_SUCCEEDED);
  EXPECT_EQ(test::ReadFile("user/save"), std::string("a\r\n\0z", 5));
  EXPECT_EQ(QX_SteamAPI_IsFileExist("save"), 1);
  const GuardedBuffer small(4);
  EXPECT_EQ(Read("save", small), QX_BAD_ARGUMENT);
  EXPECT_TRUE(small.IsUntouched());
  EXPECT_EQ(Read("save", buffer), QX_SUCCEEDED);
  EXPECT_EQ(buffer.Content(), (Bytes{'a', '\r', '\n', 0, 'z'}));
  const GuardedBuffer large(6);
  EXPECT_EQ(Read("save", large), QX_SUCCEEDED);
  EXPECT_EQ(large.Data()[5], GuardedBuffer::kFill) << "no terminator";
}

TEST_F(UserDataFiles, FailOnWhatIsNoFileOrDoesNotFit) {
  fs::create_directory("user/folder");
  test::WriteFile("user/empty", "");
  test::WriteFile("user/huge", "");
  // More than 31 bits; the file takes no room until it is written.
  std::error_code failed;
  fs::resize_file("user/huge", std::uintmax_t{1} << 31, failed);
  const GuardedBuffer buffer(5000);
  EXPECT_EQ(QX_SteamAPI_IsFileExist("folder"), 1);
  EXPECT_EQ(Read("empty", buffer), QX_READ_FAILED);
  EXPECT_TRUE(failed || Read("huge", buffer) == QX_READ_FAILED);
  // Which of the two depends on whether the system reports a size for a folder.
  const ResultCode ofFolder = Read("folder", buffer);
  EXPECT_TRUE(ofFolder == QX_OPEN_FAILED || ofFolder == QX_READ_FAILED);
  EXPECT_TRUE(buffer.IsUntouched());
  EXPECT_EQ(QX_SteamAPI_WriteFile("folder", "data", 4), QX_OPEN_FAILED);
  EXPECT_EQ(QX_SteamAPI_WriteFile("no such folder\\save", "data", 4), QX_OPEN_FAILED);
  if (!fs::exists("/dev/full")) return;  // a disk without room, if the system has one
  script_.folder = "/dev";
  // Also of what would fit a stream's buffer.
  for (const std::uint32_t size : {1u, 100000u}) {
    EXPECT_EQ(QX_SteamAPI_WriteFile("full", Bytes(size).data(), size), QX_WRITE_FAILED) << size;
  }
}

TEST_F(UserDataFiles, HavePathsOfAtMost259Characters) {
  // "user\" and the name.
  const std::string longest(254, 'n');
  EXPECT_EQ(QX_SteamAPI_WriteFile(longest.c_str(), "data", 4), QX_SUCCEEDED);
  EXPECT_EQ(QX_SteamAPI_IsFileExist(longest.c_str()), 1);
  ExpectNoPath((longest + 'n').c_str());
  EXPECT_EQ(script_.calls, Calls(5, "GetUserDataFolder 260"));

  const std::pair<std::int32_t, const char*> cases[] = {{10, "user\\save"}, {9, ""}, {5, ""}};
  for (const auto& [capacity, text] : cases) {
    const GuardedBuffer path(static_cast<std::size_t>(capacity));
    EXPECT_EQ(QX_SteamAPI_CatUserFilePath(path.Text(), capacity, "save"),
              *text != '\0' ? QX_SUCCEEDED : QX_FAILED);
    EXPECT_STREQ(path.Text(), text);
  }
  const GuardedBuffer folder(5);
  EXPECT_EQ(QX_SteamAPI_GetUserDataFolder(folder.Text(), 5), 1);
  EXPECT_STREQ(folder.Text(), "user");
}

TEST_F(UserDataFiles, AreNotTouchedIfSteamGivesNoFolder) {
  test::WriteFile("\\save", "not the user's");
  script_.folder = nullptr;
  const GuardedBuffer buffer(20);
  EXPECT_EQ(QX_SteamAPI_GetUserDataFolder(buffer.Text(), 20), 0);
  EXPECT_EQ(QX_SteamAPI_CatUserFilePath(buffer.Text(), 20, "save"), QX_FAILED);
  ExpectNoPath("save");
  // A folder that fills its buffer without a terminator is none either.
  script_.folder = "user";
  script_.terminatesFolder = false;
  EXPECT_EQ(QX_SteamAPI_CatUserFilePath(buffer.Text(), 20, "save"), QX_FAILED);
  EXPECT_EQ(buffer.Data()[0], 0);
  ExpectNoPath("save");
}

TEST_F(UserDataFiles, CheckArgumentsAndThenSteam) {
  EXPECT_EQ(QX_SteamAPI_IsFileExist(nullptr), 0);
  EXPECT_EQ(script_.calls, Calls{});
  script_.hasInterfaces = false;
  char buffer[8] = "before";
  const ResultCode badArgument[] = {QX_SteamAPI_GetUserDataFolder(nullptr, 8),
                                    QX_SteamAPI_GetUserDataFolder(buffer, 0),
                                    QX_SteamAPI_GetUserDataFolder(buffer, -1),
                                    QX_SteamAPI_CatUserFilePath(nullptr, 8, "save"),
                                    QX_SteamAPI_CatUserFilePath(buffer, 0, "save"),
                                    QX_SteamAPI_CatUserFilePath(buffer, -1, "save"),
                                    QX_SteamAPI_CatUserFilePath(buffer, 8, nullptr),
                                    QX_SteamAPI_ReadFile(nullptr, buffer, 8),
                                    QX_SteamAPI_ReadFile("save", nullptr, 8),
                                    QX_SteamAPI_ReadFile("save", buffer, 0),
                                    QX_SteamAPI_WriteFile(nullptr, buffer, 8),
                                    QX_SteamAPI_WriteFile("save", nullptr, 8),
                                    QX_SteamAPI_WriteFile("save", buffer, 0)};
  for (const ResultCode result : badArgument) EXPECT_EQ(result, QX_BAD_ARGUMENT);
  const ResultCode noSteam[] = {
      QX_SteamAPI_GetUserDataFolder(buffer, 8), QX_SteamAPI_CatUserFilePath(buffer, 8, "save"),
      QX_SteamAPI_ReadFile("save", buffer, 8), QX_SteamAPI_WriteFile("save", buffer, 8)};
  for (const ResultCode result : noSteam) EXPECT_EQ(result, QX_NO_STEAM);
  EXPECT_EQ(QX_SteamAPI_IsFileExist("save"), 0);
  EXPECT_STREQ(buffer, "before");
}

}  // namespace
}  // namespace launcher
