// QX_RightDWORD: takes a number off the right-hand end of a launch line.
//
// The line ends in the parent's process id and the data's address. This reader cuts off what it
// reads, so a client reads the address first, cuts it off with a null `value`, and then takes the
// process id.

#include <cstdint>
#include <cstdlib>
#include <cstring>

#include "launch/hex_digits.h"
#include "launcher_dll.h"

ResultCode QX_CALL QX_RightDWORD(std::uint32_t* value, char* text) {
  if (text == nullptr) return QX_BAD_ARGUMENT;

  const std::size_t length = std::strlen(text);
  if (length < launcher::kWordDigits) return QX_FAILED;

  char* const digits = text + length - launcher::kWordDigits;
  if (value != nullptr) *value = static_cast<std::uint32_t>(std::strtoul(digits, nullptr, 16));
  *digits = '\0';
  return QX_SUCCEEDED;
}
