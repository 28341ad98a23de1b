#include <windows.h>

#include <vector>

#include "support/system.h"

namespace launcher::test {
namespace {

// Class 64 of NtQuerySystemInformation, which no header declares.
constexpr int kSystemExtendedHandleInformation = 64;

struct HandleEntry {
  void* object;
  ULONG_PTR processId;
  ULONG_PTR handle;
  ULONG access;
  USHORT backTraceIndex;
  USHORT typeIndex;
  ULONG attributes;
  ULONG reserved;
};

struct HandleTable {
  ULONG_PTR count;
  ULONG_PTR reserved;
  HandleEntry entries[1];
};

}  // namespace

const char* const kLineEnd = "\r\n";

std::string ProgramBeside(const std::string& name) {
  char path[MAX_PATH] = "";
  GetModuleFileNameA(nullptr, path, sizeof path);
  const std::string self(path);
  return self.substr(0, self.rfind('\\') + 1) + name + ".exe";
}

// GetProcessHandleCount would be the plain way; Wine answers it with 0.
int OpenHandleCount() {
  // Under a type of its own, since the header's enumeration ends before the class asked for.
  using Query = LONG(NTAPI*)(int, void*, ULONG, ULONG*);
  const auto query = reinterpret_cast<Query>(reinterpret_cast<void*>(
      GetProcAddress(GetModuleHandleA("ntdll.dll"), "NtQuerySystemInformation")));
  std::vector<unsigned char> buffer(1 << 20);
  if (query(kSystemExtendedHandleInformation, buffer.data(), static_cast<ULONG>(buffer.size()),
            nullptr) != 0) {
    return -1;
  }
  const auto* const table = reinterpret_cast<const HandleTable*>(buffer.data());
  int count = 0;
  for (ULONG_PTR i = 0; i < table->count; ++i) {
    count += table->entries[i].processId == GetCurrentProcessId() ? 1 : 0;
  }
  return count;
}

}  // namespace launcher::test
