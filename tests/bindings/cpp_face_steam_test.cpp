// Finds what the C++ wrapper can do wrong with Steam's exports, which fail in five ways: a failure
// that becomes no Error, a text that is cut, a file whose end is taken for another.

#include <filesystem>
#include <functional>

#include "launcher_dll.hpp"
#include "steam/scripted_test.h"
#include "support/captured_output.h"
#include "support/data_file.h"

namespace launcher {
namespace {

namespace steam = launcher_dll::steam;
using launcher_dll::Bytes;
using launcher_dll::BytesOf;
using launcher_dll::Error;

class CppFaceSteam : public test::ScriptedTest {
 protected:
  CppFaceSteam() {
    std::filesystem::create_directory("user");
    script_.folder = "user";
  }
};

TEST_F(CppFaceSteam, ThrowsOrSaysNoWithoutSteam) {
  script_.hasUser = script_.hasFriends = script_.hasApps = script_.hasStorage = script_.hasHttp =
      false;
  QX_SteamAPI_Init();  // which forgets the interface of an earlier session
  script_.answer = false;
  EXPECT_FALSE(steam::Session().IsUp());
  EXPECT_EQ(script_.calls, Calls{}) << "a session that is not up needs no end";
  const std::function<void()> failing[] = {
      [] { steam::PersonaName(); },
      [] { steam::AuthTicket(); },
      [] { steam::AvailableLanguages(); },
      [] { steam::CurrentLanguage(); },
      [] { steam::UserFolder(); },
      [] { steam::UserFilePath("a"); },
      [] { steam::ReadUserFile("a"); },
      [] { steam::WriteUserFile("a", BytesOf("data")); },
      [] { steam::WriteCloudFile("a", BytesOf("data")); },
      [] { steam::ReadCloudFile("a"); },
      [] { steam::DeleteCloudFile("a"); },
      [] { steam::ForgetCloudFile("a"); },
      [] { steam::CloudFileCount(); },
      [] { steam::CloudFileName(0); },
      [] { steam::SetCloudEnabledForApp(false); },
      [] { steam::RequestHttp("http://a.example"); },
  };
  for (std::size_t i = 0; i < std::size(failing); ++i) EXPECT_THROW(failing[i](), Error) << i;
  EXPECT_EQ(steam::UserId(), std::nullopt);
  EXPECT_FALSE(steam::UserFileExists("a"));
  EXPECT_EQ(steam::CloudFileSize("a"), 0u);
}

TEST_F(CppFaceSteam, GivesTextsOfAnyLength) {
  using test::SteamScript;
  struct Case {
    const char* SteamScript::*text;
    std::function<std::string()> ask;
  };
  const Case cases[] = {
      {&SteamScript::personaName, steam::PersonaName},
      {&SteamScript::languages, steam::AvailableLanguages},
      {&SteamScript::language, steam::CurrentLanguage},
      {&SteamScript::fileName, [] { return steam::CloudFileName(0); }},
  };
  {
    const steam::Session session;
    EXPECT_TRUE(session.IsUp());
    for (const Case& tried : cases) {
      for (const std::size_t length : {0u, 1u, 255u, 256u, 5000u}) {
        const std::string text(length, 't');
        script_.*tried.text = text.c_str();
        EXPECT_EQ(tried.ask(), text);
        script_.*tried.text = "";
      }
    }
    script_.calls.clear();
  }
  EXPECT_EQ(script_.calls, Calls{"Shutdown"});
  script_.ticket = {0x00, 0xAB};
  EXPECT_EQ(steam::AuthTicket(), "00AB");
  script_.ticket = test::Pattern(1024);
  EXPECT_EQ(steam::AuthTicket().size(), 2048u);
  EXPECT_EQ(steam::UserFolder(), "user");
  script_.terminatesFolder = false;
  EXPECT_THROW(steam::UserFolder(), Error) << "memory that is no text";
}

TEST_F(CppFaceSteam, AsksQuestions) {
  script_.steamId = 0x0110000112345678;
  EXPECT_EQ(steam::UserId(), 0x0110000112345678u);
  for (const bool answer : {true, false}) {
    script_.answer = answer;
    EXPECT_EQ(steam::IsRunning(), answer);
    EXPECT_EQ(steam::IsLoggedOn(), answer);
    EXPECT_EQ(steam::RestartsApp(480), answer);
    EXPECT_EQ(steam::CloudFileExists("name"), answer);
    EXPECT_EQ(steam::IsCloudEnabledForAccount(), answer);
    EXPECT_EQ(steam::IsCloudEnabledForApp(), answer);
  }
}

TEST_F(CppFaceSteam, ReadsWholeFilesOfTheUser) {
  // The first buffer has 65,536 bytes; the file ends in bytes of either fill.
  for (const std::size_t size : {1u, 0xFFFFu, 0x10000u, 0x10001u, 300000u}) {
    for (const std::uint8_t last : {std::uint8_t{0x00}, std::uint8_t{0xFF}}) {
      Bytes content = test::Pattern(size);
      content.back() = last;
      steam::WriteUserFile("save", content);
      EXPECT_TRUE(steam::ReadUserFile("save") == content) << size;
    }
  }
  EXPECT_TRUE(steam::UserFileExists("save"));
  EXPECT_EQ(steam::UserFilePath("a"), "user\\a");
  EXPECT_EQ(steam::ReadUserFile("save", 300000).size(), 300000u);
  test::WriteFile("user/empty", "");
  const std::tuple<const char*, std::size_t, ResultCode> cases[] = {
      {"save", 299999, QX_BAD_ARGUMENT},
      {"missing", 100, QX_NOT_FOUND},
      {"empty", 100, QX_READ_FAILED}};
  for (const auto& [name, largestSize, result] : cases) {
    try {
      steam::ReadUserFile(name, largestSize);
      ADD_FAILURE() << name;
    } catch (const Error& error) {
      EXPECT_EQ(error.Result(), result);
      EXPECT_STREQ(error.ExportName(), "QX_SteamAPI_ReadFile");
    }
  }
}

TEST_F(CppFaceSteam, PassesCloudFilesAndRequestsOn) {
  script_.number = 3;
  script_.fileName = "name";
  EXPECT_EQ(steam::CloudFileNames(), std::vector<std::string>(3, "name"));
  EXPECT_EQ(steam::ReadCloudFile("name"), Bytes(3, 'r'));
  script_.contentLength = 2;
  script_.body = {'o', 'k'};
  script_.calls.clear();
  steam::WriteCloudFile("name", BytesOf("data"));
  steam::ForgetCloudFile("name");
  steam::DeleteCloudFile("name");
  steam::SetCloudEnabledForApp(true);
  EXPECT_EQ(test::StandardOutputOf([] {
              steam::RequestHttp("http://a.example", steam::HttpMethod::kPost, "text/plain",
                                 BytesOf("body"));
              steam::RequestHttp("http://b.example");
            }),
            "Response: ok\nResponse: ok\n");
  ASSERT_EQ(script_.calls.size(), 15u);
  script_.calls.resize(6);
  EXPECT_EQ(script_.calls, (Calls{"FileWrite name data 4", "FileForget name", "FileDelete name",
                                  "SetCloudEnabledForApp 1", "Create 3 http://a.example",
                                  "SetBody 1 text/plain body"}));
  std::uint8_t byte = 0;
  EXPECT_THROW(steam::WriteCloudFile("name", {&byte, 0x80000000u}), std::length_error);
}

}  // namespace
}  // namespace launcher
