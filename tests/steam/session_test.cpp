// Finds a wrong result for a missing Steam, a text or a ticket that is cut or overruns its buffer,
// and checks in another order. The exports of the session, the user's identity and the languages.

// Session, identity and languages.

#include <functional>

#include "steam/scripted_test.h"

namespace launcher {
namespace {

using test::Bytes;
using test::GuardedBuffer;

class Session : public test::ScriptedTest {
 protected:
  // Without this the interface of an earlier test would still be stored.
  void ForgetApps() {
    script_.hasApps = false;
    QX_SteamAPI_Init();
    script_.hasApps = true;
  }
};

TEST_F(Session, IsUpWithSteamAndItsApps) {
  ForgetApps();
  EXPECT_EQ(QX_SteamAPI_Init(), 1);
  char text[8];
  EXPECT_EQ(QX_SteamAPI_GetAvailableGameLanguages(text, sizeof text), QX_SUCCEEDED);

  script_.answer = false;
  EXPECT_EQ(QX_SteamAPI_Init(), 0);
  EXPECT_EQ(QX_SteamAPI_GetAvailableGameLanguages(text, sizeof text), QX_SUCCEEDED)
      << "what was stored stays";
  QX_SteamAPI_Shutdown();
  EXPECT_EQ(script_.calls, Calls{"Shutdown"});
  EXPECT_EQ(QX_SteamAPI_GetAvailableGameLanguages(text, sizeof text), QX_SUCCEEDED)
      << "also when Steam has shut down";

  script_.answer = true;
  script_.hasApps = false;
  EXPECT_EQ(QX_SteamAPI_Init(), 0);
  EXPECT_EQ(QX_SteamAPI_GetAvailableGameLanguages(text, sizeof text), QX_NO_STEAM)
      << "null is stored too";
}

TEST_F(Session, PassesOnWhatSteamAnswers) {
  script_.steamId = 0x0110000112345678;
  EXPECT_EQ(QX_SteamAPI_GetSteamIDConvertToUint64(), 0x0110000112345678u);
  for (const bool answer : {false, true}) {
    script_.answer = answer;
    EXPECT_EQ(QX_SteamAPI_IsSteamRunning(), answer ? 1 : 0);
    EXPECT_EQ(QX_SteamAPI_IsLoggedOn(), answer ? 1 : 0);
    EXPECT_EQ(QX_SteamAPI_RestartAppIfNecessary(480), answer ? 0 : QX_FAILED);
  }
  EXPECT_EQ(script_.calls, (Calls{"Restart 480", "Restart 480"}));
}

TEST_F(Session, KnowsNobodyWithoutSteam) {
  script_.hasUser = script_.hasFriends = false;
  const GuardedBuffer buffer(8);
  EXPECT_EQ(QX_SteamAPI_IsLoggedOn(), 0);
  EXPECT_EQ(QX_SteamAPI_GetSteamIDConvertToUint64(), 0u);
  EXPECT_EQ(QX_SteamAPI_GetPersonaName(buffer.Text(), 8), QX_SUCCEEDED);
  EXPECT_EQ(QX_SteamAPI_GetSteamAuthTicket(buffer.Text(), 8), QX_FAILED);
  ForgetApps();
  EXPECT_EQ(QX_SteamAPI_GetCurrentGameLanguage(buffer.Text(), 8), QX_NO_STEAM);
  EXPECT_EQ(QX_SteamAPI_GetAvailableGameLanguages(buffer.Text(), 8), QX_NO_STEAM);
  EXPECT_TRUE(buffer.IsUntouched());
  // A bad argument comes first, also with nobody there.
  EXPECT_EQ(QX_SteamAPI_GetPersonaName(nullptr, 8), QX_BAD_ARGUMENT);
  EXPECT_EQ(QX_SteamAPI_GetCurrentGameLanguage(nullptr, 8), QX_BAD_ARGUMENT);
  EXPECT_EQ(QX_SteamAPI_GetAvailableGameLanguages(buffer.Text(), 0), QX_BAD_ARGUMENT);
}

// The three exports that copy a text differ in what they make of one that does not fit.
TEST_F(Session, CopiesTexts) {
  using test::SteamScript;
  using Export = std::function<ResultCode(char*, std::uint32_t)>;
  struct Case {
    const char* name;
    Export call;
    const char* SteamScript::*text;
    ResultCode tooLong;
    ResultCode empty;
    ResultCode null;
  };
  QX_SteamAPI_Init();
  const Case cases[] = {
      {"persona name", QX_SteamAPI_GetPersonaName, &SteamScript::personaName, QX_BAD_ARGUMENT, 0,
       QX_BAD_ARGUMENT},
      {"languages", QX_SteamAPI_GetAvailableGameLanguages, &SteamScript::languages, 0, 0, 0},
      {"language", QX_SteamAPI_GetCurrentGameLanguage, &SteamScript::language, QX_OUT_OF_MEMORY,
       QX_NOT_FOUND, QX_NOT_FOUND},
  };
  for (const Case& tried : cases) {
    SCOPED_TRACE(tried.name);
    script_.*tried.text = "german";
    const GuardedBuffer fitting(7);
    EXPECT_EQ(tried.call(fitting.Text(), 7), QX_SUCCEEDED);
    EXPECT_STREQ(fitting.Text(), "german");
    const GuardedBuffer small(6);
    EXPECT_EQ(tried.call(small.Text(), 6), tried.tooLong);
    EXPECT_STREQ(small.Text(), "");

    EXPECT_EQ(tried.call(nullptr, 7), QX_BAD_ARGUMENT);
    EXPECT_EQ(tried.call(fitting.Text(), 0), QX_BAD_ARGUMENT);
    EXPECT_STREQ(fitting.Text(), "german");

    script_.*tried.text = "";
    EXPECT_EQ(tried.call(fitting.Text(), 7), tried.empty);
    script_.*tried.text = nullptr;
    EXPECT_EQ(tried.call(fitting.Text(), 7), tried.null);
  }
}

TEST_F(Session, WritesATicketAsText) {
  struct Case {
    Bytes ticket;
    std::uint32_t capacity;
    std::int32_t result;
    const char* text;  // null: unwritten
  };
  const Case cases[] = {
      {{0x00, 0xAB, 0x7F}, 7, 6, "00AB7F"},
      {{0x00, 0xAB, 0x7F}, 6, QX_FAILED, nullptr},
      {{}, 1, 0, ""},
      {{}, 5, 0, ""},
      {{0xFF}, 1, QX_FAILED, nullptr},
  };
  for (const Case& tried : cases) {
    script_.ticket = tried.ticket;
    const GuardedBuffer buffer(tried.capacity);
    EXPECT_EQ(QX_SteamAPI_GetSteamAuthTicket(buffer.Text(), tried.capacity), tried.result);
    if (tried.text != nullptr) {
      EXPECT_STREQ(buffer.Text(), tried.text);
    } else {
      EXPECT_TRUE(buffer.IsUntouched());
    }
  }
  script_.ticket = test::Pattern(1024);
  char largest[2049];
  EXPECT_EQ(QX_SteamAPI_GetSteamAuthTicket(largest, sizeof largest), 2048);
  EXPECT_EQ(largest[2048], '\0');
  script_.ticket.push_back(0);  // Steam tells of more than it could write
  char tooLarge[2051];
  EXPECT_EQ(QX_SteamAPI_GetSteamAuthTicket(tooLarge, sizeof tooLarge), QX_FAILED);
}

TEST_F(Session, TakesATicketAheadOfItsArguments) {
  char text[8] = "before";
  EXPECT_EQ(QX_SteamAPI_GetSteamAuthTicket(nullptr, 8), QX_FAILED);
  EXPECT_EQ(QX_SteamAPI_GetSteamAuthTicket(text, 0), QX_FAILED);
  script_.ticketHandle = 0;
  EXPECT_EQ(QX_SteamAPI_GetSteamAuthTicket(text, sizeof text), QX_FAILED);
  EXPECT_STREQ(text, "before");
  EXPECT_EQ(script_.calls, Calls(3, "GetAuthSessionTicket 1024 0"));
}

}  // namespace
}  // namespace launcher
