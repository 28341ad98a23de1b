// Every call of the platform and every request for memory that an export makes fails in turn, once
// alone and once with all that come after it, until the export comes through. The result is then a
// documented one, nothing stays open, and no exception gets out.

#include <gtest/gtest.h>
#include <sys/resource.h>

#include <algorithm>
#include <array>
#include <csignal>
#include <cstring>
#include <filesystem>
#include <functional>
#include <string>
#include <vector>

#include "launcher_dll.h"
#include "platform/posix/faults.h"
#include "support/bytes.h"
#include "support/captured_output.h"
#include "support/data_file.h"
#include "support/failing_memory.h"
#include "support/scratch_directory.h"

namespace launcher {
namespace {

using test::Bytes;

constexpr char kChild[] = "/bin/true";

struct Case {
  const char* name;
  std::function<std::int32_t()> call;
  std::int32_t success;
  std::vector<std::int32_t> failures;     // what else it may answer when the platform fails
  std::vector<std::int32_t> outOfMemory;  // and when memory does
};

std::int32_t LoadToMemory(StringLabel label) {
  char untouched = 0;
  char* text = &untouched;
  const ResultCode result = QX_LoadStringToMemory(label, &text);
  if (result < 0) {
    EXPECT_EQ(text, &untouched);
    return result;
  }
  return QX_UnloadStringFromMemory(&text);
}

std::int32_t Load() {
  char text[32];
  return QX_LoadString(2001, text, sizeof text);
}

std::int32_t Allocate() {
  void* block = nullptr;
  const ResultCode result = QX_Allocate(&block, 100);
  EXPECT_EQ(block == nullptr, result < 0);
  QX_Deallocate(block);
  return result;
}

std::int32_t GetSystemInformation() {
  SystemInformation record;
  return QX_GetSystemInformation(&record, sizeof record);
}

// Made ahead, since the calls below must not need memory of their own.
constexpr std::uint32_t kPayloadSize = 50;
constexpr std::uint32_t kContainerSize = 92;
Bytes SignedPayload() {
  const Bytes data = test::Pattern(kPayloadSize);
  Bytes signedData(kPayloadSize);
  QX_SignSignature(signedData.data(), kPayloadSize, data.data(),
                   kPayloadSize - QX_GetSignatureSize());
  return signedData;
}
const Bytes payload = SignedPayload();
using Block = std::array<std::uint8_t, kContainerSize>;

Block MakeContainer() {
  Block block = {};
  file_cipher_encode(payload.data(), kPayloadSize, block.data());
  return block;
}
const Block container = MakeContainer();

std::int32_t Encode() {
  Block output = {};
  const CipherCode result = file_cipher_encode(payload.data(), kPayloadSize, output.data());
  EXPECT_EQ(output == Block{}, result != 0);
  return result;
}

std::int32_t EncodeForLauncher() {
  Block output = {};
  return QX_Encode(output.data(), payload.data(), kPayloadSize);
}

std::int32_t Decode() {
  constexpr char kKey[] = "7E3A90C2D1F86B45";
  Block block = container;
  std::uint32_t size = 7;
  std::uint32_t offset = 7;
  const CipherCode result =
      file_cipher_decode(block.data(), kContainerSize, reinterpret_cast<const std::uint8_t*>(kKey),
                         16, &size, &offset, nullptr);
  EXPECT_EQ(size == 7 && offset == 7, result != 0);
  return result;
}

// 0 for a payload that was delivered without its marker, 1 for a block that was found to be none.
std::int32_t DecodeForClient() {
  Block block = container;
  std::uint32_t size = 0;
  std::uint32_t offset = 0;
  const ResultCode result = QX_Decode(block.data(), kContainerSize, &size, &offset, 1);
  if (result != 0) return result;
  return offset == 0 ? 1 : (offset == 62 ? 0 : 2);
}

std::int32_t StartClient() { return QX_CreateProcess(kChild, "data", 4); }

std::int32_t GetArguments() {
  char untouched = 0;
  char* block = &untouched;
  std::int32_t count = 0;
  const ResultCode result = QX_CommandLineToArgvA(&block, 100000, &count);
  if (result < 0) {
    EXPECT_EQ(block, &untouched);
    return result;
  }
  const bool isWhole = std::strstr(block, "unit_tests") != nullptr && count > 0;
  LocalFree(block);
  return isWhole ? result : 1;
}

std::vector<Case> Cases() {
  const auto load = [] { return LoadToMemory(1001); };
  const auto loadNothing = [] { return LoadToMemory(1); };
  const auto getLength = [] { return static_cast<std::int32_t>(QX_GetLengthOfRString(2001)); };
  return {
      {"QX_Allocate", Allocate, 0, {}, {QX_OUT_OF_MEMORY}},
      {"QX_LoadStringToMemory", load, 0, {}, {QX_OUT_OF_MEMORY}},
      {"QX_LoadStringToMemory, no text", loadNothing, QX_NOT_FOUND, {}, {QX_OUT_OF_MEMORY}},
      {"QX_LoadString", Load, 0, {}, {QX_OUT_OF_MEMORY}},
      {"QX_GetLengthOfRString", getLength, 9, {}, {0}},
      {"QX_GetSystemInformation", GetSystemInformation, 0, {}, {}},
      {"QX_IsStaging", QX_IsStaging, 1, {}, {0}},
      {"file_cipher_encode", Encode, 0, {QX_CIPHER_FAILED}, {}},
      {"file_cipher_decode", Decode, 0, {QX_CIPHER_FAILED}, {}},
      {"QX_Encode", EncodeForLauncher, 0, {QX_FAILED}, {}},
      {"QX_Decode", DecodeForClient, 0, {1}, {QX_FAILED}},
      {"QX_CreateProcess", StartClient, 0, {QX_FAILED}, {QX_FAILED}},
      {"QX_CommandLineToArgvA", GetArguments, 0, {QX_FAILED}, {QX_FAILED}},
  };
}

class FailurePaths : public test::ScratchTest {
 protected:
  // Makes what `failNth` fails fail at the first use, then at the second, and so on.
  static void Walk(const Case& walked, const std::vector<std::int32_t>& failures, bool andAllAfter,
                   const std::function<void(int)>& failNth, const std::function<bool()>& stop) {
    for (int n = 1; n < 1000; ++n) {
      SCOPED_TRACE(walked.name + std::string(", failure ") + std::to_string(n));
      std::int32_t result = 0;
      bool hasFailed = false;
      test::StandardErrorOf([&] {
        test::StandardOutputOf([&] {
          failNth(n);
          result = walked.call();
          hasFailed = stop();
        });
      });
      EXPECT_EQ(posix::OpenObjectCount(), 0);
      if (!hasFailed) {
        EXPECT_EQ(result, walked.success);
        return;
      }
      const bool isDocumented =
          result == walked.success || std::count(failures.begin(), failures.end(), result) != 0;
      EXPECT_TRUE(isDocumented) << "the result " << result;
      // Where everything fails a temporary file cannot be removed either.
      const std::size_t settingsCount = std::filesystem::exists("config.json") ? 1 : 0;
      EXPECT_TRUE(andAllAfter || test::ScratchDirectory::FileCount() == settingsCount);
    }
    FAIL() << "never came through";
  }
};

TEST_F(FailurePaths, OfThePlatform) {
  for (const Case& walked : Cases()) {
    for (const bool andAllAfter : {false, true}) {
      std::remove("config.json");
      Walk(
          walked, walked.failures, andAllAfter,
          [=](int n) { posix::FailCall(nullptr, n, andAllAfter); }, posix::StopFailing);
    }
  }
}

TEST_F(FailurePaths, OfMemory) {
  for (const bool hasSettingsFile : {false, true}) {
    for (const Case& walked : Cases()) {
      for (const bool andAllAfter : {false, true}) {
        std::remove("config.json");
        if (hasSettingsFile) QX_IsStaging();
        Walk(
            walked, walked.outOfMemory, andAllAfter,
            [=](int n) { test::FailAllocation(n, andAllAfter); }, test::StopFailingAllocations);
      }
    }
  }
}

// Which call fails decides what becomes of the export.
TEST_F(FailurePaths, HaveTheResultThatTheCallAsksFor) {
  struct Row {
    const char* call;
    std::int32_t result;
  };
  const auto check = [](const char* name, const std::function<std::int32_t()>& call,
                        const std::vector<Row>& rows) {
    for (const Row& row : rows) {
      SCOPED_TRACE(name + std::string(", ") + row.call);
      posix::FailCall(row.call, 1);
      EXPECT_EQ(call(), row.result);
      EXPECT_TRUE(posix::StopFailing());
      EXPECT_EQ(posix::OpenObjectCount(), 0);
    }
  };
  check("QX_CreateProcess", StartClient,
        {{"OpenProcess", QX_FAILED},
         {"VirtualAllocEx", QX_FAILED},
         {"WriteProcessMemory", QX_FAILED},
         {"CreateProcessA", QX_FAILED},
         {"CryptAcquireContextA", 0},
         {"CryptHashData", 0},
         {"GetExitCodeProcess", 0},
         {"VirtualFreeEx", 0},
         {"CloseHandle", 0}});
  const auto checkDigest = [&](const char* name, const std::function<std::int32_t()>& call,
                               std::int32_t failure) {
    check(name, call,
          {{"CryptAcquireContextA", failure},
           {"CryptCreateHash", failure},
           {"CryptHashData", failure},
           {"CryptGetHashParam", failure},
           {"CryptDestroyHash", 0},
           {"CryptReleaseContext", 0}});
  };
  checkDigest("file_cipher_encode", Encode, QX_CIPHER_FAILED);
  checkDigest("file_cipher_decode", Decode, QX_CIPHER_FAILED);
  checkDigest("QX_Encode", EncodeForLauncher, QX_FAILED);
  checkDigest("QX_Decode", DecodeForClient, 1);
  check("QX_CommandLineToArgvA", GetArguments,
        {{"CommandLineToArgvW", QX_FAILED},
         {"WideCharToMultiByte", QX_FAILED},
         {"LocalAlloc", QX_FAILED}});
}

// The order in which things are taken and released; a handle goes once for each CloseHandle.
TEST_F(FailurePaths, ReleaseInOrder) {
  using Calls = std::vector<std::string>;
  const Calls digest = {"CryptAcquireContextA", "CryptCreateHash",  "CryptHashData",
                        "CryptGetHashParam",    "CryptDestroyHash", "CryptReleaseContext"};
  const auto joined = [&](Calls head, const Calls& middle, const Calls& tail) {
    head.insert(head.end(), middle.begin(), middle.end());
    head.insert(head.end(), tail.begin(), tail.end());
    return head;
  };
  const Calls start = {"OpenProcess", "VirtualAllocEx", "WriteProcessMemory"};
  const std::pair<const char*, Calls> cases[] = {
      {"none", joined(start, digest,
                      {"CreateProcessA", "GetExitCodeProcess", "VirtualFreeEx", "CloseHandle",
                       "CloseHandle", "CloseHandle"})},
      {"OpenProcess", {"OpenProcess"}},
      {"VirtualAllocEx", {"OpenProcess", "VirtualAllocEx", "CloseHandle"}},
      {"WriteProcessMemory", joined(start, {}, {"VirtualFreeEx", "CloseHandle"})},
      {"CreateProcessA", joined(start, digest, {"CreateProcessA", "VirtualFreeEx", "CloseHandle"})},
  };
  for (const auto& [failing, expected] : cases) {
    posix::FailCall(failing, 1);
    posix::StartRecording();
    StartClient();
    EXPECT_EQ(posix::StopRecording(), expected) << failing;
    posix::StopFailing();
  }
}

TEST_F(FailurePaths, OfAFullDisk) {
  const auto ignored = std::signal(SIGXFSZ, SIG_IGN);
  rlimit before = {};
  getrlimit(RLIMIT_FSIZE, &before);
  const rlimit small = {100, before.rlim_max};
  setrlimit(RLIMIT_FSIZE, &small);
  std::int32_t isStaging = 0;
  test::StandardOutputOf([&] { isStaging = QX_IsStaging(); });
  setrlimit(RLIMIT_FSIZE, &before);
  std::signal(SIGXFSZ, ignored);
  EXPECT_EQ(isStaging, 1) << "the defaults serve";
  EXPECT_EQ(test::ScratchDirectory::FileCount(), 0u) << "and half a file is none";
}

TEST_F(FailurePaths, NeverCostTheSettingsFile) {
  const std::string settings = test::ReadDataFile("default_config.json") + "mine";
  test::WriteFile("config.json", settings);
  posix::FailCall("_fsopen", 1);
  char text[64] = "";
  const std::string printed = test::StandardOutputOf(
      [&] { EXPECT_EQ(QX_LoadString(1001, text, sizeof text), QX_SUCCEEDED); });
  EXPECT_TRUE(posix::StopFailing());
  EXPECT_EQ(printed, test::CallLine(1001) + "Created default config: config.json\n");
  EXPECT_STREQ(text, "https://api.orvane.example/api");
  EXPECT_EQ(test::ReadFile("config.json"), settings);
  EXPECT_EQ(test::ScratchDirectory::FileCount(), 1u);
}

// A client that ends with the code of a running one cannot be made natively, so the exit code is
// not to be had here: the process object must be asked.
TEST_F(FailurePaths, WithoutAnExitCodeTheProcessItselfIsAsked) {
  posix::FailCall("GetExitCodeProcess", 1, true);
  EXPECT_EQ(StartClient(), QX_SUCCEEDED);
  EXPECT_TRUE(posix::StopFailing());
}

}  // namespace
}  // namespace launcher
