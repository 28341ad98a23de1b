// Finds what the C++ wrapper itself can do wrong: a failure that becomes no Error or another one, a
// wrong size or number, a text that is cut, a marker that stays, an owner that releases twice or
// never. The wrapper comes after <windows.h>, since both declare LocalFree; cpp_face_alone compiles
// it without other headers.
#include "platform/owners.h"
//
#include "launch/launch_child.h"
#include "launcher_dll.hpp"
#include "steam/scripted_test.h"
#include "support/data_file.h"

namespace launcher {
namespace {

namespace face = launcher_dll;
namespace steam = launcher_dll::steam;
using face::Bytes;
using face::BytesOf;

using CppFace = test::ScriptedTest;
using Rows = std::vector<std::pair<std::function<void()>, std::string>>;

// Each call must throw an Error. Its message, with the result in place of " failed", contains the
// text.
void ExpectErrors(const Rows& rows) {
  for (const auto& [call, expected] : rows) {
    std::string found;
    try {
      call();
    } catch (const face::Error& error) {
      found = error.what();
      EXPECT_EQ(error.SystemCode() != 0, found.back() == ')');
      found.replace(found.find(" failed"), 7, ' ' + std::to_string(error.Result()));
    }
    EXPECT_PRED_FORMAT2(testing::IsSubstring, expected, found);
  }
}

TEST_F(CppFace, ReportsEachFailure) {
  static Bytes small(43);
  const std::string missing = std::system_category().message(2) + " (system error 2)";
  ExpectErrors({
      {[] { face::Encode({}); }, "encode 7: the payload"},
      {[] { face::EncodeTo(small, BytesOf("x")); }, "encode 7: the output"},
      {[] { face::ContainerSize(0x80000000); }, "encode_size 0: the payload"},
      {[] { face::Decode(small, Bytes(4)); }, "decode 7: no intact"},
      {[] { face::Decode(small, Bytes(56)); }, "decode 7: no intact"},
      {[] { face::Decode(small, Bytes(3)); }, "decode 7: a key"},
      {[] { face::Decode(small, Bytes(57)); }, "decode 7: a key"},
      {[] { face::Block(0); }, "Allocate -2: an argument"},
      {[] { face::LoadText(1); }, "ToMemory -4: not found"},
      {[] { face::Decode({}); }, "_Decode -1005: the size is not"},
      {[] { face::ReadClientData(nullptr); }, "RightAddress -1: the text"},
      {[] { face::ReadLaunchLine("x00abcdef"); }, "RightDWORD -1: the text"},
      {[] { face::RightBytes("ff0", 2); }, "RightBinary -1: the text"},
      {[] { face::ReadClientData("7ffffffc00010000"); }, "-1: the launcher's memory"},
      {[] { face::RunClient("none"); }, "Process -1: " + missing},
      {[] { face::RemoveFile("none"); }, "File -1: " + missing},
      {[] { face::RemoveFolder("none"); }, "Directory -1: " + missing},
      {[] { face::RemoveFolder(""); }, "Directory -1: the path"},
  });
  EXPECT_THROW(face::DecodeInPlace({small.data(), 0x80000000}), std::length_error);
  EXPECT_THROW(face::RunClient("a", Bytes(face::kLargestClientData + 1)), std::length_error);
}

TEST_F(CppFace, OwnsReadsAndRemoves) {
  face::Block block(1000);
  const face::Block moved = std::move(block);
  EXPECT_EQ(Bytes(moved.data(), moved.data() + moved.size()), Bytes(1000));
  EXPECT_EQ(block.size(), 0u);
  QX_Deallocate(face::Block(1).Release());
  const face::LibraryInformation information = face::ReadLibraryInformation();
  // The numbers that launcher_dll.h documents.
  EXPECT_EQ(information.numbers, (std::array<std::uint32_t, 4>{0, 2, 5, 0}));
  EXPECT_EQ(information.buildName + information.vendorName, face::LoadText(10) + face::LoadText(0));
  EXPECT_TRUE(face::SettingsLoad());
  EXPECT_TRUE(face::IsOwnServer("x", face::LoadText(5000)));
  std::filesystem::create_directory("folder");
  test::WriteFile("file", "");
  face::RemoveFile("file");
  face::EmptyFolder("folder");
  face::RemoveFolder("folder");  // throws if the line before has removed it
  EXPECT_FALSE(std::filesystem::exists("folder"));
#ifdef _WIN32
  EXPECT_NE(face::Arguments().at(0).find("steam_tests"), std::string::npos);
#endif
}

TEST_F(CppFace, MakesAndReadsContainers) {
  const Bytes data = test::Pattern(100);
  const std::string key = face::LoadText(11000), marker = face::LoadText(11001);
  EXPECT_EQ(face::Sign({}), test::BytesOf(marker));
  for (const Bytes& payload : {data, face::Sign(data)}) {
    Bytes area(200);  // with room to spare
    const auto made = face::EncodeTo(area, payload);
    const Bytes container(made.begin(), made.end());
    EXPECT_EQ(face::Encode(payload), container);
    EXPECT_EQ(face::Decode(container), payload);
    EXPECT_EQ(face::Decode(container, face::Marker::kSkip), data);
    EXPECT_EQ(face::Decode(container, BytesOf(key), marker.c_str()), data);
    const auto found = face::DecodeInPlace(made, face::Marker::kSkip)->payload;
    EXPECT_EQ(Bytes(found.begin(), found.end()), data);
  }
}

TEST_F(CppFace, HandsDataToAClient) {
  EXPECT_EQ(face::ReadLaunchLine("\"C:\\a.exe\" 00001a2b00abcdef").program, "\"C:\\a.exe\" ");
  EXPECT_EQ(face::RightBytes("xff0a", 2), (Bytes{0xFF, 0x0A}));
  EXPECT_EQ(face::RightBytes("", 0), Bytes());

  // The client uses the wrapper as well.
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
  auto* const page = static_cast<std::uint32_t*>(
      VirtualAllocEx(self.Get(), nullptr, 4096, MEM_RESERVE | MEM_COMMIT, PAGE_READWRITE));
  // The size of the container, and a container of 44 bytes.
  std::memcpy(page + 1, face::Encode(Bytes(1)).data(), 44);
  char line[17];
  std::snprintf(line, sizeof line, "%08lx%08x", static_cast<unsigned long>(GetCurrentProcessId()),
                static_cast<unsigned>(reinterpret_cast<std::uintptr_t>(page)));
  for (const auto& [size, error] : {std::pair(0xFFFFDu, "ReadClientData -1005:"),
                                    {43u, "_Decode 0: no intact"},
                                    {44u, "-1: the data are not signed"}}) {
    *page = size;
    ExpectErrors({{[&] { face::ReadClientData(line); }, error}});
  }
  VirtualFreeEx(self.Get(), page, 0, MEM_RELEASE);
}

TEST_F(CppFace, ReadsWhatSteamKnows) {
  script_.number = 3;
  {
    const steam::Session session;
    // The exports report a long text in different ways.
    for (const std::size_t length : {0u, 255u, 256u, 5000u}) {
      const std::string text(length, 'x');
      script_.personaName = script_.languages = script_.language = script_.fileName = text.c_str();
      EXPECT_EQ(steam::PersonaName(), text);
      EXPECT_EQ(steam::AvailableLanguages(), text);
      EXPECT_EQ(steam::CurrentLanguage(), text);
      EXPECT_EQ(steam::CloudFileNames(), std::vector<std::string>(3, text));
    }
    EXPECT_EQ(script_.calls.back(), "GetFileNameAndSize 2 0");
  }
  EXPECT_EQ(script_.calls.back(), "Shutdown");
  EXPECT_EQ(steam::AuthTicket(), "");
  script_.ticket.assign(1024, 0xFF);
  EXPECT_EQ(steam::AuthTicket(), std::string(2048, 'F'));
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

TEST_F(CppFace, ReadsAndWritesFiles) {
  script_.folder = ".";
  // The wrapper finds the end of a file by reading it into buffers filled with 0x00 and with 0xFF.
  // The first buffer has 65,536 bytes.
  for (const Bytes& content : {Bytes(0x10001, 0x00), Bytes(0x10000, 0xFF)}) {
    steam::WriteUserFile("save", content);
    EXPECT_TRUE(steam::ReadUserFile("save") == content);
    EXPECT_TRUE(steam::ReadUserFile("save", content.size()) == content);
  }
  EXPECT_TRUE(steam::UserFileExists("save") && !steam::UserFileExists("none"));
  EXPECT_EQ(steam::UserFolder() + ' ' + steam::UserFilePath("a"), ". .\\a");
  script_.number = 3;
  EXPECT_EQ(steam::ReadCloudFile("name"), Bytes(3, 'r'));
  script_.number = 0;
  script_.succeeds = false;
  test::WriteFile("empty", "");
  ExpectErrors({{[] { steam::ReadUserFile("a", 0); }, "_ReadFile -2:"},
                {[] { steam::ReadUserFile("a"); }, "_ReadFile -4:"},
                {[] { steam::ReadUserFile("empty"); }, "_ReadFile -1002: the file"},
                {[] { steam::ReadCloudFile("a"); }, "FileRead 0: no such"}});
  script_.terminatesFolder = false;
  ExpectErrors({{steam::UserFolder, "Folder 1: Steam gives"}});
  script_.folder = nullptr;
  ExpectErrors({{steam::UserFolder, "Folder 0: Steam gives"}});
}

TEST_F(CppFace, PassesCallsOnAndReportsMissingSteam) {
  script_.folder = ".";
  // Each call, and its error without Steam.
  const Rows rows = {
      {[] { steam::WriteCloudFile("n", BytesOf("data")); }, "FileWrite -3:"},
      {[] { steam::DeleteCloudFile("n"); }, "FileDelete -1:"},
      {[] { steam::ForgetCloudFile("n"); }, "FileForget 0:"},
      {[] { steam::SetCloudEnabledForApp(true); }, "ForApp 1: no Steam"},
      {[] { steam::RequestHttp("u", steam::HttpMethod::kPost, "t", BytesOf("b")); },
       "HTTPRequest -3:"},
      {steam::PersonaName, "PersonaName 0: no Steam"},
      {steam::AuthTicket, "AuthTicket -1: it returned -1"},
      {steam::AvailableLanguages, "GameLanguages -3: Steam"},
      {steam::CurrentLanguage, "GameLanguage -3:"},
      {steam::UserFolder, "Folder -3:"},
      {[] { steam::UserFilePath("a"); }, "UserFilePath -3:"},
      {[] { steam::WriteUserFile("a", BytesOf("x")); }, "_WriteFile -3:"},
      {[] { steam::ReadCloudFile("a"); }, "FileRead -3:"},
      {steam::CloudFileNames, "FileCount -1:"},
  };
  EXPECT_TRUE(steam::Session().IsUp());
  script_.calls.clear();
  for (const auto& [call, error] : rows) call();
  script_.calls.resize(6);
  EXPECT_EQ(script_.calls, (Calls{"FileWrite n data 4", "FileDelete n", "FileForget n",
                                  "SetCloudEnabledForApp 1", "Create 3 u", "SetBody 1 t b"}));
  script_.hasInterfaces = false;
  script_.calls.clear();
  EXPECT_FALSE(steam::Session().IsUp());  // the export forgets the earlier session
  EXPECT_EQ(script_.calls, Calls{});
  ExpectErrors(rows);
}

}  // namespace
}  // namespace launcher
