// For faults of QX_CreateProcess that a real client shows: data that it cannot read, or not to its
// end, a path that is split, cut or refused, an exit code that is mistaken for another state.

#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "launch/launch_child.h"
#include "launcher_dll.h"
#include "platform/win32.h"
#include "support/bytes.h"
#include "support/data_file.h"
#include "support/scratch_directory.h"
#include "support/system.h"

namespace launcher {
namespace {

namespace fs = std::filesystem;
using test::Bytes;

class ClientLaunch : public test::ScratchTest {
 protected:
  // Has the child end with `exitCode`, after `delay`.
  ResultCode Launch(const std::string& path, std::uint32_t exitCode, std::uint32_t delay) const {
    const test::LaunchHeader header = {exitCode, delay, static_cast<std::uint32_t>(data_.size())};
    Bytes block(sizeof header);
    std::memcpy(block.data(), &header, sizeof header);
    block.insert(block.end(), data_.begin(), data_.end());
    return QX_CreateProcess(path.c_str(), block.data(), static_cast<std::uint32_t>(block.size()));
  }

  // The child of this path must have got the line, and the data if there are any.
  void ExpectClient(const std::string& path, bool hasData) const {
    SCOPED_TRACE(path);
    char digits[9];
    std::snprintf(digits, sizeof digits, "%08lx",
                  static_cast<unsigned long>(GetCurrentProcessId()));
    std::string line = test::ReadFile(test::kLineFile);
    EXPECT_EQ(line.substr(line.size() - 8) == "00000000", !hasData);
    EXPECT_EQ(line.substr(0, line.size() - 8), '"' + path + "\" " + digits);
    EXPECT_EQ(fs::remove(test::kDataFile), hasData);
    fs::remove(test::kLineFile);
  }

  const std::string child_ = test::ProgramBeside("launch_child");
  const Bytes data_ = test::Pattern(100000);
};

TEST_F(ClientLaunch, KeepsTheDataUntilTheClientEnds) {
  // 259 is the exit code that the system reports of a running process; 1200 ms are longer than two
  // looks at it.
  for (const auto& [exitCode, delay] : {std::pair{0u, 0u}, {1u, 1200u}, {259u, 0u}}) {
    EXPECT_EQ(Launch(child_, exitCode, delay), QX_SUCCEEDED) << exitCode;
    EXPECT_TRUE(test::BytesOf(test::ReadFile(test::kDataFile)) == data_);
    ExpectClient(child_, true);
  }
  for (const auto& [data, size] : {std::pair<const char*, std::uint32_t>{nullptr, 4}, {"", 0}}) {
    EXPECT_EQ(QX_CreateProcess(child_.c_str(), data, size), QX_SUCCEEDED);
    ExpectClient(child_, false);
  }
}

TEST_F(ClientLaunch, TakesPathsWithBlanksAndLongOnes) {
  fs::create_directory("the game");
  const fs::path copy = fs::current_path() / "the game" / fs::path(child_).filename();
  fs::copy_file(child_, copy);
  fs::copy_file(LAUNCHER_LIBRARY, copy.parent_path() / fs::path(LAUNCHER_LIBRARY).filename());
  std::vector<std::string> paths = {copy.string()};
  // The line of 2026 characters is the longest that is enciphered too, that of 2047 the longest.
  for (const std::size_t length : {2007u, 2008u, 2028u, 2029u}) {
    const std::string name = '/' + fs::path(child_).filename().string();
    std::string path = fs::path(child_).parent_path().string();
    while (path.size() + name.size() + 2 <= length) path += "/.";
    paths.push_back(path + std::string(length - path.size() - name.size(), '/') + name);
  }
  for (const std::string& path : paths) {
    const bool fits = path.size() < 2029;
    EXPECT_EQ(Launch(path, 0, 0), fits ? QX_SUCCEEDED : QX_FAILED) << path.size();
    if (fits) ExpectClient(path, true);
  }
}

TEST_F(ClientLaunch, FailsIfThereIsNoProgram) {
  for (const std::string& path : {child_ + ".not_there", std::string(), std::string(100000, 'p')}) {
    EXPECT_EQ(Launch(path, 0, 0), QX_FAILED);
  }
  EXPECT_EQ(QX_CreateProcess(nullptr, data_.data(), 4), QX_FAILED);
  EXPECT_EQ(test::ScratchDirectory::FileCount(), 0u);
}

}  // namespace
}  // namespace launcher
