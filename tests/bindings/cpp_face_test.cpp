// Finds what the C++ wrapper itself can do wrong: a failure that becomes no Error or another one, a
// wrong size or number, a text that is cut, a marker that stays, an owner that releases twice or
// never. The wrapper is included first because it needs no other header.
#include "launcher_dll.hpp"
//
#include "launch/launch_child.h"
#include "platform/owners.h"
#include "platform/win32.h"
#include "steam/scripted_test.h"
#include "support/captured_output.h"
#include "support/data_file.h"

namespace launcher {
namespace {

namespace face = launcher_dll;
namespace steam = launcher_dll::steam;
using face::Bytes;
using face::BytesOf;
using test::SteamScript;

static_assert(!std::is_copy_constructible_v<face::Block>);
static_assert(!std::is_copy_constructible_v<steam::Session>);

const std::string kBadArgument = "an argument is not valid, or a buffer is too small";
const std::string kSizeRefused = "the size is not 1 to 1,048,575 bytes";
const std::string kNoSteam = "Steam is not available, or refused the request";

class CppFace : public test::ScriptedTest {
 protected:
  CppFace() {
    std::filesystem::create_directory("user");
    script_.folder = "user";
  }

  // Each call throws an Error with this export, result, message and system error code.
  static void ExpectErrors(
      const std::vector<std::pair<std::function<void()>, std::string>>& cases) {
    for (const auto& [call, expected] : cases) {
      std::string found = "no exception";
      try {
        call();
      } catch (const face::Error& error) {
        found = error.ExportName() + (' ' + std::to_string(error.Result())) + ": ";
        std::string message = error.what();
        const std::string start = error.ExportName() + std::string(" failed: ");
        const std::string words = std::system_category().message(error.SystemCode());
        EXPECT_EQ(message.rfind(start, 0), 0u) << message;
        if (error.SystemCode() != 0) message.erase(message.find(words), words.size());
        found += message.substr(start.size());
      }
      EXPECT_EQ(found, expected);
    }
  }
};

TEST_F(CppFace, ReportsEachFailure) {
  static Bytes small(43);
  ExpectErrors({
      {[] { face::Block(0); }, "QX_Allocate -2: " + kBadArgument},
      {[] { face::LoadText(1); }, "QX_LoadStringToMemory -4: not found"},
      {[] { face::Encode({}); }, "file_cipher_encode 7: the payload is empty"},
      {[] { face::EncodeTo(small, BytesOf("x")); },
       "file_cipher_encode 7: the output is too small"},
      {[] { face::ContainerSize(0x80000000); },
       "file_cipher_get_encode_size 0: the payload is too large"},
      {[] { face::Decode({}); }, "QX_Decode -1005: " + kSizeRefused},
      {[] { face::Decode(small); }, "QX_Decode 0: no intact container"},
      {[] { face::Decode(small, Bytes(4)); }, "file_cipher_decode 7: no intact container"},
      {[] { face::Decode(small, Bytes(56)); }, "file_cipher_decode 7: no intact container"},
      {[] { face::Decode(small, Bytes(3)); }, "file_cipher_decode 7: a key has 4 to 56 bytes"},
      {[] { face::Decode(small, Bytes(57)); }, "file_cipher_decode 7: a key has 4 to 56 bytes"},
      {[] { face::ReadClientData(nullptr); }, "QX_RightAddress -1: the text is too short"},
      {[] { face::ReadLaunchLine("x00abcdef"); }, "QX_RightDWORD -1: the text is too short"},
      {[] { face::RightBytes("ff0", 2); }, "QX_RightBinary -1: the text is too short"},
      {[] { face::RunClient("none"); }, "QX_CreateProcess -1:  (system error 2)"},
      {[] { face::RunClient(std::string(2029, 'x')); },
       "QX_CreateProcess -1: the client's path is too long"},
      {[] { face::RemoveFile("none"); }, "QX_RemoveFile -1:  (system error 2)"},
      {[] { face::RemoveFolder("none"); }, "QX_RemoveDirectory -1:  (system error 2)"},
      {[] { face::RemoveFolder(""); }, "QX_RemoveDirectory -1: the path names no folder"},
  });
  EXPECT_EQ(face::ContainerSize(0x7FFFFFFF), 0x8000002Cu);
  EXPECT_THROW(face::DecodeInPlace({small.data(), 0x80000000}), std::length_error);
  EXPECT_THROW(face::RunClient("a", Bytes(face::kLargestClientData + 1)), std::length_error);
}

// A command line can name any process and any address.
TEST_F(CppFace, RefusesForgedClientData) {
  const KernelHandle self(OpenProcess(0x1FFFFF, FALSE, GetCurrentProcessId()));
  char* const page = static_cast<char*>(
      VirtualAllocEx(self.Get(), nullptr, 4096, MEM_RESERVE | MEM_COMMIT, PAGE_READWRITE));
  const Bytes bare = face::Encode(Bytes(1));
  std::copy(bare.begin(), bare.end(), page + 4);
  const auto address = static_cast<unsigned>(reinterpret_cast<std::uintptr_t>(page));
  const auto read = [page](std::uint32_t size, unsigned from, unsigned long process) {
    std::memcpy(page, &size, sizeof size);
    char line[17];
    std::snprintf(line, sizeof line, "%08lx%08x", process, from);
    face::ReadClientData(line);
  };
  const unsigned long id = GetCurrentProcessId();
  const std::string noProcess = sizeof page == 8 ? "(system error 3)" : "(system error 87)";
  ExpectErrors({
      {[&] { read(0xFFFFD, address, id); }, "ReadClientData -1005: " + kSizeRefused},
      {[&] { read(0, address, id); }, "QX_Decode -1005: " + kSizeRefused},
      {[&] { read(43, address, id); }, "QX_Decode 0: no intact container"},
      {[&] { read(44, address, id); }, "ReadClientData -1: the data are not signed"},
      {[&] { read(44, address, 0x7FFFFFFC); },
       "ReadClientData -1: the launcher's memory cannot be read:  " + noProcess},
  });
  EXPECT_THROW(read(0, 8, id), face::Error);
  VirtualFreeEx(self.Get(), page, 0, MEM_RELEASE);
}

TEST_F(CppFace, ReportsThatSteamIsMissing) {
  script_.hasUser = script_.hasFriends = script_.hasApps = script_.hasStorage = script_.hasHttp =
      false;
  QX_SteamAPI_Init();  // forgets the interface of an earlier session
  script_.answer = false;
  EXPECT_FALSE(steam::Session().IsUp());
  EXPECT_EQ(script_.calls, Calls{}) << "a session that is not up is not ended";
  const auto data = BytesOf("data");
  const std::string prefix = "QX_SteamAPI_", none = " -3: " + kNoSteam;
  ExpectErrors({
      {steam::PersonaName, prefix + "GetPersonaName 0: no Steam"},
      {steam::AuthTicket, prefix + "GetSteamAuthTicket -1: it returned -1"},
      {steam::AvailableLanguages, prefix + "GetAvailableGameLanguages" + none},
      {steam::CurrentLanguage, prefix + "GetCurrentGameLanguage" + none},
      {steam::UserFolder, prefix + "GetUserDataFolder" + none},
      {[] { steam::UserFilePath("a"); }, prefix + "CatUserFilePath" + none},
      {[] { steam::ReadUserFile("a"); }, prefix + "ReadFile" + none},
      {[=] { steam::WriteUserFile("a", data); }, prefix + "WriteFile" + none},
      {[=] { steam::WriteCloudFile("a", data); }, prefix + "RemoteStorageFileWrite" + none},
      {[] { steam::ReadCloudFile("a"); }, prefix + "RemoteStorageFileRead" + none},
      {[] { steam::DeleteCloudFile("a"); }, prefix + "RemoteStorageFileDelete -1: it returned -1"},
      {[] { steam::ForgetCloudFile("a"); }, prefix + "RemoteStorageFileForget 0: it returned 0"},
      {steam::CloudFileNames, prefix + "RemoteStorageGetFileCount -1: it returned -1"},
      {[] { steam::SetCloudEnabledForApp(true); },
       prefix + "RemoteStorageSetCloudEnabledForApp 1: no Steam"},
      {[] { steam::RequestHttp("http://a.example"); }, prefix + "HTTPRequest" + none},
  });
}

TEST_F(CppFace, OwnsReadsAndRemoves) {
  face::Block block(1000);
  const face::Block moved = std::move(block);
  EXPECT_EQ(Bytes(moved.data(), moved.data() + moved.size()), Bytes(1000));
  EXPECT_EQ(block.size(), 0u);
  QX_Deallocate(face::Block(1).Release());
  EXPECT_EQ(face::LoadText(face::Label::kForbidden), "Forbidden");
  const face::LibraryInformation information = face::ReadLibraryInformation();
  EXPECT_EQ(information.numbers, (std::array<std::uint32_t, 4>{0, 2, 5, 0}));
  EXPECT_EQ(information.buildName, face::LoadText(10));
  EXPECT_EQ(information.vendorName, face::LoadText(0));
  EXPECT_TRUE(face::SettingsLoad());
  EXPECT_TRUE(face::IsOwnServer("x", face::LoadText(5000)));
  EXPECT_FALSE(face::IsOwnServer(face::LoadText(5000), "x"));
  test::WriteFile("user/file", "x");
  face::RemoveFile("user/file");
  EXPECT_TRUE(std::filesystem::is_empty("user"));
  test::WriteFile("user/file", "x");
  face::EmptyFolder("user");
  EXPECT_TRUE(std::filesystem::is_empty("user"));
  face::RemoveFolder("user");
  EXPECT_FALSE(std::filesystem::exists("user"));
}

TEST_F(CppFace, MakesAndReadsContainers) {
  const Bytes data = test::Pattern(100);
  const std::string key = face::LoadText(11000), marker = face::LoadText(11001);
  EXPECT_EQ(face::Sign({}), test::BytesOf(marker));
  for (const Bytes& payload : {data, face::Sign(data)}) {
    Bytes area(200, 0xEE);  // in place, and with room to spare
    std::copy(payload.begin(), payload.end(), area.begin() + face::kPayloadOffset);
    const face::ByteSpan made =
        face::EncodeTo(area, face::ConstByteSpan(area).Part(face::kPayloadOffset, payload.size()));
    const Bytes container(made.begin(), made.end());
    EXPECT_EQ(face::Encode(payload), container);
    EXPECT_EQ(face::Decode(container), payload);
    EXPECT_EQ(face::Decode(container, BytesOf(key)), payload);
    EXPECT_EQ(face::Decode(container, face::Marker::kSkip), data);
    EXPECT_EQ(face::Decode(container, BytesOf(key), marker.c_str()), data);
    EXPECT_EQ(face::DecodeInPlace(made, face::Marker::kSkip)->hadMarker, payload != data);
  }
}

TEST_F(CppFace, HandsDataToAClient) {
  const face::LaunchLine line = face::ReadLaunchLine("\"C:\\client.exe\" 00001a2b00abcdef");
  EXPECT_EQ(line.program, "\"C:\\client.exe\" ");
  EXPECT_EQ(line.processId, 0x1A2Bu);
  EXPECT_EQ(line.dataAddress, 0xABCDEFu);
  EXPECT_EQ(face::RightBytes("xff0a", 2), (Bytes{0xFF, 0x0A}));
  EXPECT_EQ(face::RightBytes("", 0), Bytes());

  const std::string child = test::ProgramBeside("launch_child");
  const Bytes data = test::Pattern(face::kLargestClientData);
  face::RunClient(child, data);
  EXPECT_TRUE(test::BytesOf(test::ReadFile(test::kDataFile)) == data);
  const Bytes raw = {0, 0, 0, 0, 0, 0, 0, 0, 1, 0, 0, 0, 'x'};  // a LaunchHeader and its data
  face::RunClient(child, raw, face::DataForm::kRaw);
  EXPECT_EQ(test::ReadFile(test::kDataFile), "x");
  face::RunClient(child);
  EXPECT_EQ(face::ReadClientData(test::ReadFile(test::kLineFile).c_str()), Bytes());
}

TEST_F(CppFace, ReadsWhatSteamKnows) {
  const std::pair<const char * SteamScript::*, std::function<std::string()>> texts[] = {
      {&SteamScript::personaName, steam::PersonaName},
      {&SteamScript::languages, steam::AvailableLanguages},
      {&SteamScript::language, steam::CurrentLanguage},
      {&SteamScript::fileName, [] { return steam::CloudFileNames().back(); }},
  };
  script_.number = 1;
  {
    const steam::Session session;
    EXPECT_TRUE(session.IsUp());
    for (const auto& [member, read] : texts) {
      for (const int length : {0, 255, 256, 5000}) {
        const std::string text(static_cast<std::size_t>(length), 't');
        script_.*member = text.c_str();
        EXPECT_EQ(read(), text);
        script_.*member = "";
      }
    }
    script_.calls.clear();
  }
  EXPECT_EQ(script_.calls, Calls{"Shutdown"});
  for (const std::string& ticket : {std::string(), std::string("00AB"), std::string(2048, 'F')}) {
    script_.ticket = test::BytesFromHex(ticket);
    EXPECT_EQ(steam::AuthTicket(), ticket);
  }
  for (const bool answer : {false, true}) {
    script_.answer = answer;
    script_.steamId = answer ? 0x0110000112345678 : 0;
    EXPECT_EQ(steam::UserId().has_value(), answer);
    EXPECT_EQ(steam::UserId().value_or(0), script_.steamId);
    EXPECT_EQ(steam::IsRunning(), answer);
    EXPECT_EQ(steam::IsLoggedOn(), answer);
    EXPECT_EQ(steam::RestartsApp(480), answer);
    EXPECT_EQ(steam::CloudFileExists("name"), answer);
    EXPECT_EQ(steam::IsCloudEnabledForAccount(), answer);
    EXPECT_EQ(steam::IsCloudEnabledForApp(), answer);
  }
}

TEST_F(CppFace, ReadsWholeFilesOfTheUser) {
  // A file ends in bytes of either fill. The first buffer has 65,536 bytes.
  for (const std::size_t size : {0x10001u, 0x10000u, 1u}) {
    for (const char last : {'\x00', '\xFF'}) {
      const Bytes content = test::BytesOf(std::string(size - 1, 's') + last);
      steam::WriteUserFile("save", content);
      EXPECT_TRUE(steam::ReadUserFile("save") == content) << size;
      EXPECT_TRUE(steam::ReadUserFile("save", size) == content) << size;
    }
  }
  EXPECT_TRUE(steam::UserFileExists("save"));
  EXPECT_FALSE(steam::UserFileExists("none"));
  EXPECT_EQ(steam::UserFolder(), "user");
  EXPECT_EQ(steam::UserFilePath("a"), "user\\a");
  test::WriteFile("user/empty", "");
  ExpectErrors({
      {[] { steam::ReadUserFile("save", 0); }, "QX_SteamAPI_ReadFile -2: " + kBadArgument},
      {[] { steam::ReadUserFile("none"); }, "QX_SteamAPI_ReadFile -4: not found"},
      {[] { steam::ReadUserFile("empty"); },
       "QX_SteamAPI_ReadFile -1002: the file could not be read, or is empty"},
      {[this] {
         script_.terminatesFolder = false;
         steam::UserFolder();
       },
       "QX_SteamAPI_GetUserDataFolder 1: Steam gives no folder"},
      {[this] {
         script_.folder = nullptr;
         steam::UserFolder();
       },
       "QX_SteamAPI_GetUserDataFolder 0: Steam gives no folder"},
  });
}

TEST_F(CppFace, PassesCloudFilesAndRequestsOn) {
  script_.number = 3;
  EXPECT_EQ(steam::CloudFileNames(), std::vector<std::string>(3));
  EXPECT_EQ(script_.calls.back(), "GetFileNameAndSize 2 0");
  EXPECT_EQ(steam::ReadCloudFile("name"), Bytes(3, 'r'));
  script_.calls.clear();
  steam::WriteCloudFile("name", BytesOf("data"));
  steam::ForgetCloudFile("name");
  steam::DeleteCloudFile("name");
  steam::SetCloudEnabledForApp(true);
  steam::RequestHttp("url", steam::HttpMethod::kPost, "text/plain", BytesOf("body"));
  script_.calls.resize(6);
  EXPECT_EQ(script_.calls,
            (Calls{"FileWrite name data 4", "FileForget name", "FileDelete name",
                   "SetCloudEnabledForApp 1", "Create 3 url", "SetBody 1 text/plain body"}));
  EXPECT_THROW(steam::WriteCloudFile("name", {nullptr, 0x80000000}), std::length_error);
  script_.answer = false;
  script_.number = 0;
  ExpectErrors({{[] { steam::ReadCloudFile("name"); },
                 "QX_SteamAPI_RemoteStorageFileRead 0: no such file"}});
}

}  // namespace
}  // namespace launcher
