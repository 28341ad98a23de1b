// Tests the exports of the session, the user's identity and the languages, and the names of cloud
// files. Finds a wrong result without Steam, a text or a ticket that is cut or overruns its buffer,
// and checks in another order.

#include <functional>

#include "steam/scripted_test.h"

namespace launcher {
namespace {

using test::GuardedBuffer;
using test::SteamScript;

using Session = test::ScriptedTest;

TEST_F(Session, ShutdownKeepsTheAppsOfTheLastInit) {
  char text[8];
  // Whether Steam starts, whether it has interfaces, the result of Init, and that of a call for the
  // languages after Shutdown.
  const std::tuple<bool, bool, std::int32_t, ResultCode> cases[] = {{true, true, 1, QX_SUCCEEDED},
                                                                    {false, false, 0, QX_SUCCEEDED},
                                                                    {true, false, 0, QX_NO_STEAM}};
  for (const auto& [starts, hasApps, result, languages] : cases) {
    script_.succeeds = starts;
    script_.hasInterfaces = hasApps;
    EXPECT_EQ(QX_SteamAPI_Init(), result);
    QX_SteamAPI_Shutdown();
    EXPECT_EQ(QX_SteamAPI_GetAvailableGameLanguages(text, 8), languages);
  }
  EXPECT_EQ(script_.calls, Calls(3, "Shutdown"));
}

TEST_F(Session, PassesResultsOn) {
  script_.steamId = 0x0110000112345678;
  EXPECT_EQ(QX_SteamAPI_GetSteamIDConvertToUint64(), 0x0110000112345678u);
  for (const bool isTrue : {false, true}) {
    script_.succeeds = isTrue;
    EXPECT_EQ(QX_SteamAPI_IsSteamRunning(), isTrue);
    EXPECT_EQ(QX_SteamAPI_IsLoggedOn(), isTrue);
    EXPECT_EQ(QX_SteamAPI_RestartAppIfNecessary(480), isTrue ? 0 : QX_FAILED);
  }
  EXPECT_EQ(script_.calls, (Calls{"Restart 480", "Restart 480"}));
  script_.hasInterfaces = false;
  EXPECT_EQ(QX_SteamAPI_IsLoggedOn(), 0);
  EXPECT_EQ(QX_SteamAPI_GetSteamIDConvertToUint64(), 0u);
}

TEST_F(Session, CopiesTexts) {
  const auto fileName = [](char* text, std::uint32_t capacity) {
    return QX_SteamAPI_RemoteStorageGetFileName(3, text, capacity);
  };
  // A text, its export and its place in the script, then the results for one that is too long,
  // empty or null, and without Steam.
  using Case = std::tuple<const char*, std::function<ResultCode(char*, std::uint32_t)>,
                          const char * SteamScript::*, int, int, int, int>;
  const Case cases[] = {
      {"name", QX_SteamAPI_GetPersonaName, &SteamScript::personaName, QX_BAD_ARGUMENT, 0,
       QX_BAD_ARGUMENT, 0},
      {"languages", QX_SteamAPI_GetAvailableGameLanguages, &SteamScript::languages, 0, 0, 0,
       QX_NO_STEAM},
      {"language", QX_SteamAPI_GetCurrentGameLanguage, &SteamScript::language, QX_OUT_OF_MEMORY,
       QX_NOT_FOUND, QX_NOT_FOUND, QX_NO_STEAM},
      {"file", fileName, &SteamScript::fileName, 0, 0, 0, QX_FAILED},
  };
  for (const auto& [name, call, member, tooLong, empty, null, noSteam] : cases) {
    SCOPED_TRACE(name);
    const GuardedBuffer text(7);
    script_ = SteamScript();
    script_.*member = "german";
    for (const bool hasSteam : {false, true}) {
      script_.hasInterfaces = hasSteam;
      QX_SteamAPI_Init();
      EXPECT_EQ(call(nullptr, 7), QX_BAD_ARGUMENT);
      EXPECT_EQ(call(text.Text(), 0), QX_BAD_ARGUMENT);
      EXPECT_TRUE(text.IsUntouched());
      EXPECT_EQ(call(text.Text(), 7), hasSteam ? 0 : noSteam);
    }
    EXPECT_STREQ(text.Text(), "german");
    EXPECT_EQ(call(text.Text() + 1, 6), tooLong);
    EXPECT_STREQ(text.Text(), "g");
    script_.*member = "";
    EXPECT_EQ(call(text.Text(), 7), empty);
    script_.*member = nullptr;
    EXPECT_EQ(call(text.Text(), 7), null);
  }
}

TEST_F(Session, WritesATicketAsText) {
  const std::tuple<std::string, std::uint32_t, std::int32_t> cases[] = {
      {"00AB7F", 7, 6},
      {"00AB7F", 6, QX_FAILED},
      {"", 1, 0},
      {std::string(2048, '7'), 2049, 2048},
      {std::string(2050, '7'), 2051, QX_FAILED}};
  for (const auto& [ticket, capacity, result] : cases) {
    SCOPED_TRACE(capacity);
    script_.ticket = test::BytesFromHex(ticket);
    const GuardedBuffer text(capacity);
    EXPECT_EQ(QX_SteamAPI_GetSteamAuthTicket(text.Text(), capacity), result);
    EXPECT_TRUE(result < 0 ? text.IsUntouched() : text.Text() == ticket);
  }
  // A ticket is requested before the arguments are checked.
  script_ = SteamScript();
  const GuardedBuffer text(8);
  EXPECT_EQ(QX_SteamAPI_GetSteamAuthTicket(nullptr, 8), QX_FAILED);
  EXPECT_EQ(QX_SteamAPI_GetSteamAuthTicket(text.Text(), 0), QX_FAILED);
  script_.failing = "GetAuthSessionTicket";
  EXPECT_EQ(QX_SteamAPI_GetSteamAuthTicket(text.Text(), 8), QX_FAILED);
  EXPECT_EQ(script_.calls, Calls(3, "GetAuthSessionTicket 1024 0"));
  script_.hasInterfaces = false;
  EXPECT_EQ(QX_SteamAPI_GetSteamAuthTicket(text.Text(), 8), QX_FAILED);
  EXPECT_TRUE(text.IsUntouched());
}

}  // namespace
}  // namespace launcher
