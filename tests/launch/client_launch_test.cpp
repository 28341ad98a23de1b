#include <gtest/gtest.h>

#include <chrono>
#include <cstring>
#include <string>

#include "launch/launch_child.h"
#include "launcher_dll.h"
#include "platform/owners.h"
#include "support/bytes.h"
#include "support/data_file.h"
#include "support/scratch_directory.h"
#include "support/system.h"

namespace launcher {
namespace {

namespace fs = std::filesystem;
using test::Bytes;

std::string Hex(std::uint32_t number) {
  char digits[9];
  std::snprintf(digits, sizeof digits, "%08lx", static_cast<unsigned long>(number));
  return digits;
}

class ClientLaunch : public test::ScratchTest {
 protected:
  const std::string child_ = test::ProgramBeside("launch_child");
  const Bytes data_ = test::Pattern(100000);

  // Has the child end with `exitCode`.
  ResultCode Launch(const std::string& path, std::uint32_t exitCode,
                    std::uint32_t delay = 0) const {
    const test::LaunchHeader header = {exitCode, delay, static_cast<std::uint32_t>(data_.size())};
    Bytes block(sizeof header);
    std::memcpy(block.data(), &header, sizeof header);
    block.insert(block.end(), data_.begin(), data_.end());
    return QX_CreateProcess(path.c_str(), block.data(), static_cast<std::uint32_t>(block.size()));
  }

  // The line that the child got, without the address.
  static std::string LineStart() {
    const std::string line = test::ReadFile(test::kLineFile);
    return line.substr(0, line.size() - 8);
  }

  static std::uint32_t Address() {
    std::uint32_t address = 0;
    QX_RightAddress(&address, test::ReadFile(test::kLineFile).c_str());
    return address;
  }

  static std::string LineStartFor(const std::string& path) {
    return '"' + path + "\" " + Hex(GetCurrentProcessId());
  }
};

TEST_F(ClientLaunch, LeavesTheDataForTheClient) {
  const auto start = std::chrono::steady_clock::now();
  EXPECT_EQ(Launch(child_, 0), QX_SUCCEEDED);
  EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(500));
  EXPECT_EQ(LineStart(), LineStartFor(child_));
  EXPECT_TRUE(test::BytesOf(test::ReadFile(test::kDataFile)) == data_);
}

// Longer than one look at the client's exit code.
TEST_F(ClientLaunch, WaitsForTheClient) {
  EXPECT_EQ(Launch(child_, 0, 1200), QX_SUCCEEDED);
  EXPECT_TRUE(test::BytesOf(test::ReadFile(test::kDataFile)) == data_);
}

TEST_F(ClientLaunch, TellsAnAddressOfZeroWhereThereAreNoData) {
  const char data[] = "data";
  for (const auto& [bytes, size] : {std::pair<const char*, std::uint32_t>{nullptr, 4}, {data, 0}}) {
    EXPECT_EQ(QX_CreateProcess(child_.c_str(), bytes, size), QX_SUCCEEDED);
    EXPECT_EQ(test::ReadFile(test::kLineFile), LineStartFor(child_) + "00000000");
  }
}

TEST_F(ClientLaunch, TakesThePathInQuotes) {
  fs::create_directory("the game");
  const std::string path = (fs::current_path() / "the game" / fs::path(child_).filename()).string();
  fs::copy_file(child_, path);
  fs::copy_file(LAUNCHER_LIBRARY, fs::path("the game") / fs::path(LAUNCHER_LIBRARY).filename());
  EXPECT_EQ(Launch(path, 0), QX_SUCCEEDED);
  EXPECT_EQ(LineStart(), LineStartFor(path));
}

// 259 is what a running process answers when it is asked for its exit code.
TEST_F(ClientLaunch, SucceedsWhateverTheClientsExitCode) {
  for (const std::uint32_t exitCode : {1u, 259u}) {
    EXPECT_EQ(Launch(child_, exitCode), QX_SUCCEEDED) << exitCode;
    EXPECT_TRUE(fs::remove(test::kDataFile));
  }
}

TEST_F(ClientLaunch, TakesLongPaths) {
  // The line of 2026 characters is the longest that is enciphered too, that of 2047 the longest.
  for (const std::size_t length : {2007u, 2008u, 2028u}) {
    const fs::path child(child_);
    const std::string name = '/' + child.filename().string();
    std::string path = child.parent_path().string();
    while (path.size() + name.size() + 2 <= length) path += "/.";
    path += std::string(length - path.size() - name.size(), '/') + name;
    ASSERT_EQ(path.size(), length);
    EXPECT_EQ(Launch(path, 0), QX_SUCCEEDED) << length;
    EXPECT_EQ(LineStart(), LineStartFor(path));
    EXPECT_TRUE(fs::remove(test::kLineFile));
  }
}

TEST_F(ClientLaunch, RefusesPathsThatDoNotFit) {
  std::string path = child_;
  path.insert(0, 2029 - path.size(), '/');
  EXPECT_EQ(Launch(path, 0), QX_FAILED);
  EXPECT_EQ(Launch(std::string(100000, 'p'), 0), QX_FAILED);
  EXPECT_EQ(QX_CreateProcess(nullptr, data_.data(), 4), QX_FAILED);
  EXPECT_EQ(test::ScratchDirectory::FileCount(), 0u) << "nothing was started";
}

TEST_F(ClientLaunch, FailsWhereThereIsNoProgram) {
  EXPECT_EQ(Launch(child_ + ".not_there", 0), QX_FAILED);
  EXPECT_EQ(Launch("", 0), QX_FAILED);
}

TEST_F(ClientLaunch, LeavesNoHandleAndNoBlockBehind) {
  Launch(child_, 0);  // what the system opens once is open then
  Launch(child_ + ".not_there", 0);
  const int handles = test::OpenHandleCount();
  Launch(child_, 0);
  Launch(child_ + ".not_there", 0);
  EXPECT_EQ(test::OpenHandleCount(), handles);

  // Something else may stand there by now, but not the data.
  const KernelHandle self(OpenProcess(PROCESS_VM_READ, FALSE, GetCurrentProcessId()));
  const std::uintptr_t address = Address() + sizeof(test::LaunchHeader);
  Bytes found(data_.size());
  ReadProcessMemory(self.Get(), reinterpret_cast<void*>(address), found.data(), found.size(),
                    nullptr);
  EXPECT_FALSE(found == data_);
}

}  // namespace
}  // namespace launcher
