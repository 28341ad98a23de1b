// Finds an export of the cloud that passes other arguments to Steam, takes one result for another,
// or asks Steam before it has checked its arguments.

#include <cstdint>
#include <functional>

#include "steam/scripted_test.h"

namespace launcher {
namespace {

using test::GuardedBuffer;

class CloudStorage : public test::ScriptedTest {
 protected:
  using Call = std::function<std::int32_t()>;

  char buffer_[8] = "before";

  // Every export with good arguments, what it answers where Steam says yes (and counts 5), where
  // Steam says no, and where there is no Steam; and what Steam is asked.
  struct Row {
    const char* asked;
    Call call;
    std::int32_t yes;
    std::int32_t no;
    std::int32_t noSteam;
  };

  std::vector<Row> Rows() {
    char* const buffer = buffer_;
    return {
        {"FileWrite f data 4", [] { return QX_SteamAPI_RemoteStorageFileWrite("f", "data", 4); }, 0,
         -1, -3},
        {"FileRead f 0", [=] { return QX_SteamAPI_RemoteStorageFileRead("f", buffer, 0); }, 5, 5,
         -3},
        {"FileDelete f", [] { return QX_SteamAPI_RemoteStorageFileDelete("f"); }, 0, -1, -1},
        {"FileExists f", [] { return QX_SteamAPI_RemoteStorageFileExist("f"); }, 1, 0, 0},
        {"FileForget f", [] { return QX_SteamAPI_RemoteStorageFileForget("f"); }, 1, 0, 0},
        {"GetFileSize f", [] { return QX_SteamAPI_RemoteStorageGetFileSize("f"); }, 5, 5, 0},
        {"", [] { return QX_SteamAPI_RemoteStorageGetFileCount(); }, 5, 5, -1},
        {"GetFileNameAndSize -2 0",
         [=] { return QX_SteamAPI_RemoteStorageGetFileName(-2, buffer, 8); }, 0, 0, -1},
        {"IsCloudEnabledForAccount -",
         [] { return QX_SteamAPI_RemoteStorageIsCloudEnabledForAccount(); }, 1, 0, 0},
        {"IsCloudEnabledForApp -", [] { return QX_SteamAPI_RemoteStorageIsCloudEnabledForApp(); },
         1, 0, 0},
        {"SetCloudEnabledForApp 256",
         [] { return QX_SteamAPI_RemoteStorageSetCloudEnabledForApp(256); }, 0, 0, 1},
    };
  }
};

TEST_F(CloudStorage, PassesEachCallOn) {
  script_.number = 5;
  script_.fileName = "name";
  for (const Row& row : Rows()) {
    SCOPED_TRACE(row.asked);
    for (const bool answer : {true, false}) {
      script_.answer = answer;
      script_.calls.clear();
      EXPECT_EQ(row.call(), answer ? row.yes : row.no);
      EXPECT_EQ(script_.calls, *row.asked != '\0' ? Calls{row.asked} : Calls{});
    }
  }
}

// Also those that are no counts.
TEST_F(CloudStorage, PassesSteamsNumbersBack) {
  for (const std::int32_t number : {0, -1, -4, INT32_MIN, INT32_MAX}) {
    script_.number = number;
    EXPECT_EQ(QX_SteamAPI_RemoteStorageFileRead("f", buffer_, 8), number);
    EXPECT_EQ(QX_SteamAPI_RemoteStorageGetFileSize("f"), number);
    EXPECT_EQ(QX_SteamAPI_RemoteStorageGetFileCount(), number);
  }
}

TEST_F(CloudStorage, HasAnAnswerOfItsOwnForEachWithoutSteam) {
  script_.hasStorage = false;
  for (const Row& row : Rows()) EXPECT_EQ(row.call(), row.noSteam) << row.asked;
  EXPECT_STREQ(buffer_, "before");
}

// With Steam and without: a bad argument comes first.
TEST_F(CloudStorage, RefusesBadArguments) {
  for (const bool hasStorage : {true, false}) {
    script_.hasStorage = hasStorage;
    for (const std::int32_t size : {0, -1}) {
      EXPECT_EQ(QX_SteamAPI_RemoteStorageFileWrite("f", "data", size), QX_BAD_ARGUMENT);
    }
    EXPECT_EQ(QX_SteamAPI_RemoteStorageFileWrite(nullptr, "data", 4), QX_BAD_ARGUMENT);
    EXPECT_EQ(QX_SteamAPI_RemoteStorageFileWrite("f", nullptr, 4), QX_BAD_ARGUMENT);
    EXPECT_EQ(QX_SteamAPI_RemoteStorageFileRead(nullptr, buffer_, 8), QX_BAD_ARGUMENT);
    EXPECT_EQ(QX_SteamAPI_RemoteStorageFileRead("f", nullptr, 8), QX_BAD_ARGUMENT);
    EXPECT_EQ(QX_SteamAPI_RemoteStorageFileDelete(nullptr), QX_BAD_ARGUMENT);
    EXPECT_EQ(QX_SteamAPI_RemoteStorageFileExist(nullptr), 0);
    EXPECT_EQ(QX_SteamAPI_RemoteStorageFileForget(nullptr), 0);
    EXPECT_EQ(QX_SteamAPI_RemoteStorageGetFileSize(nullptr), 0);
    EXPECT_EQ(QX_SteamAPI_RemoteStorageGetFileName(0, nullptr, 8), QX_BAD_ARGUMENT);
    EXPECT_EQ(QX_SteamAPI_RemoteStorageGetFileName(0, buffer_, 0), QX_BAD_ARGUMENT);
  }
  EXPECT_EQ(script_.calls, Calls{});
  EXPECT_STREQ(buffer_, "before");
}

TEST_F(CloudStorage, CopiesAFilesName) {
  script_.fileName = "save.dat";
  const GuardedBuffer fitting(9);
  EXPECT_EQ(QX_SteamAPI_RemoteStorageGetFileName(3, fitting.Text(), 9), QX_SUCCEEDED);
  EXPECT_STREQ(fitting.Text(), "save.dat");
  const GuardedBuffer small(8);
  EXPECT_EQ(QX_SteamAPI_RemoteStorageGetFileName(3, small.Text(), 8), QX_SUCCEEDED);
  EXPECT_STREQ(small.Text(), "");
  script_.fileName = nullptr;
  EXPECT_EQ(QX_SteamAPI_RemoteStorageGetFileName(3, fitting.Text(), 9), QX_SUCCEEDED);
  EXPECT_STREQ(fitting.Text(), "");
}

}  // namespace
}  // namespace launcher
