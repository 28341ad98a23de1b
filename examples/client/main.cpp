// An example client: reads its parent's process id and an address from its command line, copies the
// block at that address from the parent's memory, deciphers it, and writes the data to a file.
//
// example_launcher starts it. It has its own console, so it writes its log to a file.
// Exit status: 0 or 1.

#include <windows.h>

#include <cstdint>
#include <cstdio>
#include <fstream>
#include <string>
#include <vector>

#include "launch_data.h"
#include "launcher_dll.h"

namespace {

std::ofstream& Log() {
  static std::ofstream log(kClientLogPath);
  return log;
}

int Fail(const char* step) {
  Log() << "failed: " << step << '\n';
  return 1;
}

// The launcher's process, opened for reading.
class Parent {
 public:
  explicit Parent(std::uint32_t processId)
      : handle_(OpenProcess(PROCESS_VM_READ, FALSE, processId)) {}
  Parent(const Parent&) = delete;
  Parent& operator=(const Parent&) = delete;
  ~Parent() {
    if (handle_ != nullptr) CloseHandle(handle_);
  }

  bool Read(std::uint32_t address, void* buffer, std::size_t size) const {
    const auto* const remote = reinterpret_cast<const void*>(std::uintptr_t{address});
    return handle_ != nullptr && ReadProcessMemory(handle_, remote, buffer, size, nullptr);
  }

 private:
  HANDLE handle_;
};

std::string Hex(std::uint32_t number) {
  char digits[9];
  std::snprintf(digits, sizeof digits, "%08lx", static_cast<unsigned long>(number));
  return digits;
}

}  // namespace

int main() {
  // The functions read from the end of the line. The address is last. After QX_RightDWORD has cut
  // it off, the process id is last.
  std::string line = GetCommandLineA();
  std::uint32_t address = 0;
  std::uint32_t processId = 0;
  if (QX_RightAddress(&address, line.c_str()) != QX_SUCCEEDED ||
      QX_RightDWORD(nullptr, line.data()) != QX_SUCCEEDED ||
      QX_RightDWORD(&processId, line.data()) != QX_SUCCEEDED) {
    return Fail("reading the command line");
  }
  Log() << "the data are in process " << Hex(processId) << " at address " << Hex(address) << '\n';

  const Parent parent(processId);
  BlockHeader header = {};
  if (!parent.Read(address, &header, sizeof header)) return Fail("reading the parent's memory");
  if (header.containerSize > kMaxContainerSize) return Fail("the block claims to be too large");
  std::vector<std::uint8_t> container(header.containerSize);
  if (!parent.Read(address + std::uint32_t{sizeof header}, container.data(), container.size())) {
    return Fail("reading the container in the parent's memory");
  }
  Log() << "read " << container.size() << " bytes from that process\n";

  std::uint32_t size = 0;
  std::uint32_t offset = 0;
  const ResultCode result =
      QX_Decode(container.data(), static_cast<std::int32_t>(container.size()), &size, &offset, 1);
  if (result != QX_SUCCEEDED || offset == 0) return Fail("deciphering the container");
  // If the data were signed, QX_Decode has skipped the marker, and the offset is larger.
  constexpr std::uint32_t kUnsignedOffset = 40;
  if (offset != kUnsignedOffset + QX_GetSignatureSize()) return Fail("the data are not signed");
  Log() << "deciphered it: " << size << " bytes of signed data at offset " << offset << '\n';

  std::ofstream received(kReceivedPath, std::ios::binary);
  received.write(reinterpret_cast<const char*>(container.data() + offset),
                 static_cast<std::streamsize>(size));
  return received.flush() ? 0 : Fail("writing the data down");
}
