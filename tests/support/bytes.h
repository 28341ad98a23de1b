// Bytes, and how tests write and print them.

#ifndef LAUNCHER_TESTS_SUPPORT_BYTES_H_
#define LAUNCHER_TESTS_SUPPORT_BYTES_H_

#include <cstdint>
#include <string>
#include <vector>

namespace launcher::test {

using Bytes = std::vector<std::uint8_t>;

inline Bytes BytesOf(const std::string& text) { return Bytes(text.begin(), text.end()); }

inline Bytes BytesFromHex(const std::string& digits) {
  Bytes bytes;
  for (std::size_t i = 0; i + 1 < digits.size(); i += 2) {
    bytes.push_back(static_cast<std::uint8_t>(std::stoul(digits.substr(i, 2), nullptr, 16)));
  }
  return bytes;
}

// Bytes that do not repeat soon.
inline Bytes Pattern(std::size_t size) {
  Bytes bytes(size);
  std::uint32_t state = 1;
  for (std::uint8_t& byte : bytes) {
    state = state * 1664525 + 1013904223;
    byte = static_cast<std::uint8_t>(state >> 24);
  }
  return bytes;
}

}  // namespace launcher::test

#endif  // LAUNCHER_TESTS_SUPPORT_BYTES_H_
