// QX_CommandLineToArgvA: the process's arguments as 8-bit text, packed in one block.

#include <cstdint>
#include <cwchar>

#include "launcher_dll.h"
#include "platform/owners.h"
#include "platform/win32.h"

namespace launcher {
namespace {

// Up to the terminator, included.
constexpr int kWholeText = -1;

// Returns the size of an argument in the ANSI code page, terminator included, or 0 if it cannot be
// converted.
int ConvertedSize(const wchar_t* argument) {
  return WideCharToMultiByte(CP_ACP, 0, argument, kWholeText, nullptr, 0, nullptr, nullptr);
}

int Convert(const wchar_t* argument, char* destination, std::size_t capacity) {
  return WideCharToMultiByte(CP_ACP, 0, argument, kWholeText, destination,
                             static_cast<int>(capacity), nullptr, nullptr);
}

ResultCode PackArguments(const wchar_t* const* arguments, std::int32_t count,
                         std::uint32_t capacity, char** block) {
  // The caller's limit is in characters. The block's size is in bytes, and may be larger.
  std::size_t length = 0;
  for (std::int32_t i = 0; i < count; ++i) length += std::wcslen(arguments[i]) + 1;
  if (capacity < length) return QX_BAD_ARGUMENT;

  std::size_t size = 0;
  for (std::int32_t i = 0; i < count; ++i) {
    const int argumentSize = ConvertedSize(arguments[i]);
    if (argumentSize <= 0) return QX_FAILED;
    size += static_cast<std::size_t>(argumentSize);
  }
  LocalBlock<char> packed(static_cast<char*>(LocalAlloc(LMEM_FIXED, size)));
  if (!packed) return QX_FAILED;

  std::size_t used = 0;
  for (std::int32_t i = 0; i < count; ++i) {
    const int written = Convert(arguments[i], packed.Get() + used, size - used);
    if (written <= 0) return QX_FAILED;
    used += static_cast<std::size_t>(written);
  }
  *block = packed.Detach();
  return QX_SUCCEEDED;
}

}  // namespace
}  // namespace launcher

ResultCode QX_CALL QX_CommandLineToArgvA(char** block, std::uint32_t capacity,
                                         std::int32_t* count) {
  const launcher::LocalBlock<wchar_t*> arguments(CommandLineToArgvW(GetCommandLineW(), count));
  if (!arguments) return QX_FAILED;

  return launcher::PackArguments(arguments.Get(), *count, capacity, block);
}
