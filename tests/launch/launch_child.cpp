#include "launch/launch_child.h"

#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "launcher_dll.hpp"
#include "platform/owners.h"
#include "support/data_file.h"

namespace launcher::test {
namespace {

constexpr int kFailed = 99;

bool ReadFromProcess(HANDLE process, std::uint32_t address, void* buffer, std::size_t size) {
  return ReadProcessMemory(process, reinterpret_cast<const void*>(std::uintptr_t{address}), buffer,
                           size, nullptr) != FALSE;
}

int TakeLaunchData() {
  std::string line = GetCommandLineA();
  WriteFile(kLineFile, line);
  std::uint32_t address = 0;
  std::uint32_t processId = 0;
  QX_RightAddress(&address, line.c_str());
  QX_RightDWORD(nullptr, line.data());
  QX_RightDWORD(&processId, line.data());
  if (address == 0) return 0;

  const KernelHandle parent(OpenProcess(PROCESS_VM_READ, FALSE, processId));
  LaunchHeader header = {};
  if (!parent || !ReadFromProcess(parent.Get(), address, &header, sizeof header)) return kFailed;
  // The C++ wrapper's data begin with their size and a container's magic.
  if (std::memcmp(&header.delay, "BFBR", 4) == 0) {
    const launcher_dll::Bytes data = launcher_dll::ReadClientData(GetCommandLineA());
    WriteFile(kDataFile, std::string(data.begin(), data.end()));
    return 0;
  }
  Sleep(header.delay);
  std::string data(header.dataSize, '\0');
  if (!ReadFromProcess(parent.Get(), address + std::uint32_t{sizeof header}, data.data(),
                       data.size())) {
    return kFailed;
  }
  WriteFile(kDataFile, data);
  return static_cast<int>(header.exitCode);
}

int WriteArguments(std::uint32_t capacity) {
  char* block = nullptr;
  std::int32_t count = -1;
  const ResultCode result = QX_CommandLineToArgvA(&block, capacity, &count);
  const LocalBlock<char> owner(block);
  std::string text = std::to_string(result) + ' ' + std::to_string(count) + '\n';
  for (std::int32_t i = 0; block != nullptr && i < count; ++i) {
    text += std::string(block) + '\n';
    block += std::strlen(block) + 1;
  }
  WriteFile(kArgumentsFile, text);
  return 0;
}

}  // namespace
}  // namespace launcher::test

int main(int argumentCount, char** arguments) {
  if (argumentCount < 2) return launcher::test::kFailed;
  return std::strlen(arguments[1]) == 16
             ? launcher::test::TakeLaunchData()
             : launcher::test::WriteArguments(
                   static_cast<std::uint32_t>(std::strtoul(arguments[1], nullptr, 10)));
}
