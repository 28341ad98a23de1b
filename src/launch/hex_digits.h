// Numbers as hexadecimal digits, the form of everything at the right-hand end of a launch line.

#ifndef LAUNCHER_LAUNCH_HEX_DIGITS_H_
#define LAUNCHER_LAUNCH_HEX_DIGITS_H_

#include <cstddef>
#include <cstdint>

namespace launcher {

// The digits of a 32-bit number.
inline constexpr std::size_t kWordDigits = 8;

// A character that is no digit counts as 0.
constexpr std::uint32_t HexDigit(char digit) {
  if (digit >= '0' && digit <= '9') return static_cast<std::uint32_t>(digit - '0');
  if (digit >= 'a' && digit <= 'f') return static_cast<std::uint32_t>(digit - 'a' + 10);
  if (digit >= 'A' && digit <= 'F') return static_cast<std::uint32_t>(digit - 'A' + 10);
  return 0;
}

// Joins `count` digits, most significant first. Digit by digit and not by strtoul, which stops at
// the first character that is no digit: here the digits behind it keep their places.
constexpr std::uint32_t NumberFromHexDigits(const char* digits, std::size_t count) {
  std::uint32_t number = 0;
  for (std::size_t i = 0; i < count; ++i) number = (number << 4) | HexDigit(digits[i]);
  return number;
}

}  // namespace launcher

#endif  // LAUNCHER_LAUNCH_HEX_DIGITS_H_
