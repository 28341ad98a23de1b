#include "launch/launch_child.h"

#include <cstring>
#include <string>

#include "launcher_dll.hpp"
#include "platform/win32.h"
#include "support/data_file.h"

int main() {
  using namespace launcher;
  const std::string line = GetCommandLineA();
  test::WriteFile(test::kLineFile, line);
  const launcher_dll::LaunchLine launch = launcher_dll::ReadLaunchLine(line);
  if (launch.dataAddress == 0) return 0;

  // If the memory cannot be read, an exception ends this program, without the file of the data.
  const auto read = [&](std::uint32_t offset, void* buffer, std::size_t size) {
    launcher_dll::detail::ReadLauncher(launch.processId, launch.dataAddress + offset, buffer, size);
  };
  test::LaunchHeader header = {};
  read(0, &header, sizeof header);
  std::string data;
  // The C++ wrapper's data begin with their size and a container's magic.
  if (std::memcmp(&header.delay, "BFBR", 4) == 0) {
    const launcher_dll::Bytes content = launcher_dll::ReadClientData(line.c_str());
    data.assign(content.begin(), content.end());
    header.exitCode = 0;
  } else {
    Sleep(header.delay);
    data.resize(header.dataSize);
    read(sizeof header, data.data(), data.size());
  }
  test::WriteFile(test::kDataFile, data);
  return static_cast<int>(header.exitCode);
}
