// Finds a setting that is read wrongly, an interface that works outside a session, a user folder
// whose path is cut, and a ticket that is accepted although it is forged or forgotten.

#include <string>
#include <vector>

#include "steam_stand_in/stand_in_test.h"
#include "support/captured_output.h"
#include "support/system.h"

namespace launcher {
namespace {

namespace fs = std::filesystem;

using StandInSession = test::StandInTest;
using StandInSettings = test::StandInTest;
using StandInUser = test::StandInTest;
using StandInTickets = test::StandInTest;

constexpr int kCapacity = 1024;
constexpr std::uint32_t kAppId = 480;

// All that the settings decide, without what needs a file or a server.
std::string Told() {
  const auto number = [](bool isTrue) { return isTrue ? "1 " : "0 "; };
  std::string told = number(SteamAPI_IsSteamRunning());
  told += number(SteamAPI_RestartAppIfNecessary(kAppId));
  if (SteamUser() == nullptr) return told;
  return told + number(SteamUser()->BLoggedOn()) + std::to_string(SteamUser()->GetSteamID()) + ' ' +
         SteamFriends()->GetPersonaName() + ' ' + SteamApps()->GetCurrentGameLanguage() + ' ' +
         SteamApps()->GetAvailableGameLanguages() + ' ' +
         number(SteamRemoteStorage()->IsCloudEnabledForAccount()) +
         number(SteamRemoteStorage()->IsCloudEnabledForApp());
}

TEST_F(StandInSession, HasInterfacesThatEndWithIt) {
  const auto hasAll = [](bool expected) {
    const bool has[] = {SteamUser() != nullptr, SteamFriends() != nullptr, SteamApps() != nullptr,
                        SteamRemoteStorage() != nullptr, SteamHTTP() != nullptr};
    for (const bool each : has) EXPECT_EQ(each, expected);
  };
  hasAll(false);
  Start(R"({"accountId": 7})");
  ASSERT_TRUE(SteamAPI_Init());
  hasAll(true);
  ISteamUser* const user = SteamUser();
  ISteamFriends* const friends = SteamFriends();
  ISteamRemoteStorage* const storage = SteamRemoteStorage();
  ISteamHTTP* const http = SteamHTTP();
  ASSERT_TRUE(storage->FileWrite("a", "x", 1));
  const std::uint32_t request = http->CreateHTTPRequest(1, "http://127.0.0.1:1/");
  SteamAPI_Shutdown();
  hasAll(false);

  char buffer[kCapacity] = "before";
  EXPECT_EQ(user->GetSteamID(), 0u);
  EXPECT_FALSE(user->GetUserDataFolder(buffer, kCapacity));
  EXPECT_STREQ(friends->GetPersonaName(), "");
  EXPECT_FALSE(storage->FileExists("a"));
  EXPECT_FALSE(http->SendHTTPRequest(request, nullptr));
  EXPECT_STREQ(buffer, "before");
  // A transfer can outlive its session; its handle must not get another request's response.
  Start("{}");
  EXPECT_EQ(http->CreateHTTPRequest(1, "http://127.0.0.1:1/"), request + 1);
  EXPECT_FALSE(http->ReleaseHTTPRequest(request));
}

TEST_F(StandInSettings, DecideWhatIsTold) {
  EXPECT_EQ(Told(), "1 0 ");
  ASSERT_TRUE(SteamAPI_Init());
  EXPECT_EQ(Told(), "1 0 1 76561202255233023 Player english english 1 1 ");
  EXPECT_EQ(test::ScratchDirectory::FileCount(), 0u) << "looking creates nothing";

  Start(R"({"accountId": 18446744073709551615, "personaName": "Ad\u00e1", "currentLanguage": "",
            "availableLanguages": "english,german", "loggedOn": false, "startedBySteam": false,
            "cloudEnabledForApp": false, "httpConnectLimitMs": 3600000, "httpRequestLimitMs": 1,
            "httpBodyLimitBytes": 1073741824})");
  const char* const name = SteamFriends()->GetPersonaName();
  const std::string told = "1 1 0 18446744073709551615 Ad\xC3\xA1  english,german 1 0 ";
  EXPECT_EQ(Told(), told);
  WriteSettings(R"({"running": false})");
  EXPECT_EQ(Told(), told) << "a session keeps its settings";
  SteamAPI_Shutdown();
  EXPECT_STREQ(name, "Ad\xC3\xA1") << "a caller may still read it";
  EXPECT_EQ(Told(), "0 0 ");
  Start(R"({"cloudEnabledForAccount": false})");
  EXPECT_EQ(Told(), "1 0 1 76561202255233023 Player english english 0 1 ");
}

TEST_F(StandInSettings, KeepASessionFromStarting) {
  struct Case {
    const char* settings;
    const char* reason;
    const char* told;
  };
  const Case cases[] = {
      {"{\"running\": true", "parse error", "0 0 "},
      {"[]", "steam_settings.json: is not a JSON object", "0 0 "},
      {R"({"accountId": -1})", "accountId is not a whole number", "0 0 "},
      {R"({"accountId": 18446744073709551616})", "accountId is not a whole number", "0 0 "},
      {R"({"personaName": 1})", "personaName is not a text", "0 0 "},
      {R"({"loggedOn": "true"})", "loggedOn is neither true nor false", "0 0 "},
      {R"({"httpConnectLimitMs": 0})", "httpConnectLimitMs is not from 1 to 3600000", "0 0 "},
      {R"({"httpRequestLimitMs": 3600001})", "httpRequestLimitMs is not from 1 to", "0 0 "},
      {R"({"httpBodyLimitBytes": 1073741825})", "is not from 0 to 1073741824", "0 0 "},
      {R"({"logedOn": true})", "unknown member logedOn", "0 0 "},
      {R"({"running": false})", "Steam is not running", "0 0 "},
      {R"({"subscribed": false})", "no licence", "1 1 "},
  };
  for (const Case& each : cases) {
    SCOPED_TRACE(each.settings);
    WriteSettings(each.settings);
    EXPECT_EQ(Told(), each.told);
    const std::string printed = test::StandardErrorOf([] { EXPECT_FALSE(SteamAPI_Init()); });
    EXPECT_NE(printed.find(each.reason), std::string::npos) << printed;
    EXPECT_EQ(printed.find("Steam stand-in: "), 0u);
    EXPECT_EQ(printed.find('\n'), printed.size() - 1);
  }
}

// CMakeLists.txt also runs this one without STEAM_STAND_IN.
TEST_F(StandInUser, HasADataFolderIfItsPathFits) {
  Start(R"({"accountId": 7})");
  const bool isNamed = std::getenv("STEAM_STAND_IN") != nullptr;
  const fs::path root =
      isNamed ? fs::absolute("stand_in") : fs::path(test::PathBeside("steam_stand_in"));
  const fs::path account = root / std::to_string(SteamUser()->GetSteamID());
  char folder[kCapacity] = "";
  ASSERT_TRUE(SteamUser()->GetUserDataFolder(folder, kCapacity));
  EXPECT_TRUE(fs::path(folder).is_absolute());
  EXPECT_TRUE(fs::equivalent(folder, account / "local")) << folder;

  fs::remove_all(account);
  const int length = static_cast<int>(std::string(folder).size());
  std::vector<char> buffer(static_cast<std::size_t>(length) + 1, '#');
  for (const int capacity : {length, 1, 0, -1}) {
    EXPECT_FALSE(SteamUser()->GetUserDataFolder(buffer.data(), capacity));
    EXPECT_EQ(buffer[0], '#');
    EXPECT_FALSE(fs::exists(account));
  }
  EXPECT_FALSE(SteamUser()->GetUserDataFolder(nullptr, kCapacity));
  test::WriteFile(account.string(), "in the way");
  EXPECT_FALSE(SteamUser()->GetUserDataFolder(buffer.data(), length + 1));
  EXPECT_EQ(buffer[0], '#');
  fs::remove(account);
  EXPECT_TRUE(SteamUser()->GetUserDataFolder(buffer.data(), length + 1));
  EXPECT_STREQ(buffer.data(), folder);
  fs::remove_all(isNamed ? account : root);
}

TEST_F(StandInTickets, AreRecognised) {
  constexpr std::uint32_t kSize = 234;
  std::vector<std::string> tickets;
  const auto issue = [&](int capacity) {
    std::string ticket(kSize, '#');
    std::uint32_t size = 99;
    const std::uint32_t handle = SteamUser()->GetAuthSessionTicket(ticket.data(), capacity, &size);
    EXPECT_EQ(size, handle == 0 ? 99u : kSize);
    EXPECT_EQ(ticket == std::string(kSize, '#'), handle == 0);
    tickets.push_back(ticket);
    return handle;
  };
  const auto isValid = [](const std::string& ticket) {
    return StandInVerifyTicket(ticket.data(), static_cast<std::uint32_t>(ticket.size()));
  };
  Start(R"({"loggedOn": false})");
  EXPECT_EQ(issue(kSize), 0u);
  Start("{}");
  for (const int capacity : {233, 0, -1}) EXPECT_EQ(issue(capacity), 0u);
  std::uint32_t size = 99;
  EXPECT_EQ(SteamUser()->GetAuthSessionTicket(nullptr, kSize, &size), 0u);
  tickets.clear();

  // 1,024 are kept, and of those only whole and unchanged ones are valid.
  for (std::uint32_t i = 1; i <= 1024; ++i) ASSERT_EQ(issue(kSize), i);
  EXPECT_NE(tickets[0], tickets[1]);
  EXPECT_TRUE(isValid(tickets[0]));
  issue(kSize);
  EXPECT_FALSE(isValid(tickets[0]));
  EXPECT_TRUE(isValid(tickets[1]));
  EXPECT_TRUE(isValid(tickets.back()));
  std::string forged = tickets[1];
  forged.back() = static_cast<char>(forged.back() ^ 1);
  EXPECT_FALSE(isValid(forged));
  EXPECT_FALSE(isValid(tickets[1].substr(0, 233)));
  EXPECT_FALSE(isValid(tickets[1] + 'x'));
  EXPECT_FALSE(StandInVerifyTicket(nullptr, kSize));
  Start("{}");
  EXPECT_FALSE(isValid(tickets[1]));
}

}  // namespace
}  // namespace launcher
