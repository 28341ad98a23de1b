// QX_RightBinary: reads bytes off the right-hand end of a text.

#include <cstdint>
#include <cstring>

#include "launch/hex_digits.h"
#include "launcher_dll.h"

ResultCode QX_CALL QX_RightBinary(std::uint8_t* destination, std::uint32_t capacity,
                                  const char* text, std::uint32_t count) {
  if (text == nullptr) return QX_BAD_ARGUMENT;

  // Half the length against the count, since twice the count can wrap.
  const std::size_t length = std::strlen(text);
  if (length / 2 < count || capacity < count) return QX_FAILED;

  if (destination == nullptr) return QX_SUCCEEDED;

  // The zero fill is also the NUL behind the bytes, where the capacity has room for one.
  std::memset(destination, 0, capacity);
  const char* digits = text + length - std::size_t{count} * 2;
  for (std::uint32_t i = 0; i < count; ++i, digits += 2) {
    destination[i] = static_cast<std::uint8_t>(launcher::NumberFromHexDigits(digits, 2));
  }
  return QX_SUCCEEDED;
}
