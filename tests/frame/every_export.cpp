#include "frame/every_export.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <string>

#include "launcher_dll.h"
#include "platform/win32.h"
#include "support/bytes.h"
#include "support/data_file.h"
#include "support/scripted_library.h"

namespace launcher::test {
namespace {

constexpr char kKey[] = "7E3A90C2D1F86B45";
constexpr std::uint32_t kPayloadSize = 50;
constexpr std::uint32_t kContainerSize = 92;
using Payload = std::array<std::uint8_t, kPayloadSize>;
using Container = std::array<std::uint8_t, kContainerSize>;

Payload SignedPayload() {
  Payload payload = {};
  const Bytes data = Pattern(kPayloadSize);
  QX_SignSignature(payload.data(), kPayloadSize, data.data(), kPayloadSize - QX_GetSignatureSize());
  return payload;
}

Container MakeContainer(const Payload& payload) {
  Container container = {};
  file_cipher_encode(payload.data(), kPayloadSize, container.data());
  return container;
}

const Payload& KnownPayload() {
  static const Payload payload = SignedPayload();
  return payload;
}
const Container& KnownContainer() {
  static const Container container = MakeContainer(KnownPayload());
  return container;
}
const char* ClientPath() {
  static const std::string path = ProgramBeside("launch_child");
  return path.c_str();
}

// A result that goes with the output `text`: `expected` where it is `success`, else as before.
template <std::size_t kSize>
std::int64_t WithText(std::int64_t result, std::int64_t success, const char (&text)[kSize],
                      const char* expected, const char* otherwise) {
  EXPECT_STREQ(text, result == success ? expected : otherwise);
  return result;
}

std::int64_t Allocate(const Caller& /*caller*/) {
  void* block = nullptr;
  const ResultCode result = QX_Allocate(&block, 100);
  EXPECT_EQ(block == nullptr, result != QX_SUCCEEDED);
  QX_Deallocate(block);
  return result;
}

std::int64_t LoadString(const Caller& /*caller*/) {
  char text[64] = "before";
  return WithText(QX_LoadString(1001, text, sizeof text), 0, text, "https://api.orvane.example/api",
                  "before");
}

std::int64_t LoadStringToMemory(const Caller& /*caller*/) {
  char untouched = 0;
  char* text = &untouched;
  const ResultCode result = QX_LoadStringToMemory(2001, &text);
  if (result != QX_SUCCEEDED) {
    EXPECT_EQ(text, &untouched);
    return result;
  }
  EXPECT_STREQ(text, "Forbidden");
  return QX_UnloadStringFromMemory(&text);
}

std::int64_t GetSystemInformation(const Caller& /*caller*/) {
  SystemInformation record;
  std::memset(&record, 'x', sizeof record);
  const ResultCode result = QX_GetSystemInformation(&record, sizeof record);
  EXPECT_EQ(record.numbers[2], 5u);
  // A field whose lookup fails is empty.
  EXPECT_TRUE(*record.buildName == '\0' || std::strcmp(record.buildName, "Release") == 0);
  EXPECT_TRUE(*record.vendorName == '\0' || std::strcmp(record.vendorName, "Tervane Inc.") == 0);
  return result;
}

std::int64_t EncodeFile(const Caller& /*caller*/) {
  Container output = {};
  const CipherCode result = file_cipher_encode(KnownPayload().data(), kPayloadSize, output.data());
  EXPECT_EQ(output, result == 0 ? KnownContainer() : Container());
  return result;
}

std::int64_t Encode(const Caller& /*caller*/) {
  Container output = {};
  const ResultCode result = QX_Encode(output.data(), KnownPayload().data(), kPayloadSize);
  EXPECT_EQ(output, result == 0 ? KnownContainer() : Container());
  return result;
}

std::int64_t DecodeFile(const Caller& /*caller*/) {
  Container block = KnownContainer();
  std::uint32_t size = 7;
  std::uint32_t offset = 7;
  const CipherCode result =
      file_cipher_decode(block.data(), kContainerSize, reinterpret_cast<const std::uint8_t*>(kKey),
                         16, &size, &offset, nullptr);
  EXPECT_EQ(size, result == 0 ? kPayloadSize : 7);
  EXPECT_EQ(offset, result == 0 ? 40u : 7u);
  return result;
}

// The result, or kOtherOutput where the block was found to be no container.
std::int64_t Decode(const Caller& /*caller*/) {
  Container block = KnownContainer();
  std::uint32_t size = 7;
  std::uint32_t offset = 7;
  const ResultCode result = QX_Decode(block.data(), kContainerSize, &size, &offset, 1);
  const bool isContainer = result == 0 && offset != 0;
  EXPECT_EQ(size, isContainer ? kPayloadSize - 22 : (result == 0 ? 0 : 7));
  EXPECT_EQ(offset, isContainer ? 62u : (result == 0 ? 0u : 7u));
  return result == 0 && !isContainer ? kOtherOutput : result;
}

std::int64_t SignSignature(const Caller& /*caller*/) {
  std::uint8_t destination[30] = {};
  return QX_SignSignature(destination, sizeof destination, KnownPayload().data(), 8);
}

std::int64_t CreateProcess(const Caller& /*caller*/) {
  constexpr std::uint32_t kHeader[3] = {};  // ends at once, with 0
  return QX_CreateProcess(ClientPath(), kHeader, sizeof kHeader);
}

std::int64_t RightDword(const Caller& /*caller*/) {
  char line[] = "client 0000abcd";
  std::uint32_t value = 0;
  const ResultCode result = QX_RightDWORD(&value, line);
  EXPECT_EQ(value, 0xABCDu);
  return result;
}

std::int64_t RightBinary(const Caller& /*caller*/) {
  std::uint8_t bytes[2] = {};
  return QX_RightBinary(bytes, sizeof bytes, "client abcd", 2);
}

std::int64_t RightAddress(const Caller& /*caller*/) {
  std::uint32_t address = 0;
  return QX_RightAddress(&address, "client 0000abcd");
}

std::int64_t CommandLineToArgv(const Caller& /*caller*/) {
  char untouched = 0;
  char* block = &untouched;
  std::int32_t count = 0;
  const ResultCode result = QX_CommandLineToArgvA(&block, 100000, &count);
  if (result != QX_SUCCEEDED) {
    EXPECT_EQ(block, &untouched);
    return result;
  }
  EXPECT_NE(std::strstr(block, "frame_tests"), nullptr);
  LocalFree(block);
  return result;
}

std::int64_t GetPersonaName(const Caller& /*caller*/) {
  char text[16] = "before";
  const ResultCode result = QX_SteamAPI_GetPersonaName(text, sizeof text);
  // Without Steam the name stays as it was, and a failed copy leaves an empty one.
  if (result == 0 && std::strcmp(text, "before") == 0) return kOtherOutput;
  return WithText(result, 0, text, "persona", "");
}

std::int64_t GetAuthTicket(const Caller& /*caller*/) {
  char text[16] = "before";
  return WithText(QX_SteamAPI_GetSteamAuthTicket(text, sizeof text), 6, text, "0A0B0C", "before");
}

// A list that cannot be copied is an empty one, and success.
std::int64_t GetAvailableLanguages(const Caller& /*caller*/) {
  char text[32] = "before";
  const ResultCode result = QX_SteamAPI_GetAvailableGameLanguages(text, sizeof text);
  if (result == 0 && *text == '\0') return kOtherOutput;
  return WithText(result, 0, text, "english,french", "before");
}

std::int64_t GetCurrentLanguage(const Caller& /*caller*/) {
  char text[32] = "before";
  return WithText(QX_SteamAPI_GetCurrentGameLanguage(text, sizeof text), 0, text, "english",
                  "before");
}

std::int64_t GetUserDataFolder(const Caller& /*caller*/) {
  char text[32] = "before";
  return WithText(QX_SteamAPI_GetUserDataFolder(text, sizeof text), 1, text, ".", "before");
}

std::int64_t CatUserFilePath(const Caller& /*caller*/) {
  char text[32] = "before";
  return WithText(QX_SteamAPI_CatUserFilePath(text, sizeof text, "save"), 0, text, ".\\save",
                  "before");
}

std::int64_t ReadUserFile(const Caller& caller) {
  char text[5] = {};
  const ResultCode result = QX_SteamAPI_ReadFile(caller.userFile, text, 4);
  return WithText(result, 0, text, "save", "");
}

std::int64_t WriteUserFile(const Caller& caller) {
  return QX_SteamAPI_WriteFile(caller.userFile, "save", 4);
}

// Steam's own result, and what it wrote.
std::int64_t ReadCloudFile(const Caller& /*caller*/) {
  char text[8] = {};
  return QX_SteamAPI_RemoteStorageFileRead("save", text, 4);
}

// A name that cannot be copied is an empty one, and success.
std::int64_t GetCloudFileName(const Caller& /*caller*/) {
  char text[16] = "before";
  const ResultCode result = QX_SteamAPI_RemoteStorageGetFileName(0, text, sizeof text);
  if (result == 0 && *text == '\0') return kOtherOutput;
  return WithText(result, 0, text, "cloud", "before");
}

std::int64_t RequestByHttp(const Caller& /*caller*/) {
  constexpr std::uint8_t kBody[] = {'x'};
  return QX_SteamAPI_HTTPRequest("http://localhost/", 3, "text/plain", kBody, sizeof kBody);
}

// The result, kOtherOutput for a list without the mode.
std::int64_t EnumDisplayMode(const Caller& /*caller*/) {
  char text[128] = "";
  const std::uint32_t length = QX_EnumDisplayMode(0, 0, text, sizeof text);
  EXPECT_EQ(length, std::strlen(text));
  return length != 0 && std::strstr(text, "800") == nullptr ? kOtherOutput : std::int64_t{length};
}

std::int64_t ResetIllegalValue(const Caller& /*caller*/) {
  return QX_ResetIllegalValue() == QX_GetIllegalValue() ? 1 : 0;
}

// For exports that need nothing but arguments.
#define CALL(expression)                     \
  [](const Caller& caller) -> std::int64_t { \
    static_cast<void>(caller);               \
    return expression;                       \
  }

const std::vector<ExportCall> kEveryExport = {
    {"QX_IsFailed", CALL(QX_IsFailed(-1)), 1, {}, {}},
    {"QX_IsSucceeded", CALL(QX_IsSucceeded(0)), 1, {}, {}},
    {"QX_Allocate", Allocate, 0, {}, {QX_OUT_OF_MEMORY}},
    {"QX_Deallocate", CALL(QX_Deallocate(nullptr)), 0, {}, {}},
    {"QX_LoadString", LoadString, 0, {QX_FAILED}, {QX_OUT_OF_MEMORY}},
    {"QX_LoadStringToMemory", LoadStringToMemory, 0, {QX_FAILED}, {QX_OUT_OF_MEMORY}},
    {"QX_UnloadStringFromMemory",
     CALL([] {
       char* text = nullptr;
       return QX_UnloadStringFromMemory(&text);
     }()),
     0,
     {},
     {}},
    {"QX_GetLengthOfRString", CALL(QX_GetLengthOfRString(2001)), 9, {0}, {0}},
    {"QX_GetSystemInformation", GetSystemInformation, 0, {}, {}},
    {"QX_IsStaging", CALL(QX_IsStaging()), 1, {0}, {0}},

    {"file_cipher_get_encode_size", CALL(file_cipher_get_encode_size(50)), 92, {}, {}},
    {"file_cipher_encode", EncodeFile, 0, {QX_CIPHER_FAILED}, {}},
    {"file_cipher_decode", DecodeFile, 0, {QX_CIPHER_FAILED}, {}},
    {"QX_GetEncodeDataSize", CALL(QX_GetEncodeDataSize(50)), 92, {}, {}},
    {"QX_Encode", Encode, 0, {QX_FAILED}, {}},
    {"QX_Decode", Decode, 0, {QX_FAILED, kOtherOutput}, {QX_FAILED}},
    {"QX_GetSignatureSize", CALL(QX_GetSignatureSize()), 22, {}, {}},
    {"QX_SignSignature", SignSignature, 1, {}, {}},

    {"QX_CreateProcess", CreateProcess, 0, {QX_FAILED}, {QX_FAILED}},
    {"QX_RightDWORD", RightDword, 0, {}, {}},
    {"QX_RightBinary", RightBinary, 0, {}, {}},
    {"QX_RightAddress", RightAddress, 0, {}, {}},
    {"QX_CommandLineToArgvA", CommandLineToArgv, 0, {QX_FAILED}, {QX_FAILED}},

    {"QX_SteamAPI_Init", CALL(QX_SteamAPI_Init()), 1, {0}, {0}, false, false},
    {"QX_SteamAPI_Shutdown", CALL((QX_SteamAPI_Shutdown(), 0)), 0, {}, {}},
    {"QX_SteamAPI_IsSteamRunning", CALL(QX_SteamAPI_IsSteamRunning()), 1, {0}, {0}},
    {"QX_SteamAPI_RestartAppIfNecessary",
     CALL(QX_SteamAPI_RestartAppIfNecessary(1)),
     0,
     {QX_FAILED},
     {QX_FAILED}},
    {"QX_SteamAPI_IsLoggedOn", CALL(QX_SteamAPI_IsLoggedOn()), 1, {0}, {0}},
    {"QX_SteamAPI_GetSteamIDConvertToUint64",
     CALL(static_cast<std::int64_t>(QX_SteamAPI_GetSteamIDConvertToUint64())),
     77,
     {0},
     {0}},
    {"QX_SteamAPI_GetPersonaName",
     GetPersonaName,
     0,
     {QX_BAD_ARGUMENT, kOtherOutput},
     {kOtherOutput}},
    {"QX_SteamAPI_GetSteamAuthTicket", GetAuthTicket, 6, {QX_FAILED}, {QX_FAILED}},
    {"QX_SteamAPI_GetAvailableGameLanguages", GetAvailableLanguages, 0, {kOtherOutput}, {}},
    {"QX_SteamAPI_GetCurrentGameLanguage", GetCurrentLanguage, 0, {QX_NOT_FOUND}, {}},
    {"QX_SteamAPI_GetUserDataFolder", GetUserDataFolder, 1, {0, QX_NO_STEAM}, {QX_NO_STEAM}},
    {"QX_SteamAPI_CatUserFilePath", CatUserFilePath, 0, {QX_FAILED, QX_NO_STEAM}, {QX_NO_STEAM}},
    {"QX_SteamAPI_IsFileExist", CALL(QX_SteamAPI_IsFileExist(caller.userFile)), 1, {0}, {0}, true},
    {"QX_SteamAPI_ReadFile",
     ReadUserFile,
     0,
     {QX_FAILED, QX_NO_STEAM, QX_NOT_FOUND, QX_OPEN_FAILED, QX_READ_FAILED},
     {QX_NO_STEAM, QX_NOT_FOUND, QX_OPEN_FAILED},
     true},
    {"QX_SteamAPI_WriteFile",
     WriteUserFile,
     0,
     {QX_FAILED, QX_NO_STEAM, QX_OPEN_FAILED, QX_WRITE_FAILED},
     {QX_NO_STEAM, QX_OPEN_FAILED},
     true},
    {"QX_SteamAPI_RemoteStorageFileWrite",
     CALL(QX_SteamAPI_RemoteStorageFileWrite("save", "data", 4)),
     0,
     {QX_FAILED, QX_NO_STEAM},
     {QX_NO_STEAM}},
    {"QX_SteamAPI_RemoteStorageFileRead", ReadCloudFile, 4, {0, QX_NO_STEAM}, {QX_NO_STEAM}},
    {"QX_SteamAPI_RemoteStorageFileDelete",
     CALL(QX_SteamAPI_RemoteStorageFileDelete("save")),
     0,
     {QX_FAILED},
     {QX_FAILED}},
    {"QX_SteamAPI_RemoteStorageFileExist",
     CALL(QX_SteamAPI_RemoteStorageFileExist("save")),
     1,
     {0},
     {0}},
    {"QX_SteamAPI_RemoteStorageFileForget",
     CALL(QX_SteamAPI_RemoteStorageFileForget("save")),
     1,
     {0},
     {0}},
    {"QX_SteamAPI_RemoteStorageGetFileSize",
     CALL(QX_SteamAPI_RemoteStorageGetFileSize("save")),
     4,
     {0},
     {0}},
    {"QX_SteamAPI_RemoteStorageGetFileCount",
     CALL(QX_SteamAPI_RemoteStorageGetFileCount()),
     4,
     {0, QX_FAILED},
     {QX_FAILED}},
    {"QX_SteamAPI_RemoteStorageGetFileName",
     GetCloudFileName,
     0,
     {kOtherOutput, QX_FAILED},
     {QX_FAILED}},
    {"QX_SteamAPI_RemoteStorageIsCloudEnabledForAccount",
     CALL(QX_SteamAPI_RemoteStorageIsCloudEnabledForAccount()),
     1,
     {0},
     {0}},
    {"QX_SteamAPI_RemoteStorageIsCloudEnabledForApp",
     CALL(QX_SteamAPI_RemoteStorageIsCloudEnabledForApp()),
     1,
     {0},
     {0}},
    {"QX_SteamAPI_RemoteStorageSetCloudEnabledForApp",
     CALL(QX_SteamAPI_RemoteStorageSetCloudEnabledForApp(1)),
     0,
     {1},
     {1}},
    {"QX_SteamAPI_HTTPRequest", RequestByHttp, 0, {QX_NO_STEAM}, {QX_NO_STEAM, QX_OUT_OF_MEMORY}},

    {"QX_EnumDisplayMode", EnumDisplayMode, 64, {0, kOtherOutput}, {0}},
    {"QX_CheckDisplayMode",
     CALL(QX_CheckDisplayMode(0, 0, 800, 600, 60)),
     0,
     {QX_BAD_ARGUMENT},
     {QX_BAD_ARGUMENT}},
    {"QX_CheckCert", CALL(QX_CheckCert("-", "ci-api.orvane.example")), 1, {0}, {0}},
    {"QX_RemoveFile", CALL(QX_RemoveFile(caller.file)), 0, {QX_FAILED}, {QX_FAILED}, true},
    {"QX_RemoveDirectory",
     CALL(QX_RemoveDirectory(caller.tree, 0)),
     0,
     {QX_FAILED},
     {QX_FAILED},
     true},

    {"QX_ExistClient", CALL(QX_ExistClient()), 1, {}, {}},
    {"QX_Unzip", CALL(QX_Unzip(1, 1, 1, 1)), 0, {}, {}},
    {"QX_SteamAPI_GetMirvelURL", CALL(QX_SteamAPI_GetMirvelURL(1, 1, 1)), 0, {}, {}},
    {"QX_GetIllegalValue", CALL((QX_GetIllegalValue(), 0)), 0, {}, {}, false, false},
    {"QX_ResetIllegalValue", ResetIllegalValue, 1, {}, {}, false, false},
};
#undef CALL

}  // namespace

Caller::Caller(int number) {
  std::snprintf(file, sizeof file, "file-%d", number);
  std::snprintf(tree, sizeof tree, "tree-%d", number);
  std::snprintf(userFile, sizeof userFile, "user-%d", number);
}

void Caller::Prepare() const {
  namespace fs = std::filesystem;
  const std::string inner = std::string(tree) + "/inner";
  if (!fs::exists(inner + "/file")) {
    fs::create_directories(inner);
    WriteFile(inner + "/file", "");
  }
  if (!fs::exists(file)) WriteFile(file, "");
  if (!fs::exists(userFile) || fs::file_size(userFile) != 4) WriteFile(userFile, "save");
  // Made at the first use, and so not while memory fails.
  KnownContainer();
  ClientPath();
}

const std::vector<ExportCall>& EveryExport() { return kEveryExport; }

SteamScript& UseScriptedSteam() {
  static auto& script = LoadScript<SteamScript>(SCRIPTED_STEAM, "GetSteamScript");
  script = SteamScript();
  script.notesCalls = false;
  script.steamId = 77;
  script.folder = ".";
  script.ticket = {10, 11, 12};
  script.personaName = "persona";
  script.language = "english";
  script.languages = "english,french";
  script.fileName = "cloud";
  script.number = 4;
  script.contentLength = 2;
  script.body = {'h', 'i'};
  EXPECT_EQ(QX_SteamAPI_Init(), 1);
  return script;
}

Direct3DScript& UseScriptedDirect3D() {
  static auto& script = LoadScript<Direct3DScript>(SCRIPTED_D3D9, "GetDirect3DScript");
  script = Direct3DScript();
  script.modes = {{800, 600, 60}};
  return script;
}

}  // namespace launcher::test
