// QX_CommandLineToArgvA: the process's arguments as 8-bit text, packed in one block.
//
// Each argument is converted twice, first only for its size: in a multi-byte code page it can need
// more bytes than it has characters.

#include <cstdint>
#include <cwchar>

#include "launcher_dll.h"
#include "platform/owners.h"
#include "platform/win32.h"

namespace launcher {
namespace {

// WideCharToMultiByte then converts up to the terminator, and the terminator too.
constexpr int kWholeText = -1;

// Returns the size of an argument in bytes in the ANSI code page, terminator included, or 0 if it
// cannot be converted.
int ConvertedSize(const wchar_t* argument) {
  return WideCharToMultiByte(CP_ACP, 0, argument, kWholeText, nullptr, 0, nullptr, nullptr);
}

// Returns the number of bytes written, terminator included, or 0 if they do not fit.
int Convert(const wchar_t* argument, char* destination, std::size_t capacity) {
  return WideCharToMultiByte(CP_ACP, 0, argument, kWholeText, destination,
                             static_cast<int>(capacity), nullptr, nullptr);
}

// Writes the address of the block to *block, only on success. The caller owns it.
ResultCode PackArguments(const wchar_t* const* arguments, std::int32_t count,
                         std::uint32_t capacity, char** block) {
  // The caller's limit is in characters, terminators included. The block's size is in bytes, and
  // can be larger.
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
  // The result is one block with the pointers and the texts. *count stays written if a later step
  // fails.
  const launcher::LocalBlock<wchar_t*> arguments(CommandLineToArgvW(GetCommandLineW(), count));
  if (!arguments) return QX_FAILED;

  return launcher::PackArguments(arguments.Get(), *count, capacity, block);
}
