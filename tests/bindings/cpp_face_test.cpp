// Finds what the C++ wrapper itself can do wrong: a failure that becomes no Error or another one, a
// wrong size or number, a text that is cut, a marker that stays, an owner that releases twice or
// never. The wrapper is included first because it needs no other header.
#include "launcher_dll.hpp"
//
#include <regex>

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

static_assert(!std::is_copy_constructible_v<steam::Session>);

class CppFace : public test::ScriptedTest {
 protected:
  CppFace() {
    std::filesystem::create_directory("user");
    script_.folder = "user";
  }

  // Each call throws an Error, of which the text is the export without "QX_" or "QX_SteamAPI_", the
  // result and the start of the message.
  static void ExpectErrors(
      const std::vector<std::pair<std::function<void()>, std::string>>& cases) {
    for (const auto& [call, expected] : cases) {
      std::string found;
      try {
        call();
      } catch (const face::Error& error) {
        found = error.what();
        EXPECT_EQ(found.rfind(error.ExportName(), 0), 0u);
        EXPECT_EQ(error.SystemCode() != 0, found.back() == ')');
        found.replace(found.find(" failed"), 7, ' ' + std::to_string(error.Result()));
        found = std::regex_replace(found, std::regex("^QX_(SteamAPI_)?"), "");
      }
      EXPECT_EQ(found.substr(0, expected.size()), expected);
    }
  }
};

TEST_F(CppFace, ReportsEachFailure) {
  static Bytes small(43);
  const std::string missing = std::system_category().message(2) + " (system error 2)";
  ExpectErrors({
      {[] { face::Encode({}); }, "file_cipher_encode 7: the payload is empty"},
      {[] { face::EncodeTo(small, BytesOf("x")); }, "file_cipher_encode 7: the output"},
      {[] { face::ContainerSize(0x80000000); }, "file_cipher_get_encode_size 0: the payload"},
      {[] { face::Decode(small, Bytes(4)); }, "file_cipher_decode 7: no intact"},
      {[] { face::Decode(small, Bytes(56)); }, "file_cipher_decode 7: no intact"},
      {[] { face::Decode(small, Bytes(3)); }, "file_cipher_decode 7: a key"},
      {[] { face::Decode(small, Bytes(57)); }, "file_cipher_decode 7: a key"},
      {[] { face::Block(0); }, "Allocate -2: an argument is not valid"},
      {[] { face::LoadText(1); }, "LoadStringToMemory -4: not found"},
      {[] { face::Decode({}); }, "Decode -1005: the size is not"},
      {[] { face::Decode(small); }, "Decode 0: no intact"},
      {[] { face::ReadClientData(nullptr); }, "RightAddress -1: the text"},
      {[] { face::ReadLaunchLine("x00abcdef"); }, "RightDWORD -1: the text"},
      {[] { face::RightBytes("ff0", 2); }, "RightBinary -1: the text"},
      {[] { face::RunClient("none"); }, "CreateProcess -1: " + missing},
      {[] { face::RunClient(std::string(2029, 'x')); }, "CreateProcess -1: the client"},
      {[] { face::RemoveFile("none"); }, "RemoveFile -1: " + missing},
      {[] { face::RemoveFolder("none"); }, "RemoveDirectory -1: " + missing},
      {[] { face::RemoveFolder(""); }, "RemoveDirectory -1: the path"},
  });
  EXPECT_EQ(face::ContainerSize(0x7FFFFFFF), 0x8000002Cu);
  EXPECT_THROW(face::DecodeInPlace({small.data(), 0x80000000}), std::length_error);
  EXPECT_THROW(steam::WriteCloudFile("a", {nullptr, 0x80000000}), std::length_error);
  EXPECT_THROW(face::RunClient("a", Bytes(face::kLargestClientData + 1)), std::length_error);
}

TEST_F(CppFace, ReportsWhatSteamRefuses) {
  test::WriteFile("user/empty", "");
  script_.succeeds = false;
  ExpectErrors({
      {[] { steam::ReadUserFile("a", 0); }, "ReadFile -2:"},
      {[] { steam::ReadUserFile("a"); }, "ReadFile -4:"},
      {[] { steam::ReadUserFile("empty"); }, "ReadFile -1002: the file could not be read"},
      {[] { steam::ReadCloudFile("a"); }, "RemoteStorageFileRead 0: no such"},
  });
  script_.terminatesFolder = false;
  ExpectErrors({{steam::UserFolder, "GetUserDataFolder 1: Steam gives no"}});
  script_.folder = nullptr;
  ExpectErrors({{steam::UserFolder, "GetUserDataFolder 0: Steam gives no"}});
  script_.hasInterfaces = false;
  script_.succeeds = true;
  script_.calls.clear();
  EXPECT_FALSE(steam::Session().IsUp());  // the export forgets an earlier session
  EXPECT_EQ(script_.calls, Calls{});
  static const auto data = BytesOf("data");
  ExpectErrors({
      {steam::PersonaName, "GetPersonaName 0: no Steam"},
      {steam::AuthTicket, "GetSteamAuthTicket -1: it returned -1"},
      {steam::AvailableLanguages, "GetAvailableGameLanguages -3: Steam is not"},
      {steam::CurrentLanguage, "GetCurrentGameLanguage -3:"},
      {steam::UserFolder, "GetUserDataFolder -3:"},
      {[] { steam::UserFilePath("a"); }, "CatUserFilePath -3:"},
      {[] { steam::WriteUserFile("a", data); }, "WriteFile -3:"},
      {[] { steam::WriteCloudFile("a", data); }, "RemoteStorageFileWrite -3:"},
      {[] { steam::ReadCloudFile("a"); }, "RemoteStorageFileRead -3:"},
      {[] { steam::DeleteCloudFile("a"); }, "RemoteStorageFileDelete -1:"},
      {[] { steam::ForgetCloudFile("a"); }, "RemoteStorageFileForget 0:"},
      {steam::CloudFileNames, "RemoteStorageGetFileCount -1:"},
      {[] { steam::SetCloudEnabledForApp(true); }, "RemoteStorageSetCloudEnabledForApp 1: no"},
      {[] { steam::RequestHttp("a"); }, "HTTPRequest -3:"},
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
  test::WriteFile("user/a", "x");
  test::WriteFile("user/b", "x");
  face::RemoveFile("user/a");
  EXPECT_FALSE(std::filesystem::exists("user/a"));
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

// A command line can name any process and any address.
TEST_F(CppFace, RefusesForgedClientData) {
  const KernelHandle self(OpenProcess(0x1FFFFF, FALSE, GetCurrentProcessId()));
  char* const page = static_cast<char*>(
      VirtualAllocEx(self.Get(), nullptr, 4096, MEM_RESERVE | MEM_COMMIT, PAGE_READWRITE));
  const Bytes bare = face::Encode(Bytes(1));
  std::copy(bare.begin(), bare.end(), page + 4);
  const auto read = [page](std::uint32_t size, unsigned long process = GetCurrentProcessId()) {
    std::memcpy(page, &size, sizeof size);
    char line[17];
    std::snprintf(line, sizeof line, "%08lx%08x", process,
                  static_cast<unsigned>(reinterpret_cast<std::uintptr_t>(page)));
    face::ReadClientData(line);
  };
  ExpectErrors({
      {[=] { read(0xFFFFD); }, "ReadClientData -1005:"},
#ifndef _WIN32  // there the memory after the page may be readable
      {[=] { read(0xFFFFC); }, "ReadClientData -1:"},
#endif
      {[=] { read(43); }, "Decode 0: no intact"},
      {[=] { read(44); }, "ReadClientData -1: the data are not signed"},
      {[=] { read(44, 0x7FFFFFFC); }, "ReadClientData -1: the launcher's memory cannot be read: "},
  });
  VirtualFreeEx(self.Get(), page, 0, MEM_RELEASE);
}

TEST_F(CppFace, ReadsWhatSteamKnows) {
  script_.number = 3;
  {
    const steam::Session session;
    EXPECT_TRUE(session.IsUp());
    for (const std::size_t length : {0u, 255u, 256u, 5000u}) {
      const std::string texts[] = {std::string(length, 'p'), std::string(length, 'a'),
                                   std::string(length, 'l'), std::string(length, 'f')};
      script_.personaName = texts[0].c_str();
      script_.languages = texts[1].c_str();
      script_.language = texts[2].c_str();
      script_.fileName = texts[3].c_str();
      EXPECT_EQ(steam::PersonaName(), texts[0]);
      EXPECT_EQ(steam::AvailableLanguages(), texts[1]);
      EXPECT_EQ(steam::CurrentLanguage(), texts[2]);
      EXPECT_EQ(steam::CloudFileNames(), std::vector<std::string>(3, texts[3]));
    }
    EXPECT_EQ(script_.calls.back(), "GetFileNameAndSize 2 0");
  }
  EXPECT_EQ(script_.calls.back(), "Shutdown");
  for (const std::string& ticket : {std::string(), std::string(2048, 'F')}) {
    script_.ticket = test::BytesFromHex(ticket);
    EXPECT_EQ(steam::AuthTicket(), ticket);
  }
  for (const bool isTrue : {false, true}) {
    script_.succeeds = isTrue;
    script_.steamId = isTrue ? 0x0110000112345678 : 0;
    EXPECT_EQ(steam::UserId().value_or(1), isTrue ? script_.steamId : 1);
    EXPECT_EQ((std::vector<bool>{steam::IsRunning(), steam::IsLoggedOn(), steam::RestartsApp(480),
                                 steam::CloudFileExists("a"), steam::IsCloudEnabledForAccount(),
                                 steam::IsCloudEnabledForApp()}),
              std::vector<bool>(6, isTrue));
  }
}

TEST_F(CppFace, PassesFilesAndRequestsOn) {
  // A file ends in bytes of either fill. The first buffer has 65,536 bytes.
  for (const Bytes& content : {Bytes(0x10001, 0x00), Bytes(0x10000, 0xFF)}) {
    steam::WriteUserFile("save", content);
    EXPECT_TRUE(steam::ReadUserFile("save") == content);
    EXPECT_TRUE(steam::ReadUserFile("save", content.size()) == content);
  }
  EXPECT_TRUE(steam::UserFileExists("save"));
  EXPECT_FALSE(steam::UserFileExists("none"));
  EXPECT_EQ(steam::UserFolder(), "user");
  EXPECT_EQ(steam::UserFilePath("a"), "user\\a");
  script_.number = 3;
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
}

}  // namespace
}  // namespace launcher
