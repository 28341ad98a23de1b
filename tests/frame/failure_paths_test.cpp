// The exact result of single failures, and the order in which the library takes, flushes and
// releases things. Finds one failure's result taken for another's, a fallback that is missing, and
// a settings file that could be lost.

#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "frame/every_export.h"
#include "launcher_dll.h"
#include "platform/posix/faults.h"
#include "support/captured_output.h"
#include "support/data_file.h"
#include "support/scratch_directory.h"

namespace launcher {
namespace {

// The calls since StartRecording. Equal calls in sequence count once, except CloseHandle. Waits are
// left out, because their number varies.
std::string RecordedCalls() {
  std::string text;
  std::string last;
  for (const std::string& call : posix::StopRecording()) {
    if (call == "WaitForSingleObject" || (call == last && call != "CloseHandle")) continue;
    text += text.empty() ? call : ' ' + call;
    last = call;
  }
  return text;
}

using FailurePaths = test::ScratchTest;

test::Outcome Call(const std::string& name) {
  for (const test::ExportCall& exported : test::kEveryExport) {
    if (exported.name == name) return exported.call(test::Caller(0));
  }
  return {};
}

#define CNG_HASH "BCryptCreateHash BCryptHashData"
#define CNG CNG_HASH " BCryptFinishHash BCryptDestroyHash"
#define NO_CNG "BCryptCreateHash CryptAcquireContextA"
#define CRYPTO_API_HASH NO_CNG " CryptCreateHash CryptHashData"
#define CRYPTO_API CRYPTO_API_HASH " CryptGetHashParam" CRYPTO_API_END
#define CRYPTO_API_END " CryptDestroyHash CryptReleaseContext"
#define DATA "OpenProcess VirtualAllocEx WriteProcessMemory "
#define CLIENT \
  " CreateProcessA GetExitCodeProcess VirtualFreeEx CloseHandle CloseHandle CloseHandle"
#define NO_CLIENT " CreateProcessA VirtualFreeEx CloseHandle"
#define NEW_FILE "open write fsync close"
#define READ_FILE "_fsopen fgetc fclose "
#define ARGV "CommandLineToArgvW LocalAlloc WideCharToMultiByte"

// If BCryptCreateHash fails, CryptoAPI computes the digest. A launch succeeds even without a
// digest.
TEST_F(FailurePaths, HaveOneResultAndOneOrder) {
  const struct {
    const char* name;
    const char* failing;
    test::Outcome outcome;
    const char* calls;
  } rows[] = {
      {"QX_CreateProcess", "OpenProcess", {-1}, "OpenProcess"},
      {"QX_CreateProcess", "VirtualAllocEx", {-1}, "OpenProcess VirtualAllocEx CloseHandle"},
      {"QX_CreateProcess", "WriteProcessMemory", {-1}, DATA "VirtualFreeEx CloseHandle"},
      {"QX_CreateProcess", "CreateProcessA", {-1}, DATA CNG NO_CLIENT},
      {"QX_CreateProcess", "BCryptCreateHash", {0}, DATA CRYPTO_API CLIENT},
      {"QX_CreateProcess", "BCryptFinishHash", {0}, DATA CNG CLIENT},
      {"QX_CreateProcess", "GetExitCodeProcess", {0}, DATA CNG CLIENT},
      {"file_cipher_encode", "BCryptCreateHash", {0, "container"}, CRYPTO_API},
      {"file_cipher_encode", "BCryptHashData", {7}, CNG_HASH " BCryptDestroyHash"},
      {"file_cipher_encode", "BCryptFinishHash", {7}, CNG},
      {"file_cipher_encode", "CryptAcquireContextA", {7}, NO_CNG},
      {"file_cipher_encode", "CryptCreateHash", {7}, NO_CNG " CryptCreateHash CryptReleaseContext"},
      {"file_cipher_encode", "CryptHashData", {7}, CRYPTO_API_HASH CRYPTO_API_END},
      {"file_cipher_encode", "CryptGetHashParam", {7}, CRYPTO_API},
      {"QX_Decode",
       "BCryptFinishHash",
       {0, "0 at 0"},
       "_fsopen " NEW_FILE " rename " READ_FILE READ_FILE CNG},
      {"QX_CommandLineToArgvA", "CommandLineToArgvW", {-1}, "CommandLineToArgvW"},
      {"QX_CommandLineToArgvA", "WideCharToMultiByte", {-1}, ARGV},
      {"QX_CommandLineToArgvA", "", {0, "arguments"}, ARGV " LocalAlloc WideCharToMultiByte"},
      {"QX_SteamAPI_ReadFile", "_stat64", {-4}, "SteamUser _stat64"},
      {"QX_SteamAPI_ReadFile", "_fsopen", {-1000}, "SteamUser _stat64 _fsopen"},
      {"QX_SteamAPI_ReadFile", "fread", {-1002}, "SteamUser _stat64 _fsopen fread fclose"},
      {"QX_SteamAPI_WriteFile", "_fsopen", {-1000}, "SteamUser _fsopen"},
      {"QX_SteamAPI_WriteFile", "fwrite", {-1001}, "SteamUser _fsopen fwrite fclose"},
      // The content is flushed before the file gets its name; otherwise a loss of power can leave
      // an empty file. If the rename fails, the file is created under its own name.
      {"QX_IsStaging", "open", {1}, "_fsopen open"},
      {"QX_IsStaging", "write", {1}, "_fsopen open write"},
      {"QX_IsStaging", "fsync", {1}, "_fsopen open write fsync"},
      {"QX_IsStaging", "close", {1}, "_fsopen " NEW_FILE " " NEW_FILE},
      {"QX_IsStaging", "rename", {1}, "_fsopen " NEW_FILE " rename " NEW_FILE},
  };
  test::UseScriptedSteam();
  for (const auto& row : rows) {
    SCOPED_TRACE(row.name + std::string(", ") + row.failing);
    std::filesystem::remove("config.json");
    test::Caller(0).Prepare();
    posix::FailCall(row.failing, 1);
    if (std::string(row.failing).rfind("Crypt", 0) == 0) posix::FailEveryCall("BCryptCreateHash");
    test::Outcome outcome = {};
    std::string calls;
    test::StandardOutputOf([&] {
      posix::StartRecording();
      outcome = Call(row.name);
      calls = RecordedCalls();
    });
    EXPECT_EQ(outcome, row.outcome);
    EXPECT_EQ(calls, row.calls);
    const std::string settings = test::ReadFile("config.json");
    EXPECT_TRUE(settings.empty() || settings == test::ReadDataFile("default_config.json"));
    EXPECT_EQ(posix::StopFailing(), *row.failing != '\0');
    EXPECT_EQ(posix::OpenObjectCount(), 0);
  }
}

TEST_F(FailurePaths, KeepTheSettingsFile) {
  const std::string settings = test::ReadDataFile("default_config.json") + "mine";
  test::WriteFile("config.json", settings);
  posix::FailCall("_fsopen", 1);
  const std::string printed = test::StandardOutputOf([] {
    EXPECT_EQ(Call("QX_LoadString"), (test::Outcome{0, "https://api.orvane.example/api"}));
  });
  EXPECT_TRUE(posix::StopFailing());
  // Printed even if the file exists.
  EXPECT_EQ(printed, test::CallLine(1001) + "Created default config: config.json\n");
  EXPECT_EQ(test::ReadFile("config.json"), settings);
  EXPECT_EQ(test::ScratchDirectory::FileCount(), 1u);
}

}  // namespace
}  // namespace launcher
