// QX_RightAddress: reads the address at the right-hand end of a launch line.

#include <cstdint>
#include <cstring>

#include "launch/hex_digits.h"
#include "launcher_dll.h"

ResultCode QX_CALL QX_RightAddress(std::uint32_t* address, const char* text) {
  if (text == nullptr) return QX_BAD_ARGUMENT;

  const std::size_t length = std::strlen(text);
  if (length < launcher::kWordDigits) return QX_FAILED;

  // A caller may ask only whether the line is long enough.
  if (address == nullptr) return QX_SUCCEEDED;

  const char* const digits = text + length - launcher::kWordDigits;
  *address = launcher::NumberFromHexDigits(digits, launcher::kWordDigits);
  return QX_SUCCEEDED;
}
