#include "frame/every_export.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdio>
#include <cstring>
#include <filesystem>

#include "launcher_dll.h"
#include "platform/win32.h"
#include "support/bytes.h"
#include "support/data_file.h"
#include "support/scripted_library.h"

namespace launcher::test {
namespace {

constexpr std::uint32_t kCapacity = sizeof Outcome::output;
constexpr std::uint32_t kEndAtOnce[3] = {};  // what launch_child does, with the exit code 0
constexpr std::uint8_t kKey[] = "7E3A90C2D1F86B45";
constexpr std::uint32_t kPayloadSize = 50;
constexpr std::uint32_t kContainerSize = 92;
using Payload = std::array<std::uint8_t, kPayloadSize>;
using Container = std::array<std::uint8_t, kContainerSize>;

const Payload& KnownPayload() {
  static const Payload known = [] {
    Payload payload = {};
    const Bytes data = Pattern(kPayloadSize);
    QX_SignSignature(payload.data(), kPayloadSize, data.data(), 28);
    return payload;
  }();
  return known;
}
const Container& KnownContainer() {
  static const Container known = [] {
    Container container = {};
    file_cipher_encode(KnownPayload().data(), kPayloadSize, container.data());
    return container;
  }();
  return known;
}
const char* ClientPath() {
  static const std::string path = ProgramBeside("launch_child");
  return path.c_str();
}

Outcome Allocate(const Caller& /*caller*/) {
  Outcome outcome = {};
  void* block = outcome.output;
  outcome.result = QX_Allocate(&block, 100);
  if (block == nullptr) std::strcpy(outcome.output, "null");
  if (outcome.result == QX_SUCCEEDED) QX_Deallocate(block);
  return outcome;
}

Outcome LoadStringToMemory(const Caller& /*caller*/) {
  Outcome outcome = {};
  char* text = outcome.output;
  outcome.result = QX_LoadStringToMemory(2001, &text);
  if (text == outcome.output) return outcome;
  std::strncpy(outcome.output, text, kCapacity - 1);
  QX_UnloadStringFromMemory(&text);
  return outcome;
}

// A field whose lookup fails is empty.
Outcome GetSystemInformation(const Caller& /*caller*/) {
  SystemInformation record;
  std::memset(&record, 'x', sizeof record);
  Outcome outcome = {QX_GetSystemInformation(&record, sizeof record)};
  std::snprintf(outcome.output, kCapacity, "%.30s, %.30s", record.buildName, record.vendorName);
  return outcome;
}

Outcome CommandLineToArgv(const Caller& /*caller*/) {
  Outcome outcome = {};
  char* block = outcome.output;
  std::int32_t count = 0;
  outcome.result = QX_CommandLineToArgvA(&block, 100000, &count);
  if (block == outcome.output) return outcome;
  std::strcpy(outcome.output, std::strstr(block, "frame_tests") != nullptr ? "argv" : "no argv");
  LocalFree(block);
  return outcome;
}

// What a call in the table below uses. Without a change its outcome is "untouched".
struct Outputs {
  const Caller& caller;
  Outcome outcome = {};
  char* text = outcome.output;
  Container container = {};
  Container block = KnownContainer();
  std::uint32_t size = 7;
  std::uint32_t offset = 7;

  Outcome With(std::int64_t result) {
    outcome.result = result;
    if (container != Container()) {
      std::strcpy(text, container == KnownContainer() ? "container" : "no container");
    }
    if (size != 7 || offset != 7) std::snprintf(text, kCapacity, "%u at %u", size, offset);
    return outcome;
  }
};

#define CALL(name, arguments, ...)                                \
  ExportCall {                                                    \
    [](const Caller& caller) {                                    \
      Outputs out{caller};                                        \
      return out.With(static_cast<std::int64_t>(name arguments)); \
    },                                                            \
        #name, __VA_ARGS__                                        \
  }

// All but those that call nothing that could fail.
const std::vector<ExportCall> kEveryExport = {
    {Allocate, "QX_Allocate", {0}, {}, {{QX_OUT_OF_MEMORY, "null"}}},
    CALL(QX_LoadString, (1001, out.text, kCapacity), {0, "https://api.orvane.example/api"},
         {{QX_FAILED}}, {{QX_OUT_OF_MEMORY}}),
    {LoadStringToMemory,
     "QX_LoadStringToMemory",
     {0, "Forbidden"},
     {{QX_FAILED}},
     {{QX_OUT_OF_MEMORY}}},
    CALL(QX_GetLengthOfRString, (2001), {9}, {{0}}, {{0}}),
    {GetSystemInformation,
     "QX_GetSystemInformation",
     {0, "Release, Tervane Inc."},
     {{0, ", "}, {0, "Release, "}, {0, ", Tervane Inc."}},
     {{0, ", "}, {0, "Release, "}, {0, ", Tervane Inc."}}},
    CALL(QX_IsStaging, (), {1}, {{0}}, {{0}}),

    CALL(file_cipher_encode, (KnownPayload().data(), kPayloadSize, out.container.data()),
         {0, "container"}, {{QX_CIPHER_FAILED}}, {}),
    CALL(QX_Encode, (out.container.data(), KnownPayload().data(), kPayloadSize), {0, "container"},
         {{QX_FAILED}}, {}),
    CALL(file_cipher_decode,
         (out.block.data(), kContainerSize, kKey, 16, &out.size, &out.offset, nullptr),
         {0, "50 at 40"}, {{QX_CIPHER_FAILED}}, {}),
    CALL(QX_Decode, (out.block.data(), kContainerSize, &out.size, &out.offset, 1), {0, "28 at 62"},
         {{QX_FAILED}, {0, "0 at 0"}}, {{QX_FAILED}}),

    CALL(QX_CreateProcess, (ClientPath(), kEndAtOnce, sizeof kEndAtOnce), {0}, {{QX_FAILED}},
         {{QX_FAILED}}),
    {CommandLineToArgv, "QX_CommandLineToArgvA", {0, "argv"}, {{QX_FAILED}}, {{QX_FAILED}}},

    CALL(QX_SteamAPI_Init, (), {1}, {{0}}, {{0}}),
    CALL(QX_SteamAPI_IsSteamRunning, (), {1}, {{0}}, {{0}}),
    CALL(QX_SteamAPI_RestartAppIfNecessary, (1), {0}, {{QX_FAILED}}, {{QX_FAILED}}),
    CALL(QX_SteamAPI_IsLoggedOn, (), {1}, {{0}}, {{0}}),
    CALL(QX_SteamAPI_GetSteamIDConvertToUint64, (), {77}, {{0}}, {{0}}),
    // Without Steam the name stays as it was; one that cannot be copied becomes empty.
    CALL(QX_SteamAPI_GetPersonaName, (out.text, kCapacity), {0, "persona"},
         {{QX_BAD_ARGUMENT, ""}, {0}}, {{0}}),
    CALL(QX_SteamAPI_GetSteamAuthTicket, (out.text, kCapacity), {6, "0A0B0C"}, {{QX_FAILED}},
         {{QX_FAILED}}),
    // A list, or a file's name, that cannot be copied is an empty one, and success.
    CALL(QX_SteamAPI_GetAvailableGameLanguages, (out.text, kCapacity), {0, "english,french"},
         {{0, ""}}, {}),
    CALL(QX_SteamAPI_GetCurrentGameLanguage, (out.text, kCapacity), {0, "english"},
         {{QX_NOT_FOUND}}, {}),
    CALL(QX_SteamAPI_GetUserDataFolder, (out.text, kCapacity), {1, "."}, {{0}, {QX_NO_STEAM}},
         {{QX_NO_STEAM}}),
    CALL(QX_SteamAPI_CatUserFilePath, (out.text, kCapacity, "save"), {0, ".\\save"},
         {{QX_FAILED}, {QX_NO_STEAM}}, {{QX_NO_STEAM}}),
    CALL(QX_SteamAPI_IsFileExist, (out.caller.userFile), {1}, {{0}}, {{0}}),
    // Four bytes are read, over the beginning of "untouched".
    CALL(QX_SteamAPI_ReadFile, (out.caller.userFile, out.text, 4), {0, "saveuched"},
         {{QX_FAILED}, {QX_NO_STEAM}, {QX_NOT_FOUND}, {QX_OPEN_FAILED}, {QX_READ_FAILED}},
         {{QX_NO_STEAM}, {QX_NOT_FOUND}, {QX_OPEN_FAILED}}),
    CALL(QX_SteamAPI_WriteFile, (out.caller.userFile, "save", 4), {0},
         {{QX_FAILED}, {QX_NO_STEAM}, {QX_OPEN_FAILED}, {QX_WRITE_FAILED}},
         {{QX_NO_STEAM}, {QX_OPEN_FAILED}}),
    CALL(QX_SteamAPI_RemoteStorageFileWrite, ("save", "data", 4), {0}, {{QX_FAILED}, {QX_NO_STEAM}},
         {{QX_NO_STEAM}}),
    CALL(QX_SteamAPI_RemoteStorageFileRead, ("save", out.text, 4), {4, "rrrruched"},
         {{0, "rrrruched"}, {QX_NO_STEAM}}, {{QX_NO_STEAM}}),
    CALL(QX_SteamAPI_RemoteStorageFileDelete, ("save"), {0}, {{QX_FAILED}}, {{QX_FAILED}}),
    CALL(QX_SteamAPI_RemoteStorageFileExist, ("save"), {1}, {{0}}, {{0}}),
    CALL(QX_SteamAPI_RemoteStorageFileForget, ("save"), {1}, {{0}}, {{0}}),
    CALL(QX_SteamAPI_RemoteStorageGetFileSize, ("save"), {4}, {{0}}, {{0}}),
    CALL(QX_SteamAPI_RemoteStorageGetFileCount, (), {4}, {{0}, {QX_FAILED}}, {{QX_FAILED}}),
    CALL(QX_SteamAPI_RemoteStorageGetFileName, (0, out.text, kCapacity), {0, "cloud"},
         {{0, ""}, {QX_FAILED}}, {{QX_FAILED}}),
    CALL(QX_SteamAPI_RemoteStorageIsCloudEnabledForAccount, (), {1}, {{0}}, {{0}}),
    CALL(QX_SteamAPI_RemoteStorageIsCloudEnabledForApp, (), {1}, {{0}}, {{0}}),
    CALL(QX_SteamAPI_RemoteStorageSetCloudEnabledForApp, (1), {0}, {{1}}, {{1}}),
    CALL(QX_SteamAPI_HTTPRequest, ("http://localhost/", 3, "text/plain", kKey, 1), {0},
         {{QX_NO_STEAM}}, {{QX_NO_STEAM}, {QX_OUT_OF_MEMORY}}),

    CALL(QX_EnumDisplayMode, (0, 0, out.text, kCapacity),
         {64, "{\n\"DisplayMode\": [\n  {\"Width\": 800, \"Height\": 600, \"Hz\": 60}\n]\n}"},
         {{0}, {22, "{\n\"DisplayMode\": [\n]\n}"}}, {{0}}),
    CALL(QX_CheckDisplayMode, (0, 0, 800, 600, 60), {0}, {{QX_BAD_ARGUMENT}}, {{QX_BAD_ARGUMENT}}),
    CALL(QX_CheckCert, ("-", "ci-api.orvane.example"), {1}, {{0}}, {{0}}),
    CALL(QX_RemoveFile, (out.caller.file), {0}, {{QX_FAILED}}, {{QX_FAILED}}),
    CALL(QX_RemoveDirectory, (out.caller.tree, 0), {0}, {{QX_FAILED}}, {{QX_FAILED}}),
};
#undef CALL

}  // namespace

bool operator==(const Outcome& one, const Outcome& other) {
  return one.result == other.result && std::strcmp(one.output, other.output) == 0;
}
std::ostream& operator<<(std::ostream& out, const Outcome& outcome) {
  return out << outcome.result << ", \"" << outcome.output << '"';
}

Caller::Caller(int number) {
  std::snprintf(file, sizeof file, "file-%d", number);
  std::snprintf(tree, sizeof tree, "tree-%d", number);
  std::snprintf(userFile, sizeof userFile, "user-%d", number);
}

void Caller::Prepare() const {
  namespace fs = std::filesystem;
  const std::string inner = std::string(tree) + "/inner";
  fs::create_directories(inner);
  if (!fs::exists(inner + "/file")) WriteFile(inner + "/file", "");
  if (!fs::exists(file)) WriteFile(file, "");
  if (ReadFile(userFile) != "save") WriteFile(userFile, "save");
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
