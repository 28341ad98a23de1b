// Finds an export of the cloud that passes other arguments to Steam, returns a wrong result, or
// calls Steam before it has checked its arguments.

#include <cstring>
#include <functional>

#include "steam/scripted_test.h"

namespace launcher {
namespace {

using CloudStorage = test::ScriptedTest;

TEST_F(CloudStorage, PassesCallsAndResultsOn) {
  char buffer[8];
  // What Steam is asked, and the results if Steam returns true and 5, false and -4, and without it.
  using Row = std::tuple<const char*, std::function<std::int32_t()>, int, int, int>;
  const Row rows[] = {
      {"FileWrite f data 4", [] { return QX_SteamAPI_RemoteStorageFileWrite("f", "data", 4); }, 0,
       -1, -3},
      {"FileRead f 0", [&] { return QX_SteamAPI_RemoteStorageFileRead("f", buffer, 0); }, 5, -4,
       -3},
      {"FileDelete f", [] { return QX_SteamAPI_RemoteStorageFileDelete("f"); }, 0, -1, -1},
      {"FileExists f", [] { return QX_SteamAPI_RemoteStorageFileExist("f"); }, 1, 0, 0},
      {"FileForget f", [] { return QX_SteamAPI_RemoteStorageFileForget("f"); }, 1, 0, 0},
      {"Size f", [] { return QX_SteamAPI_RemoteStorageGetFileSize("f"); }, 5, -4, 0},
      {"", QX_SteamAPI_RemoteStorageGetFileCount, 5, -4, -1},
      {"GetFileNameAndSize -2 0",
       [&] { return QX_SteamAPI_RemoteStorageGetFileName(-2, buffer, 8); }, 0, 0, -1},
      {"ForAccount", QX_SteamAPI_RemoteStorageIsCloudEnabledForAccount, 1, 0, 0},
      {"ForApp", QX_SteamAPI_RemoteStorageIsCloudEnabledForApp, 1, 0, 0},
      {"SetCloudEnabledForApp 256",
       [] { return QX_SteamAPI_RemoteStorageSetCloudEnabledForApp(256); }, 0, 0, 1},
  };
  for (const auto& [asked, call, yes, no, noSteam] : rows) {
    SCOPED_TRACE(asked);
    script_ = test::SteamScript();
    script_.hasInterfaces = false;
    std::strcpy(buffer, "before");
    EXPECT_EQ(call(), noSteam);
    EXPECT_STREQ(buffer, "before");
    script_.hasInterfaces = true;
    script_.number = 5;
    EXPECT_EQ(call(), yes);
    EXPECT_EQ(script_.calls, *asked != '\0' ? Calls{asked} : Calls{});
    script_.succeeds = false;
    script_.number = -4;
    EXPECT_EQ(call(), no);
  }
}

TEST_F(CloudStorage, ChecksArgumentsBeforeSteam) {
  char buffer[8];
  EXPECT_EQ(QX_SteamAPI_RemoteStorageFileExist(nullptr), 0);
  EXPECT_EQ(QX_SteamAPI_RemoteStorageFileForget(nullptr), 0);
  EXPECT_EQ(QX_SteamAPI_RemoteStorageGetFileSize(nullptr), 0);
  EXPECT_EQ(script_.calls, Calls{});
  script_.hasInterfaces = false;
  const ResultCode results[] = {QX_SteamAPI_RemoteStorageFileWrite("f", "data", 0),
                                QX_SteamAPI_RemoteStorageFileWrite("f", "data", -1),
                                QX_SteamAPI_RemoteStorageFileWrite(nullptr, "data", 4),
                                QX_SteamAPI_RemoteStorageFileWrite("f", nullptr, 4),
                                QX_SteamAPI_RemoteStorageFileRead(nullptr, buffer, 8),
                                QX_SteamAPI_RemoteStorageFileRead("f", nullptr, 8),
                                QX_SteamAPI_RemoteStorageFileDelete(nullptr)};
  for (const ResultCode result : results) EXPECT_EQ(result, QX_BAD_ARGUMENT);
}

}  // namespace
}  // namespace launcher
