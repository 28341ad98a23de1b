// Single failures of the system, for what the failure walk does not see: which result a call has,
// the order in which things are acquired and released, and the settings file after a failure.

#include <gtest/gtest.h>
#include <sys/resource.h>

#include <algorithm>
#include <csignal>
#include <filesystem>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "frame/every_export.h"
#include "launch/launch_child.h"
#include "launcher_dll.h"
#include "platform/posix/faults.h"
#include "support/captured_output.h"
#include "support/data_file.h"
#include "support/scratch_directory.h"
#include "support/system.h"

namespace launcher {
namespace {

std::int64_t Call(const std::string& name) {
  for (const test::ExportCall& exported : test::EveryExport()) {
    if (exported.name == name) return exported.call(test::Caller(0));
  }
  throw std::invalid_argument(name);
}

// The client may end after any number of looks at it.
std::vector<std::string> OnceAround(std::vector<std::string> calls) {
  const auto isLook = [](const std::string& first, const std::string& second) {
    return first == "GetExitCodeProcess" && second == first;
  };
  calls.erase(std::remove(calls.begin(), calls.end(), "WaitForSingleObject"), calls.end());
  calls.erase(std::unique(calls.begin(), calls.end(), isLook), calls.end());
  return calls;
}

class FailurePaths : public test::ScratchTest {
 protected:
  FailurePaths() {
    test::UseScriptedSteam();
    test::Caller(0).Prepare();
    for (const auto& entry : std::filesystem::directory_iterator(".")) {
      std::filesystem::remove_all(entry.path());
    }
  }
};

// Which call fails decides what becomes of the export.
TEST_F(FailurePaths, HaveTheResultThatTheCallAsksFor) {
  struct Row {
    const char* call;
    std::int64_t result;
  };
  bool isWithoutCng = false;
  const auto check = [&](const char* name, const std::vector<Row>& rows) {
    for (const Row& row : rows) {
      SCOPED_TRACE(name + std::string(", ") + row.call);
      posix::FailCall(row.call, 1);
      if (isWithoutCng) posix::FailEveryCall("BCryptCreateHash");
      EXPECT_EQ(Call(name), row.result);
      EXPECT_TRUE(posix::StopFailing());
      EXPECT_EQ(posix::OpenObjectCount(), 0);
    }
  };
  check("QX_CreateProcess", {{"OpenProcess", QX_FAILED},
                             {"VirtualAllocEx", QX_FAILED},
                             {"WriteProcessMemory", QX_FAILED},
                             {"CreateProcessA", QX_FAILED},
                             {"BCryptCreateHash", 0},
                             {"BCryptHashData", 0},
                             {"GetExitCodeProcess", 0},
                             {"VirtualFreeEx", 0},
                             {"CloseHandle", 0}});
  const auto checkDigest = [&](const char* name, std::int64_t failure) {
    // Without CNG's hash the digest is CryptoAPI's.
    check(name, {{"BCryptCreateHash", Call(name)},
                 {"BCryptHashData", failure},
                 {"BCryptFinishHash", failure},
                 {"BCryptDestroyHash", 0}});
    isWithoutCng = true;
    check(name, {{"CryptAcquireContextA", failure},
                 {"CryptCreateHash", failure},
                 {"CryptHashData", failure},
                 {"CryptGetHashParam", failure},
                 {"CryptDestroyHash", 0},
                 {"CryptReleaseContext", 0}});
    isWithoutCng = false;
  };
  checkDigest("file_cipher_encode", QX_CIPHER_FAILED);
  checkDigest("file_cipher_decode", QX_CIPHER_FAILED);
  checkDigest("QX_Encode", QX_FAILED);
  checkDigest("QX_Decode", 100);
  check("QX_CommandLineToArgvA", {{"CommandLineToArgvW", QX_FAILED},
                                  {"WideCharToMultiByte", QX_FAILED},
                                  {"LocalAlloc", QX_FAILED}});
}

// The order in which things are taken and released; a handle goes once for each CloseHandle.
TEST_F(FailurePaths, ReleaseInOrder) {
  using Calls = std::vector<std::string>;
  const Calls digest = {"BCryptCreateHash", "BCryptHashData", "BCryptFinishHash",
                        "BCryptDestroyHash"};
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
      {"BCryptCreateHash", joined(joined(start,
                                         {"BCryptCreateHash", "CryptAcquireContextA",
                                          "CryptCreateHash", "CryptHashData", "CryptGetHashParam",
                                          "CryptDestroyHash", "CryptReleaseContext"},
                                         {}),
                                  {},
                                  {"CreateProcessA", "GetExitCodeProcess", "VirtualFreeEx",
                                   "CloseHandle", "CloseHandle", "CloseHandle"})},
  };
  for (const auto& [failing, expected] : cases) {
    posix::FailCall(failing, 1);
    posix::StartRecording();
    Call("QX_CreateProcess");
    EXPECT_EQ(OnceAround(posix::StopRecording()), expected) << failing;
    posix::StopFailing();
  }
}

// The content is on the disk before the file has its name, or a loss of power leaves an empty one.
TEST_F(FailurePaths, TheSettingsFileIsFlushedBeforeItIsMoved) {
  posix::StartRecording();
  Call("QX_IsStaging");
  const std::vector<std::string> expected = {"_fsopen", "open",  "write",
                                             "fsync",   "close", "rename"};
  EXPECT_EQ(posix::StopRecording(), expected);
}

TEST_F(FailurePaths, TheSettingsFileNeedsNoRename) {
  posix::FailCall("rename", 1);
  Call("QX_IsStaging");
  EXPECT_TRUE(posix::StopFailing());
  EXPECT_EQ(test::ReadFile("config.json"), test::ReadDataFile("default_config.json"));
  EXPECT_EQ(test::ScratchDirectory::FileCount(), 1u);
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

// Natively no client can end with the exit code of a running one. So the query of the code fails
// here, and the process object itself must be asked.
TEST_F(FailurePaths, WithoutAnExitCodeTheProcessItselfIsAsked) {
  const test::LaunchHeader header = {0, 300, 0};
  posix::FailCall("GetExitCodeProcess", 1, true);
  EXPECT_EQ(QX_CreateProcess(test::ProgramBeside("launch_child").c_str(), &header, sizeof header),
            QX_SUCCEEDED);
  EXPECT_TRUE(posix::StopFailing());
  EXPECT_TRUE(std::filesystem::exists(test::kDataFile)) << "the client has ended";
}

}  // namespace
}  // namespace launcher
