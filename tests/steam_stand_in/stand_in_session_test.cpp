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

TEST_F(StandInSession, HasNoInterfacesOutside) {
  for (int round = 0; round < 2; ++round) {
    EXPECT_EQ(SteamUser(), nullptr);
    EXPECT_EQ(SteamFriends(), nullptr);
    EXPECT_EQ(SteamApps(), nullptr);
    EXPECT_EQ(SteamRemoteStorage(), nullptr);
    EXPECT_EQ(SteamHTTP(), nullptr);

    ASSERT_TRUE(SteamAPI_Init());
    ASSERT_TRUE(SteamAPI_Init());
    EXPECT_NE(SteamUser(), nullptr);
    EXPECT_NE(SteamFriends(), nullptr);
    EXPECT_NE(SteamApps(), nullptr);
    EXPECT_NE(SteamRemoteStorage(), nullptr);
    EXPECT_NE(SteamHTTP(), nullptr);
    SteamAPI_Shutdown();
  }
}

// A transfer can outlive its session; its handle must not get the response of another request.
TEST_F(StandInSession, DoesNotReuseTheHandlesOfAnEndedOne) {
  Start("{}");
  const std::uint32_t before = SteamHTTP()->CreateHTTPRequest(1, "http://127.0.0.1:1/");
  Start("{}");
  const std::uint32_t after = SteamHTTP()->CreateHTTPRequest(1, "http://127.0.0.1:1/");
  EXPECT_NE(before, 0u);
  EXPECT_NE(after, before);
  EXPECT_FALSE(SteamHTTP()->ReleaseHTTPRequest(before));
}

TEST_F(StandInSession, InterfacesOfAnEndedOneFail) {
  Start("{}");
  ISteamUser* const user = SteamUser();
  ISteamFriends* const friends = SteamFriends();
  ISteamApps* const apps = SteamApps();
  ISteamRemoteStorage* const storage = SteamRemoteStorage();
  ISteamHTTP* const http = SteamHTTP();
  ASSERT_TRUE(storage->FileWrite("a", "x", 1));
  SteamAPI_Shutdown();

  char buffer[kCapacity] = "before";
  std::uint32_t size = 99;
  EXPECT_FALSE(user->BLoggedOn());
  EXPECT_EQ(user->GetSteamID(), 0u);
  EXPECT_FALSE(user->GetUserDataFolder(buffer, kCapacity));
  EXPECT_EQ(user->GetAuthSessionTicket(buffer, kCapacity, &size), 0u);
  EXPECT_STREQ(friends->GetPersonaName(), "");
  EXPECT_STREQ(apps->GetCurrentGameLanguage(), "");
  EXPECT_STREQ(apps->GetAvailableGameLanguages(), "");
  EXPECT_FALSE(storage->FileExists("a"));
  EXPECT_FALSE(storage->FileWrite("a", "x", 1));
  EXPECT_EQ(storage->GetFileCount(), 0);
  EXPECT_STREQ(storage->GetFileNameAndSize(0, nullptr), "");
  storage->SetCloudEnabledForApp(1);
  EXPECT_FALSE(storage->IsCloudEnabledForApp());
  EXPECT_EQ(http->CreateHTTPRequest(1, "http://localhost/"), 0u);
  EXPECT_STREQ(buffer, "before");
  EXPECT_EQ(size, 99u);
}

TEST_F(StandInSettings, HaveDefaults) {
  EXPECT_TRUE(SteamAPI_IsSteamRunning());
  EXPECT_FALSE(SteamAPI_RestartAppIfNecessary(kAppId));
  ASSERT_TRUE(SteamAPI_Init());
  EXPECT_TRUE(SteamUser()->BLoggedOn());
  EXPECT_EQ(SteamUser()->GetSteamID(), 76561202255233023u);
  EXPECT_STREQ(SteamFriends()->GetPersonaName(), "Player");
  EXPECT_STREQ(SteamApps()->GetCurrentGameLanguage(), "english");
  EXPECT_STREQ(SteamApps()->GetAvailableGameLanguages(), "english");
  EXPECT_TRUE(SteamRemoteStorage()->IsCloudEnabledForAccount());
  EXPECT_TRUE(SteamRemoteStorage()->IsCloudEnabledForApp());
  // A look at it makes no folder.
  EXPECT_EQ(test::ScratchDirectory::FileCount(), 0u);
}

TEST_F(StandInSettings, AreTakenFromTheFile) {
  Start(R"({"accountId": 18446744073709551615, "personaName": "Ad\u00e1", "currentLanguage": "",
            "availableLanguages": "english,german", "loggedOn": false, "startedBySteam": false,
            "cloudEnabledForAccount": false, "cloudEnabledForApp": false, "quotaBytes": 0})");
  EXPECT_TRUE(SteamAPI_IsSteamRunning());
  EXPECT_TRUE(SteamAPI_RestartAppIfNecessary(kAppId));
  EXPECT_FALSE(SteamUser()->BLoggedOn());
  EXPECT_EQ(SteamUser()->GetSteamID(), 0xFFFFFFFFFFFFFFFFu);
  EXPECT_STREQ(SteamFriends()->GetPersonaName(), "Ad\xC3\xA1");
  EXPECT_STREQ(SteamApps()->GetCurrentGameLanguage(), "");
  EXPECT_STREQ(SteamApps()->GetAvailableGameLanguages(), "english,german");
  EXPECT_FALSE(SteamRemoteStorage()->IsCloudEnabledForAccount());
  EXPECT_FALSE(SteamRemoteStorage()->IsCloudEnabledForApp());

  // They hold for the session.
  WriteSettings("{}");
  EXPECT_STREQ(SteamApps()->GetCurrentGameLanguage(), "");
  EXPECT_TRUE(SteamAPI_RestartAppIfNecessary(kAppId));
}

TEST_F(StandInSettings, ThatDoNotFitAreToldInOneLine) {
  const std::pair<const char*, const char*> cases[] = {
      {"", "parse error"},
      {"{\"running\": true", "parse error"},
      {"{\"personaName\": \"\xFF\"}", "parse error"},
      {"[]", "is no JSON object"},
      {"null", "is no JSON object"},
      {R"({"accountId": -1})", "accountId is no whole number"},
      {R"({"accountId": 1.5})", "accountId is no whole number"},
      {R"({"accountId": 18446744073709551616})", "accountId is no whole number"},
      {R"({"personaName": 1})", "personaName is no text"},
      {R"({"loggedOn": "true"})", "loggedOn is neither true nor false"},
      {R"({"httpConnectLimitMs": 0})", "httpConnectLimitMs is not from 1 to 3600000"},
      {R"({"httpBodyLimitBytes": 1073741825})", "httpBodyLimitBytes is not from 0 to 1073741824"},
      {R"({"logedOn": true})", "unknown member logedOn"},
      {R"({"running": false})", "Steam is not running"},
      {R"({"subscribed": false})", "no licence"},
  };
  for (const auto& [settings, reason] : cases) {
    SCOPED_TRACE(settings);
    WriteSettings(settings);
    const std::string printed = test::StandardErrorOf([] { EXPECT_FALSE(SteamAPI_Init()); });
    EXPECT_NE(printed.find(reason), std::string::npos) << printed;
    EXPECT_EQ(printed.find("Steam stand-in: "), 0u);
    EXPECT_EQ(printed.find('\n'), printed.size() - 1);
    EXPECT_EQ(SteamUser(), nullptr);
  }
}

TEST_F(StandInSettings, AnswerBeforeASession) {
  struct Case {
    const char* settings;
    bool isRunning;
    bool needsRestart;
  };
  const Case cases[] = {
      {R"({"running": false})", false, false},
      {R"({"subscribed": false})", true, true},
      {R"({"startedBySteam": false})", true, true},
      {"no settings", false, false},
  };
  for (const Case& each : cases) {
    SCOPED_TRACE(each.settings);
    WriteSettings(each.settings);
    EXPECT_EQ(test::StandardErrorOf([&] {
                EXPECT_EQ(SteamAPI_IsSteamRunning(), each.isRunning);
                EXPECT_EQ(SteamAPI_RestartAppIfNecessary(kAppId), each.needsRestart);
              }),
              "");
  }
}

TEST_F(StandInSettings, LieBesideTheProgramWhereNothingElseIsSaid) {
  test::SetEnvironment("STEAM_STAND_IN", "");
  ASSERT_TRUE(SteamAPI_Init());
  char folder[kCapacity] = "";
  ASSERT_TRUE(SteamUser()->GetUserDataFolder(folder, kCapacity));
  const fs::path expected = fs::path(test::ProgramBeside("x")).parent_path() / "steam_stand_in";
  EXPECT_EQ(fs::path(folder).parent_path().parent_path(), expected);
  fs::remove_all(expected);
}

TEST_F(StandInUser, HasADataFolder) {
  Start(R"({"accountId": 7})");
  char folder[kCapacity] = "";
  ASSERT_TRUE(SteamUser()->GetUserDataFolder(folder, kCapacity));
  EXPECT_TRUE(fs::path(folder).is_absolute());
  EXPECT_TRUE(fs::equivalent(folder, "stand_in/7/local"));
  test::WriteFile(std::string(folder) + "/mine", "x");
  ASSERT_TRUE(SteamUser()->GetUserDataFolder(folder, kCapacity));
  EXPECT_TRUE(fs::exists("stand_in/7/local/mine"));
}

TEST_F(StandInUser, HasADataFolderOnlyWhereItsPathFits) {
  Start(R"({"accountId": 7})");
  char folder[kCapacity] = "";
  ASSERT_TRUE(SteamUser()->GetUserDataFolder(folder, kCapacity));
  fs::remove_all("stand_in/7");
  const int length = static_cast<int>(std::string(folder).size());
  for (const int capacity : {length, 1, 0, -1}) {
    char buffer[kCapacity] = "before";
    EXPECT_FALSE(SteamUser()->GetUserDataFolder(buffer, capacity));
    EXPECT_STREQ(buffer, "before");
    EXPECT_FALSE(fs::exists("stand_in/7"));
  }
  EXPECT_FALSE(SteamUser()->GetUserDataFolder(nullptr, kCapacity));
  std::vector<char> exact(static_cast<std::size_t>(length) + 1, 'x');
  EXPECT_TRUE(SteamUser()->GetUserDataFolder(exact.data(), length + 1));
  EXPECT_STREQ(exact.data(), folder);

  // Something else may be where it would be.
  fs::remove_all("stand_in/7");
  test::WriteFile("stand_in/7", "in the way");
  char buffer[kCapacity] = "before";
  EXPECT_FALSE(SteamUser()->GetUserDataFolder(buffer, kCapacity));
  EXPECT_STREQ(buffer, "before");
}

TEST_F(StandInTickets, AreKnownAgain) {
  Start("{}");
  std::string tickets[2];
  for (std::uint32_t i = 0; i < 2; ++i) {
    char ticket[kCapacity] = "";
    std::uint32_t size = 0;
    EXPECT_EQ(SteamUser()->GetAuthSessionTicket(ticket, kCapacity, &size), i + 1);
    ASSERT_EQ(size, 234u);
    tickets[i].assign(ticket, size);
  }
  EXPECT_NE(tickets[0], tickets[1]);

  const auto isValid = [](const std::string& ticket) {
    return StandInVerifyTicket(ticket.data(), static_cast<std::uint32_t>(ticket.size()));
  };
  EXPECT_TRUE(isValid(tickets[0]));
  EXPECT_TRUE(isValid(tickets[1]));
  std::string forged = tickets[0];
  forged.back() = static_cast<char>(forged.back() ^ 1);
  EXPECT_FALSE(isValid(forged));
  EXPECT_FALSE(isValid(tickets[0].substr(1)));
  EXPECT_FALSE(isValid(tickets[0] + 'x'));
  EXPECT_FALSE(isValid(""));
  EXPECT_FALSE(StandInVerifyTicket(nullptr, 234));

  // Others do not take the place of what is there; after the session none counts.
  for (int i = 0; i < 1023; ++i) {
    char ticket[kCapacity];
    std::uint32_t size = 0;
    ASSERT_NE(SteamUser()->GetAuthSessionTicket(ticket, kCapacity, &size), 0u);
  }
  EXPECT_FALSE(isValid(tickets[0]));
  EXPECT_TRUE(isValid(tickets[1]));
  Start("{}");
  EXPECT_FALSE(isValid(tickets[1]));
}

TEST_F(StandInTickets, AreRefused) {
  struct Case {
    const char* settings;
    int capacity;
  };
  for (const Case& each : {Case{"{}", 233}, Case{"{}", 0}, Case{"{}", -1},
                           Case{R"({"loggedOn": false})", kCapacity}}) {
    Start(each.settings);
    char ticket[kCapacity] = "before";
    std::uint32_t size = 99;
    EXPECT_EQ(SteamUser()->GetAuthSessionTicket(ticket, each.capacity, &size), 0u);
    EXPECT_STREQ(ticket, "before");
    EXPECT_EQ(size, 99u);
  }
}

}  // namespace
}  // namespace launcher
