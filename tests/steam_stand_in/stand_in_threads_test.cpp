// Finds data that two threads use at once: the library's Steam functions in several threads, with a
// session of the stand-in that also ends meanwhile. The sanitizer for threads needs both tests.

#include <atomic>
#include <cstring>
#include <string>

#include "launcher_dll.h"
#include "steam_stand_in/stand_in_test.h"
#include "support/captured_output.h"
#include "support/system.h"

namespace launcher {
namespace {

constexpr int kThreads = 4;
const int kRounds = test::kTriesEverything ? 10 : 3;

std::atomic<int> failures{0};
std::atomic<int> threadsAtWork{0};
std::string url;

// Returns whether each result was that of a session.
bool CallEverything(int number) {
  const std::string file = "save " + std::to_string(number);
  const char* const name = file.c_str();
  const std::string content(static_cast<std::size_t>(1000 + number), 'x');
  const auto size = static_cast<std::int32_t>(content.size());
  std::string read(content.size(), ' ');
  char text[2048] = "";

  bool isRight = QX_SteamAPI_IsSteamRunning() == 1 && QX_SteamAPI_IsLoggedOn() == 1;
  isRight &= QX_SteamAPI_RestartAppIfNecessary(480) == QX_FAILED;
  isRight &= QX_SteamAPI_GetSteamIDConvertToUint64() == 7;
  isRight &= QX_SteamAPI_GetPersonaName(text, sizeof text) == 0 && std::strcmp(text, "Ada") == 0;
  isRight &= QX_SteamAPI_GetSteamAuthTicket(text, sizeof text) > 0;
  isRight &= QX_SteamAPI_GetUserDataFolder(text, sizeof text) == 1;
  isRight &= QX_SteamAPI_RemoteStorageFileWrite(name, content.data(), size) == 0;
  isRight &= QX_SteamAPI_RemoteStorageFileRead(name, &read[0], size) == size && read == content;
  isRight &= QX_SteamAPI_RemoteStorageGetFileCount() > 0;
  isRight &= QX_SteamAPI_RemoteStorageGetFileName(0, text, sizeof text) >= 0;
  QX_SteamAPI_RemoteStorageSetCloudEnabledForApp(1);
  isRight &= QX_SteamAPI_RemoteStorageIsCloudEnabledForApp() == 1;
  return isRight && QX_SteamAPI_HTTPRequest(url.c_str(), 1, nullptr, nullptr, 0) == 0;
}

class StandInThreads : public test::StandInTest {
 protected:
  StandInThreads() {
    WriteSettings(R"({"accountId": 7, "personaName": "Ada"})");
    url = UrlOf("/text");
    failures = 0;
    threadsAtWork = kThreads;
  }
};

TEST_F(StandInThreads, CallEverythingAtOnce) {
  ASSERT_EQ(QX_SteamAPI_Init(), 1);
  test::StandardOutputOf([] {
    test::RunInThreads(kThreads, [](int number) {
      char text[64] = "";
      for (int round = 0; round < kRounds; ++round) {
        if (!CallEverything(number)) ++failures;
        // May run at the same time as all but QX_SteamAPI_Init.
        if (QX_SteamAPI_GetCurrentGameLanguage(text, sizeof text) != 0) ++failures;
      }
    });
  });
  EXPECT_EQ(failures, 0);
}

// The results depend on the moment.
TEST_F(StandInThreads, CallEverythingWhileSessionsBeginAndEnd) {
  test::StandardOutputOf([] {
    test::RunInThreads(kThreads + 1, [](int number) {
      if (number < kThreads) {
        for (int round = 0; round < kRounds; ++round) CallEverything(number);
        --threadsAtWork;
        return;
      }
      while (threadsAtWork > 0) {
        if (QX_SteamAPI_Init() != 1) ++failures;
        QX_SteamAPI_Shutdown();
      }
    });
  });
  EXPECT_EQ(failures, 0);
}

}  // namespace
}  // namespace launcher
