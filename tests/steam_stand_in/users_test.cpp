// Finds a setting that is read wrongly or accepted although it is wrong, an interface that works
// without its session, a user folder whose path is cut, and a ticket that is accepted although it
// is forged or forgotten.

#include <sstream>

#include "steam_stand_in/stand_in_test.h"
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
  ASSERT_TRUE(SteamAPI_Init());
  ISteamUser* const user = SteamUser();
  const char* const name = SteamFriends()->GetPersonaName();
  fs::create_directory("stand_in");
  test::WriteFile("stand_in/steam_settings.json", R"({"running": false})");
  EXPECT_TRUE(SteamAPI_Init());
  EXPECT_EQ(State(), "1000000111" + defaults) << "as without a file, until the session ends";
  SteamAPI_Shutdown();
  EXPECT_EQ(user->GetSteamID(), 0u);
  EXPECT_STREQ(name, "Player") << "a caller may still read it";
  // The settings, the state, and why no session starts, if none does.
  const std::tuple<std::string, std::string, std::string> cases[] = {
      {R"({"accountId": 18446744073709551615, "personaName": "Ad\u00e1", "currentLanguage": "",
           "availableLanguages": "english,german", "loggedOn": false, "startedBySteam": false,
           "cloudEnabledForApp": false, "httpConnectLimitMs": 3600000, "httpRequestLimitMs": 1,
           "httpBodyLimitBytes": 1073741824})",
       "1100000010 18446744073709551615 Ad\xC3\xA1  english,german", ""},
      {R"({"cloudEnabledForAccount": false, "httpConnectLimitMs": 1, "httpBodyLimitBytes": 0})",
       "1000000101" + defaults, ""},
      {R"({"running": true)", "0011111", "parse error"},
      {"[]", "0011111", "steam_settings.json: is not a JSON object"},
      {R"({"accountId": -1})", "0011111", "accountId is not a whole number"},
      {R"({"personaName": 1})", "0011111", "personaName is not a text"},
      {R"({"loggedOn": "true"})", "0011111", "loggedOn is neither true nor false"},
      {R"({"httpConnectLimitMs": 0})", "0011111", "httpConnectLimitMs is not from 1 to 3600000"},
      {R"({"httpRequestLimitMs": 3600001})", "0011111", "httpRequestLimitMs is not from 1 to"},
      {R"({"httpBodyLimitBytes": 1073741825})", "0011111", "is not from 0 to 1073741824"},
      {R"({"logedOn": true})", "0011111", "unknown member logedOn"},
      {R"({"running": false})", "0011111", "Steam is not running"},
      {R"({"subscribed": false})", "1111111", "no licence"},
  };
  for (const auto& [settings, state, reason] : cases) {
    SCOPED_TRACE(settings);
    bool starts = false;
    const std::string printed =
        test::StandardErrorOf([&, text = settings] { starts = Start(text); });
    EXPECT_EQ(starts, reason.empty());
    EXPECT_EQ(printed.empty(), starts);
    EXPECT_NE(printed.find(reason), std::string::npos) << printed;
    EXPECT_EQ(std::count(printed.begin(), printed.end(), '\n'), starts ? 0 : 1);
    EXPECT_EQ(State(), state);
    SteamAPI_Shutdown();
    EXPECT_EQ(State(), state.substr(0, 2) + "11111") << "which reads the settings again";
  }
}

// CMakeLists.txt also runs this test without STEAM_STAND_IN.
TEST_F(StandInUser, HasADataFolderIfItsPathFits) {
  ASSERT_TRUE(Start(R"({"accountId": 7})"));
  const bool isNamed = std::getenv("STEAM_STAND_IN") != nullptr;
  const fs::path root =
      isNamed ? fs::absolute("stand_in") : fs::path(test::PathBeside("steam_stand_in"));
  const fs::path account = root / std::to_string(SteamUser()->GetSteamID());
  const int length = static_cast<int>((account / "local").string().size());
  const test::GuardedBuffer buffer(static_cast<std::size_t>(length) + 1);
  for (const int capacity : {length, 1, 0, -1}) {
    EXPECT_FALSE(SteamUser()->GetUserDataFolder(buffer.Text(), capacity));
  }
  EXPECT_FALSE(SteamUser()->GetUserDataFolder(nullptr, 1024));
  EXPECT_FALSE(fs::exists(account));
  fs::create_directories(root);
  test::WriteFile(account.string(), "in the way");
  EXPECT_FALSE(SteamUser()->GetUserDataFolder(buffer.Text(), length + 1));
  EXPECT_TRUE(buffer.IsUntouched());
  fs::remove(account);
  EXPECT_TRUE(SteamUser()->GetUserDataFolder(buffer.Text(), length + 1));
  EXPECT_EQ(fs::path(buffer.Text()), account / "local");
  EXPECT_TRUE(fs::is_directory(buffer.Text()));
  fs::remove_all(isNamed ? account : root);
}

// Of the last 1,024 only, if they are whole and unchanged.
TEST_F(StandInSession, HasTicketsThatAreRecognised) {
  std::vector<std::string> tickets;
  std::uint32_t size = 99;
  const auto issue = [&](int capacity) {
    tickets.emplace_back(234, '#');
    return SteamUser()->GetAuthSessionTicket(tickets.back().data(), capacity, &size);
  };
  ASSERT_TRUE(Start(R"({"loggedOn": false})"));
  EXPECT_EQ(issue(234), 0u);
  ASSERT_TRUE(Start("{}"));
  for (const int capacity : {233, -1}) EXPECT_EQ(issue(capacity), 0u);
  EXPECT_EQ(SteamUser()->GetAuthSessionTicket(nullptr, 234, &size), 0u);
  EXPECT_EQ(SteamUser()->GetAuthSessionTicket(tickets[0].data(), 234, nullptr), 0u);
  EXPECT_EQ(tickets, std::vector<std::string>(3, std::string(234, '#')));
  EXPECT_EQ(size, 99u);

  tickets.clear();
  for (std::uint32_t i = 1; i <= 1025; ++i) ASSERT_EQ(issue(234), i);
  EXPECT_EQ(size, 234u);
  const auto isValid = [&](std::size_t index, std::uint32_t length = 234) {
    return StandInVerifyTicket(tickets[index].data(), length);
  };
  EXPECT_FALSE(isValid(0) || isValid(1, 233) || isValid(1, 235));
  EXPECT_TRUE(isValid(1) && isValid(1024));
  EXPECT_FALSE(StandInVerifyTicket(nullptr, 234));
  tickets[2].back() = static_cast<char>(tickets[2].back() ^ 1);
  EXPECT_FALSE(isValid(2));
  ASSERT_TRUE(Start("{}"));
  EXPECT_FALSE(isValid(1));
}

}  // namespace
}  // namespace launcher
