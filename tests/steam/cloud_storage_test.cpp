// Finds an export of the cloud that passes other arguments to Steam, returns a wrong result, or
// calls Steam before it has checked its arguments.

#include <functional>

#include "steam/scripted_test.h"

namespace launcher {
namespace {

using CloudStorage = test::ScriptedTest;

TEST_F(CloudStorage, PassesCallsAndResultsOn) {
  char buffer[8] = "before";
  // What Steam is asked, and the results if Steam returns true and 5, false and -4, and without it.
  struct Row {
    const char* asked;
    std::function<std::int32_t()> call;
    std::int32_t yes;
    std::int32_t no;
    std::int32_t noSteam;
  };
  const Row rows[] = {
      {"FileWrite f data 4", [] { return QX_SteamAPI_RemoteStorageFileWrite("f", "data", 4); }, 0,
       -1, -3},
      {"FileRead f 0", [&] { return QX_SteamAPI_RemoteStorageFileRead("f", buffer, 0); }, 5, -4,
       -3},
      {"FileDelete f", [] { return QX_SteamAPI_RemoteStorageFileDelete("f"); }, 0, -1, -1},
      {"FileExists f", [] { return QX_SteamAPI_RemoteStorageFileExist("f"); }, 1, 0, 0},
      {"FileForget f", [] { return QX_SteamAPI_RemoteStorageFileForget("f"); }, 1, 0, 0},
      {"GetFileSize f", [] { return QX_SteamAPI_RemoteStorageGetFileSize("f"); }, 5, -4, 0},
      {"", QX_SteamAPI_RemoteStorageGetFileCount, 5, -4, -1},
      {"GetFileNameAndSize -2 0",
       [&] { return QX_SteamAPI_RemoteStorageGetFileName(-2, buffer, 8); }, 0, 0, -1},
      {"IsCloudEnabledForAccount -", QX_SteamAPI_RemoteStorageIsCloudEnabledForAccount, 1, 0, 0},
      {"IsCloudEnabledForApp -", QX_SteamAPI_RemoteStorageIsCloudEnabledForApp, 1, 0, 0},
      {"SetCloudEnabledForApp 256",
       [] { return QX_SteamAPI_RemoteStorageSetCloudEnabledForApp(256); }, 0, 0, 1},
  };
  script_.hasStorage = false;
  for (const Row& row : rows) EXPECT_EQ(row.call(), row.noSteam) << row.asked;
  EXPECT_STREQ(buffer, "before");
  for (const Row& row : rows) {
    SCOPED_TRACE(row.asked);
    script_ = test::SteamScript();
    script_.number = 5;
    EXPECT_EQ(row.call(), row.yes);
    EXPECT_EQ(script_.calls, *row.asked != '\0' ? Calls{row.asked} : Calls{});
    script_.answer = false;
    script_.number = -4;
    EXPECT_EQ(row.call(), row.no);
  }
}

TEST_F(CloudStorage, ChecksArgumentsBeforeSteam) {
  char buffer[8] = "before";
  for (const bool hasStorage : {true, false}) {
    script_.hasStorage = hasStorage;
    for (const std::int32_t size : {0, -1}) {
      EXPECT_EQ(QX_SteamAPI_RemoteStorageFileWrite("f", "data", size), QX_BAD_ARGUMENT);
    }
    EXPECT_EQ(QX_SteamAPI_RemoteStorageFileWrite(nullptr, "data", 4), QX_BAD_ARGUMENT);
    EXPECT_EQ(QX_SteamAPI_RemoteStorageFileWrite("f", nullptr, 4), QX_BAD_ARGUMENT);
    EXPECT_EQ(QX_SteamAPI_RemoteStorageFileRead(nullptr, buffer, 8), QX_BAD_ARGUMENT);
    EXPECT_EQ(QX_SteamAPI_RemoteStorageFileRead("f", nullptr, 8), QX_BAD_ARGUMENT);
    EXPECT_EQ(QX_SteamAPI_RemoteStorageFileDelete(nullptr), QX_BAD_ARGUMENT);
    EXPECT_EQ(QX_SteamAPI_RemoteStorageFileExist(nullptr), 0);
    EXPECT_EQ(QX_SteamAPI_RemoteStorageFileForget(nullptr), 0);
    EXPECT_EQ(QX_SteamAPI_RemoteStorageGetFileSize(nullptr), 0);
    EXPECT_EQ(QX_SteamAPI_RemoteStorageGetFileName(0, nullptr, 8), QX_BAD_ARGUMENT);
    EXPECT_EQ(QX_SteamAPI_RemoteStorageGetFileName(0, buffer, 0), QX_BAD_ARGUMENT);
  }
  EXPECT_EQ(script_.calls, Calls{});
  EXPECT_STREQ(buffer, "before");
}

}  // namespace
}  // namespace launcher
