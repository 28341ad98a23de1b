#include <windows.h>

#include <algorithm>
#include <stdexcept>
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

std::string PathBeside(const std::string& name) {
  char program[MAX_PATH] = "";
  GetModuleFileNameA(nullptr, program, sizeof program);
  const std::string self(program);
  std::string path = self.substr(0, self.rfind('\\') + 1) + name;
  std::replace(path.begin(), path.end(), '/', '\\');
  return path;
}

std::string ProgramBeside(const std::string& name) { return PathBeside(name + ".exe"); }

void SetLibraryPath(const std::string& /*folder*/) {}

void* LoadFunction(const std::string& path, const char* name) {
  const HMODULE library = LoadLibraryA(path.c_str());
  const auto function = library != nullptr ? GetProcAddress(library, name) : nullptr;
  if (function == nullptr) throw std::runtime_error("no " + std::string(name) + " in " + path);
  return reinterpret_cast<void*>(function);
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
