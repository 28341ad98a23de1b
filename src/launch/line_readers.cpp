// QX_RightDWORD, QX_RightBinary, QX_RightAddress: read hexadecimal numbers from the end of a launch
// line.
//
// The line ends with the parent's process id and the address of its data. QX_RightDWORD cuts off
// the number that it reads, so a client reads the address first with QX_RightAddress, cuts it off
// with QX_RightDWORD and a null `value`, and then reads the process id.

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>

#include "launch/launch_line.h"
#include "launcher_dll.h"

namespace launcher {
namespace {

// Returns 0 for a character that is not a digit.
constexpr std::uint32_t HexDigit(char digit) {
  if (digit >= '0' && digit <= '9') return static_cast<std::uint32_t>(digit - '0');
  if (digit >= 'a' && digit <= 'f') return static_cast<std::uint32_t>(digit - 'a' + 10);
  if (digit >= 'A' && digit <= 'F') return static_cast<std::uint32_t>(digit - 'A' + 10);
  return 0;
}

// Joins `count` digits, the most significant first. strtoul would not do: it stops at a character
// that is not a digit, and the digits after it would lose their places.
constexpr std::uint32_t NumberFromHexDigits(const char* digits, std::size_t count) {
  std::uint32_t number = 0;
  for (std::size_t i = 0; i < count; ++i) number = (number << 4) | HexDigit(digits[i]);
  return number;
}

}  // namespace
}  // namespace launcher

ResultCode QX_CALL QX_RightDWORD(std::uint32_t* value, char* text) {
  if (text == nullptr) return QX_BAD_ARGUMENT;

  const std::size_t length = std::strlen(text);
  if (length < launcher::kWordDigits) return QX_FAILED;

  char* const digits = text + length - launcher::kWordDigits;
  // Unlike the other two, this reader takes what strtoul takes: a sign, "0x", digits up to the
  // first other character.
  if (value != nullptr) *value = static_cast<std::uint32_t>(std::strtoul(digits, nullptr, 16));
  *digits = '\0';
  return QX_SUCCEEDED;
}

ResultCode QX_CALL QX_RightBinary(std::uint8_t* destination, std::uint32_t capacity,
                                  const char* text, std::uint32_t count) {
  if (text == nullptr) return QX_BAD_ARGUMENT;

  // Compares half the length with `count`, since twice the count can wrap.
  const std::size_t length = std::strlen(text);
  if (length / 2 < count || capacity < count) return QX_FAILED;

  if (destination == nullptr) return QX_SUCCEEDED;

  // If there is room after the bytes, the zero fill is also their terminator. With a capacity of
  // exactly `count` there is none, since nothing may be written beyond the capacity.
  std::memset(destination, 0, capacity);
  const char* digits = text + length - std::size_t{count} * 2;
  for (std::uint32_t i = 0; i < count; ++i, digits += 2) {
    destination[i] = static_cast<std::uint8_t>(launcher::NumberFromHexDigits(digits, 2));
  }
  return QX_SUCCEEDED;
}

ResultCode QX_CALL QX_RightAddress(std::uint32_t* address, const char* text) {
  if (text == nullptr) return QX_BAD_ARGUMENT;

  const std::size_t length = std::strlen(text);
  if (length < launcher::kWordDigits) return QX_FAILED;

  // With a null `address` the call checks only that the line is long enough.
  if (address == nullptr) return QX_SUCCEEDED;

  const char* const digits = text + length - launcher::kWordDigits;
  *address = launcher::NumberFromHexDigits(digits, launcher::kWordDigits);
  return QX_SUCCEEDED;
}
