// Finds a setting that is read wrongly or accepted although it is wrong, an interface that works
// without its session, a user folder whose path is cut, and a ticket that is accepted although it
// is forged or forgotten.

#include <sstream>

#include "steam_stand_in/stand_in_test.h"
#include "steam_stand_in/steam_settings.h"
#include "support/captured_output.h"
#include "support/guarded_buffer.h"

namespace launcher {
namespace {

namespace fs = std::filesystem;

using StandInSession = test::StandInTest;
using StandInUser = test::StandInTest;

// What the settings decide, except for the limits.
std::string State() {
  std::ostringstream state;
  state << SteamAPI_IsSteamRunning() << SteamAPI_RestartAppIfNecessary(480) << !SteamUser()
        << !SteamFriends() << !SteamApps() << !SteamRemoteStorage() << !SteamHTTP();
  if (SteamUser() == nullptr) return state.str();
  state << SteamUser()->BLoggedOn() << SteamRemoteStorage()->IsCloudEnabledForAccount()
        << SteamRemoteStorage()->IsCloudEnabledForApp() << ' ' << SteamUser()->GetSteamID() << ' '
        << SteamFriends()->GetPersonaName() << ' ' << SteamApps()->GetCurrentGameLanguage() << ' '
        << SteamApps()->GetAvailableGameLanguages();
  return state.str();
}

TEST_F(StandInSession, HasTheStateOfItsSettings) {
  const std::string defaults = " 76561202255233023 Player english english";
  EXPECT_EQ(State(), "1011111");
  EXPECT_TRUE(SteamAPI_Init());
  ISteamFriends* const friends = SteamFriends();
  const char* const name = friends->GetPersonaName();
  fs::create_directory("stand_in");
  test::WriteFile("stand_in/steam_settings.json", R"({"running": false})");
  EXPECT_TRUE(SteamAPI_Init());
  EXPECT_EQ(State(), "1000000111" + defaults);  // as without a file, until the session ends
  SteamAPI_Shutdown();
  EXPECT_STREQ(friends->GetPersonaName(), "");
  EXPECT_STREQ(name, "Player");  // a caller may still read it
  const stand_in::SteamSettings limits;
  EXPECT_EQ(limits.quotaBytes, 104857600u);
  EXPECT_EQ(limits.httpConnectLimitMs, 10000u);
  EXPECT_EQ(limits.httpRequestLimitMs, 60000u);
  EXPECT_EQ(limits.httpBodyLimitBytes, 16777216u);
  // The settings, the state, and why no session starts, if none does.
  const std::tuple<const char*, std::string, std::string> cases[] = {
      {R"({"accountId": 18446744073709551615, "personaName": "Ad\u00e1", "currentLanguage": "",
           "availableLanguages": "english,german", "loggedOn": false, "startedBySteam": false,
           "cloudEnabledForApp": false, "httpConnectLimitMs": 3600000, "httpRequestLimitMs": 1})",
       "1100000010 18446744073709551615 Ad\xC3\xA1  english,german", ""},
      {R"({"cloudEnabledForAccount": false})", "1000000101" + defaults, ""},
      {R"({"running": true)", "0011111", "parse error"},
      {R"({"accountId": -1})", "0011111", "accountId is not a whole"},
      {R"({"personaName": 1})", "0011111", "personaName is not a text"},
      {R"({"loggedOn": "true"})", "0011111", "loggedOn is neither"},
      {R"({"httpConnectLimitMs": 0})", "0011111", "is not from 1"},
      {R"({"httpRequestLimitMs": 3600001})", "0011111", "is not from 1 to 3600000"},
      {R"({"logedOn": true})", "0011111", "unknown member logedOn"},
      {R"({"running": false})", "0011111", "Steam is not running"},
      {R"({"subscribed": false})", "1111111", "no licence"},
  };
  for (const auto& [settings, state, reason] : cases) {
    SCOPED_TRACE(settings);
    const std::string printed = test::StandardErrorOf([text = settings] { Start(text); });
    EXPECT_NE(printed.find(reason), std::string::npos) << printed;
    EXPECT_EQ(std::count(printed.begin(), printed.end(), '\n'), reason.empty() ? 0 : 1);
    EXPECT_EQ(State(), state);
  }
}

// CMakeLists.txt also runs this test without STEAM_STAND_IN.
TEST_F(StandInUser, HasADataFolderIfItsPathFits) {
  Start(R"({"accountId": 7})");
  const char* const named = std::getenv("STEAM_STAND_IN");
  const fs::path root = fs::absolute(named != nullptr ? named : test::PathBeside("steam_stand_in"));
  const std::string id = std::to_string(SteamUser()->GetSteamID());
  fs::remove_all(root / id);  // of a run that was killed
  const std::string expected = (root / id / "local").string();
  const int length = static_cast<int>(expected.size());
  const test::GuardedBuffer buffer(expected.size() + 1);
  const auto get = [](char* text, int size) { return SteamUser()->GetUserDataFolder(text, size); };
  EXPECT_FALSE(get(buffer.Text(), length) || get(buffer.Text(), -1) || get(nullptr, 1024));
  EXPECT_FALSE(fs::exists(root / id));
  EXPECT_TRUE(buffer.IsUntouched());
  EXPECT_TRUE(get(buffer.Text(), length + 1));
  EXPECT_EQ(buffer.Text(), expected);
  EXPECT_TRUE(fs::is_directory(expected));
  fs::remove_all(root);
}

TEST_F(StandInSession, RecognisesItsLast1024Tickets) {
  std::string tickets[1026];
  std::uint32_t size = 99;
  const auto issue = [&](std::string& ticket, int capacity) {
    ticket.assign(234, '#');
    return SteamUser()->GetAuthSessionTicket(ticket.data(), capacity, &size);
  };
  const auto isValid = [&](int number, std::uint32_t length = 234) {
    return StandInVerifyTicket(tickets[number].data(), length);
  };
  Start(R"({"loggedOn": false})");
  EXPECT_EQ(issue(tickets[0], 234), 0u);
  Start("{}");
  for (const int capacity : {233, -1}) EXPECT_EQ(issue(tickets[0], capacity), 0u);
  EXPECT_EQ(tickets[0], std::string(234, '#'));
  EXPECT_EQ(size, 99u);
  for (std::uint32_t i = 1; i <= 1025; ++i) EXPECT_EQ(issue(tickets[i], 234), i);
  EXPECT_EQ(size, 234u);
  tickets[3].back() ^= 1;
  EXPECT_TRUE(isValid(2) && isValid(1025));
  EXPECT_FALSE(isValid(1) || isValid(2, 233) || isValid(2, 235) || isValid(3));
  EXPECT_FALSE(StandInVerifyTicket(nullptr, 234));
}

}  // namespace
}  // namespace launcher
