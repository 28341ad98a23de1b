#include "launch/launch_child.h"

#include <cstring>
#include <string>

#include "launcher_dll.hpp"
#include "platform/owners.h"
#include "support/data_file.h"

namespace {

bool ReadFromProcess(HANDLE process, std::uint32_t address, void* buffer, std::size_t size) {
  return ReadProcessMemory(process, reinterpret_cast<const void*>(std::uintptr_t{address}), buffer,
                           size, nullptr) != FALSE;
}

}  // namespace

int main() {
  using namespace launcher;
  std::string line = GetCommandLineA();
  test::WriteFile(test::kLineFile, line);
  std::uint32_t address = 0;
  std::uint32_t processId = 0;
  QX_RightAddress(&address, line.c_str());
  QX_RightDWORD(nullptr, line.data());
  QX_RightDWORD(&processId, line.data());
  if (address == 0) return 0;

  constexpr int kFailed = 99;
  const KernelHandle parent(OpenProcess(PROCESS_VM_READ, FALSE, processId));
  test::LaunchHeader header = {};
  if (!parent || !ReadFromProcess(parent.Get(), address, &header, sizeof header)) return kFailed;
  std::string data;
  // The C++ wrapper's data begin with their size and a container's magic.
  if (std::memcmp(&header.delay, "BFBR", 4) == 0) {
    const launcher_dll::Bytes read = launcher_dll::ReadClientData(GetCommandLineA());
    data.assign(read.begin(), read.end());
    header.exitCode = 0;
  } else {
    Sleep(header.delay);
    data.resize(header.dataSize);
    address += std::uint32_t{sizeof header};
    if (!ReadFromProcess(parent.Get(), address, data.data(), data.size())) return kFailed;
  }
  test::WriteFile(test::kDataFile, data);
  return static_cast<int>(header.exitCode);
}
