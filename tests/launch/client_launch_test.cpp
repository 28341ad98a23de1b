// For faults of QX_CreateProcess that a real client shows: data that it cannot read, or not to its
// end, a path that is split, cut or refused, an exit code that is mistaken for another state.

#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

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

class ClientLaunch : public test::ScratchTest {
 protected:
  // Has the client end with `exitCode`, after `delay`. It must get its line and all data.
  static void Launch(const std::string& path, std::uint32_t exitCode, std::uint32_t delay) {
    SCOPED_TRACE(path);
    const test::Bytes pattern = test::Pattern(100000);
    const std::string data(pattern.begin(), pattern.end());
    const test::LaunchHeader header = {exitCode, delay, static_cast<std::uint32_t>(data.size())};
    const std::string block(reinterpret_cast<const char*>(&header), sizeof header);
    EXPECT_EQ(QX_CreateProcess(path.c_str(), (block + data).data(), sizeof header + 100000), 0);
    EXPECT_TRUE(test::ReadFile(test::kDataFile) == data);
    fs::remove(test::kDataFile);
    EXPECT_NE(AddressInLine(path), "00000000");
  }

  static std::string AddressInLine(const std::string& path) {
    const std::string line = test::ReadFile(test::kLineFile);
    fs::remove(test::kLineFile);
    const std::size_t digits = path.size() + 3;
    EXPECT_EQ(line.substr(0, digits), '"' + path + "\" ");
    EXPECT_EQ(std::stoul(line.substr(digits, 8), nullptr, 16), GetCurrentProcessId());
    return line.substr(digits + 8);
  }

  const std::string child_ = test::ProgramBeside("launch_child");
};

TEST_F(ClientLaunch, KeepsTheDataUntilTheClientEnds) {
  // 259 is the exit code that the system reports of a running process; 1200 ms are longer than two
  // looks at it.
  Launch(child_, 1, 1200);
  Launch(child_, 259, 0);
  for (const auto& [data, size] : {std::pair<const char*, std::uint32_t>{nullptr, 4}, {"", 0}}) {
    EXPECT_EQ(QX_CreateProcess(child_.c_str(), data, size), QX_SUCCEEDED);
    EXPECT_EQ(AddressInLine(child_), "00000000");
  }
}

TEST_F(ClientLaunch, TakesPathsWithBlanksAndLongOnes) {
  fs::create_directory("the game");
  Launch((fs::current_path() / "the game" / fs::relative(child_, "the game")).string(), 0, 0);
  std::string path = fs::path(child_).parent_path().string();
  const std::string name = '/' + fs::path(child_).filename().string();
  path.resize(2028 - name.size(), '/');
  Launch(path + name, 0, 0);
  for (const std::string& refused : {path + '/' + name, child_ + ".not_there"}) {
    EXPECT_EQ(QX_CreateProcess(refused.c_str(), "data", 4), QX_FAILED);
  }
  EXPECT_EQ(QX_CreateProcess(nullptr, "data", 4), QX_FAILED);
  EXPECT_EQ(test::ScratchDirectory::FileCount(), 1u);
}

}  // namespace
}  // namespace launcher
