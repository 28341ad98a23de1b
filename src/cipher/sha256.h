// SHA-256 (FIPS 180-4), by the system's cryptographic service.

#ifndef LAUNCHER_CIPHER_SHA256_H_
#define LAUNCHER_CIPHER_SHA256_H_

#include <cstddef>
#include <cstdint>

namespace launcher {

inline constexpr std::size_t kDigestSize = 32;

// Writes the digest of the `length` bytes at `data`, 0 or more. Answers false where the system
// gives none; `digest` is then undefined.
bool Sha256Digest(const std::uint8_t* data, std::uint32_t length,
                  std::uint8_t (&digest)[kDigestSize]);

}  // namespace launcher

#endif  // LAUNCHER_CIPHER_SHA256_H_
