#include "frame/every_export.h"

#include <array>
#include <cstdio>
#include <cstring>
#include <filesystem>

#include "launcher_dll.h"
#include "platform/win32.h"
#include "support/data_file.h"
#include "support/system.h"

namespace launcher::test {
namespace {

constexpr std::uint32_t kEndAtOnce[3] = {};  // what launch_child does, with the exit code 0
constexpr std::uint8_t kKey[] = "7E3A90C2D1F86B45";
constexpr std::uint8_t kPayload[] = "/* QTRMWO_Kd3Z_HLvN */whatever a game may hold..";
constexpr std::uint32_t kPayloadSize = 49;
constexpr std::uint32_t kContainerSize = 92;
using Container = std::array<std::uint8_t, kContainerSize>;

const Container kContainer = [] {
  Container container = {};
  file_cipher_encode(kPayload, kPayloadSize, container.data());
  return container;
}();
const std::string kClientPath = ProgramBeside("launch_child");

// The outputs of one call, with initial values that no call writes. With() writes the changed ones
// into `outcome` as text, and releases them.
struct Outputs {
  const Caller& caller;
  Outcome outcome = {};
  char* text = outcome.output;
  void* block = text;
  char* copy = text;
  char* arguments = text;
  std::int32_t count = 0;
  Container container = {1};
  Container encoded = kContainer;
  std::uint32_t size = 7;
  std::uint32_t offset = 7;
  SystemInformation record = {{7}, "old", "old"};

  Outcome With(std::int64_t result) {
    constexpr std::size_t kCapacity = sizeof outcome.output;
    outcome.result = result;
    if (container != Container{1}) std::strcpy(text, container == encoded ? "container" : "wrong");
    if (size != 7 || offset != 7) std::snprintf(text, kCapacity, "%u at %u", size, offset);
    if (record.numbers[0] == 0) {
      std::snprintf(text, kCapacity, "%.30s, %.30s", record.buildName, record.vendorName);
    }
    if (copy != text) {
      std::snprintf(text, kCapacity, "%s", copy);
      QX_UnloadStringFromMemory(&copy);
    }
    if (arguments != text) {
      std::strcpy(text, "arguments");
      LocalFree(arguments);
    }
    if (block == nullptr) std::strcpy(text, "null");
    if (block != text) QX_Deallocate(block);
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

}  // namespace

const std::vector<ExportCall> kEveryExport = {
    CALL(QX_Allocate, (&out.block, 100), {0}, {}, {{QX_OUT_OF_MEMORY, "null"}}),
    CALL(QX_LoadString, (1001, out.text, 80), {0, "https://api.orvane.example/api"}, {{QX_FAILED}},
         {{QX_OUT_OF_MEMORY}}),
    CALL(QX_LoadStringToMemory, (2001, &out.copy), {0, "Forbidden"}, {{QX_FAILED}},
         {{QX_OUT_OF_MEMORY}}),
    CALL(QX_GetLengthOfRString, (2001), {9}, {{0}}, {{0}}),
    // A field whose lookup fails is empty.
    CALL(QX_GetSystemInformation, (&out.record, 176), {0, "Release, Tervane Inc."},
         {{0, "Release, "}, {0, ", Tervane Inc."}},
         {{0, ", "}, {0, "Release, "}, {0, ", Tervane Inc."}}),
    CALL(QX_IsStaging, (), {1}, {{0}}, {{0}}),
    CALL(QX_CheckCert, ("-", "ci-api.orvane.example"), {1}, {{0}}, {{0}}),

    CALL(file_cipher_encode, (kPayload, kPayloadSize, out.container.data()), {0, "container"},
         {{QX_CIPHER_FAILED}}, {}),
    CALL(QX_Encode, (out.container.data(), kPayload, kPayloadSize), {0, "container"}, {{QX_FAILED}},
         {}),
    CALL(file_cipher_decode,
         (out.encoded.data(), kContainerSize, kKey, 16, &out.size, &out.offset, nullptr),
         {0, "49 at 40"}, {{QX_CIPHER_FAILED}}, {}),
    CALL(QX_Decode, (out.encoded.data(), kContainerSize, &out.size, &out.offset, 1),
         {0, "27 at 62"}, {{QX_FAILED}, {0, "0 at 0"}}, {{QX_FAILED}}),

    CALL(QX_CreateProcess, (kClientPath.c_str(), kEndAtOnce, sizeof kEndAtOnce), {0}, {{QX_FAILED}},
         {{QX_FAILED}}),
    CALL(QX_CommandLineToArgvA, (&out.arguments, 100000, &out.count), {0, "arguments"},
         {{QX_FAILED}}, {{QX_FAILED}}),

    // One row for each interface of Steam: the other exports that use no file fail in the same way.
    CALL(QX_SteamAPI_GetPersonaName, (out.text, 80), {0, "persona"}, {{QX_BAD_ARGUMENT, ""}, {0}},
         {}),
    // The next two read four bytes, over the beginning of "untouched".
    CALL(QX_SteamAPI_RemoteStorageFileRead, ("save", out.text, 4), {4, "rrrruched"},
         {{0, "rrrruched"}, {QX_NO_STEAM}}, {}),
    CALL(QX_SteamAPI_ReadFile, (caller.userFile.c_str(), out.text, 4), {0, "saveuched"},
         {{QX_FAILED}, {QX_NO_STEAM}, {QX_NOT_FOUND}, {QX_OPEN_FAILED}, {QX_READ_FAILED}},
         {{QX_NOT_FOUND}, {QX_OPEN_FAILED}}),
    CALL(QX_SteamAPI_WriteFile, (caller.userFile.c_str(), "save", 4), {0},
         {{QX_FAILED}, {QX_NO_STEAM}, {QX_OPEN_FAILED}, {QX_WRITE_FAILED}}, {{QX_OPEN_FAILED}}),
    CALL(QX_SteamAPI_HTTPRequest, ("http://localhost/", 3, "text/plain", kKey, 1), {0},
         {{QX_NO_STEAM}}, {{QX_OUT_OF_MEMORY}}),

    CALL(QX_EnumDisplayMode, (0, 0, out.text, 80),
         {64, "{\n\"DisplayMode\": [\n  {\"Width\": 800, \"Height\": 600, \"Hz\": 60}\n]\n}"},
         {{0}, {22, "{\n\"DisplayMode\": [\n]\n}"}}, {}),
    CALL(QX_CheckDisplayMode, (0, 0, 800, 600, 60), {0}, {{QX_BAD_ARGUMENT}}, {}),
    CALL(QX_RemoveFile, (caller.file.c_str()), {0}, {{QX_FAILED}}, {{QX_FAILED}}),
    CALL(QX_RemoveDirectory, (caller.tree.c_str(), 0), {0}, {{QX_FAILED}}, {{QX_FAILED}}),
};
#undef CALL

bool operator==(const Outcome& one, const Outcome& other) {
  return one.result == other.result && std::strcmp(one.output, other.output) == 0;
}
std::ostream& operator<<(std::ostream& out, const Outcome& outcome) {
  return out << outcome.result << ", \"" << outcome.output << '"';
}

Caller::Caller(int number)
    : file("file-" + std::to_string(number)), tree("tree" + file), userFile("user" + file) {}

void Caller::Prepare() const {
  namespace fs = std::filesystem;
  fs::create_directories(tree + "/inner");
  for (const std::string& path : {file, tree + "/inner/file"}) {
    if (!fs::exists(path)) WriteFile(path, "");
  }
  if (ReadFile(userFile) != "save") WriteFile(userFile, "save");
}

SteamScript& UseScriptedSteam() {
  static auto& script = LoadScript<SteamScript>(SCRIPTED_STEAM, "GetSteamScript");
  script = SteamScript();
  script.notesCalls = false;
  script.folder = ".";
  script.personaName = "persona";
  script.number = 4;
  script.contentLength = 2;
  script.body = {'h', 'i'};
  return script;
}

Direct3DScript& UseScriptedDirect3D() {
  static auto& script = LoadScript<Direct3DScript>(SCRIPTED_D3D9, "GetDirect3DScript");
  script = Direct3DScript();
  script.modes = {{800, 600, 60}};
  return script;
}

}  // namespace launcher::test
