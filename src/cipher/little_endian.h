// 32-bit words as the container has them: least significant byte first, at any alignment.

#ifndef LAUNCHER_CIPHER_LITTLE_ENDIAN_H_
#define LAUNCHER_CIPHER_LITTLE_ENDIAN_H_

#include <cstdint>

namespace launcher {

inline std::uint32_t LoadLittleEndian(const std::uint8_t* bytes) {
  return std::uint32_t{bytes[0]} | std::uint32_t{bytes[1]} << 8 | std::uint32_t{bytes[2]} << 16 |
         std::uint32_t{bytes[3]} << 24;
}

inline void StoreLittleEndian(std::uint8_t* bytes, std::uint32_t word) {
  bytes[0] = static_cast<std::uint8_t>(word);
  bytes[1] = static_cast<std::uint8_t>(word >> 8);
  bytes[2] = static_cast<std::uint8_t>(word >> 16);
  bytes[3] = static_cast<std::uint8_t>(word >> 24);
}

}  // namespace launcher

#endif  // LAUNCHER_CIPHER_LITTLE_ENDIAN_H_
