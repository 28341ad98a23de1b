// The library's Steam functions in several threads, with a session of the stand-in.

#include <atomic>
#include <cstdlib>
#include <cstring>
#include <string>

#include "launcher_dll.h"
#include "steam_stand_in/stand_in_test.h"
#include "support/captured_output.h"
#include "support/system.h"

namespace launcher {
namespace {

constexpr int kThreads = 4;
const int kRounds = test::kTriesEverything ? 25 : 5;
constexpr std::uint32_t kAppId = 480;

std::atomic<int> failures{0};
std::atomic<int> threadsAtWork{0};

std::string UrlOf(const char* path) {
  const char* const port = std::getenv("TEST_HTTP_PORT");
  return std::string("http://127.0.0.1:") + (port != nullptr ? port : "1") + path;
}

// Calls each Steam function that may run at the same time as all others. Returns whether each
// result was that of a session.
bool CallEverything(int number) {
  const std::string name = "save " + std::to_string(number);
  const std::int32_t size = 1000 + number;
  const auto unsignedSize = static_cast<std::uint32_t>(size);
  const std::string content(unsignedSize, 'x');
  char text[2048] = "";
  std::string read(content.size(), ' ');

  bool isRight = QX_SteamAPI_IsSteamRunning() == 1;
  isRight &= QX_SteamAPI_RestartAppIfNecessary(kAppId) == QX_FAILED;
  isRight &= QX_SteamAPI_IsLoggedOn() == 1;
  isRight &= QX_SteamAPI_GetSteamIDConvertToUint64() == 7;
  isRight &= QX_SteamAPI_GetPersonaName(text, sizeof text) == 0 && std::strcmp(text, "Ada") == 0;
  isRight &= QX_SteamAPI_GetSteamAuthTicket(text, sizeof text) > 0;
  isRight &= QX_SteamAPI_WriteFile(name.c_str(), content.data(), unsignedSize) == 0;
  isRight &= QX_SteamAPI_ReadFile(name.c_str(), &read[0], unsignedSize) == 0 && read == content;

  isRight &= QX_SteamAPI_RemoteStorageFileWrite(name.c_str(), content.data(), size) == 0;
  isRight &= QX_SteamAPI_RemoteStorageGetFileSize(name.c_str()) == size;
  isRight &= QX_SteamAPI_RemoteStorageFileRead(name.c_str(), &read[0], size) == size;
  isRight &= QX_SteamAPI_RemoteStorageGetFileCount() > 0;
  isRight &= QX_SteamAPI_RemoteStorageGetFileName(0, text, sizeof text) >= 0;
  isRight &= QX_SteamAPI_RemoteStorageIsCloudEnabledForApp() == 1;
  QX_SteamAPI_RemoteStorageSetCloudEnabledForApp(1);
  isRight &= QX_SteamAPI_HTTPRequest(UrlOf("/text").c_str(), 1, nullptr, nullptr, 0) == 0;
  return isRight;
}

class StandInThreads : public test::StandInTest {
 protected:
  StandInThreads() {
    test::SetEnvironment("http_proxy", "");
    WriteSettings(R"({"accountId": 7, "personaName": "Ada"})");
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
        // These two may run at the same time as all but QX_SteamAPI_Init.
        if (QX_SteamAPI_GetCurrentGameLanguage(text, sizeof text) != 0) ++failures;
        if (QX_SteamAPI_GetAvailableGameLanguages(text, sizeof text) != 0) ++failures;
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
