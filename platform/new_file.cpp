#include "platform/new_file.h"

#include <cstdint>
#include <cstdio>

#include "platform/win32.h"

namespace launcher {
namespace {

#if defined(_WIN32)
constexpr const wchar_t* kSeparators = L"\\/:";
#else
constexpr const char* kSeparators = "/";
#endif

// Returns a number that differs between files that are written at the same time, by process, thread
// and object. The names must differ from the start: if another such file has the name, Windows
// reports a refused access, not an existing file. Not by std::rand, whose sequence belongs to the
// callers. The factors are primes of xxHash (https://xxhash.com), which mix the bits.
std::uint32_t FirstNumber(const NewFile* file) {
  return GetCurrentProcessId() * 0x9E3779B1 + GetCurrentThreadId() * 0x85EBCA77 +
         static_cast<std::uint32_t>(reinterpret_cast<std::uintptr_t>(file)) * 0xC2B2AE3D +
         static_cast<std::uint32_t>(_time64(nullptr));
}

}  // namespace

SystemError NewFile::CreateBeside(const SystemPath& place) {
  const std::size_t separator = place.find_last_of(kSeparators);
  // npos + 1 is 0: without a separator the directory is empty.
  const SystemPath directory = place.substr(0, separator + 1);

  constexpr std::uint32_t kTries = 0x10000;
  SystemError error = 0;
  std::uint32_t number = FirstNumber(this);
  // Killed processes may have left files under these names.
  for (std::uint32_t i = 0; i < kTries; ++i, ++number) {
    char name[16];
    const int length =
        std::snprintf(name, sizeof name, ".%06x.new", static_cast<unsigned>(number & 0xFFFFFF));
    error = Create(directory + SystemPath(name, name + length));
    if (!MeansThatItExists(error)) break;
  }
  return error;
}

}  // namespace launcher
