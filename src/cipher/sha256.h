// SHA-256 (FIPS 180-4), by the system's cryptographic service.

#ifndef LAUNCHER_CIPHER_SHA256_H_
#define LAUNCHER_CIPHER_SHA256_H_

#include <cstddef>
#include <cstdint>

#include "platform/owners.h"

namespace launcher {

inline constexpr std::size_t kDigestSize = 32;

// One digest, of data that come in pieces. Nothing is asked of the system before the first piece.
class Sha256 {
 public:
  // Takes the next `length` bytes, 0 or more. Answers false where the system refuses; the digest is
  // lost then.
  bool Update(const std::uint8_t* data, std::uint32_t length);

  // Writes the digest of all pieces, at least one. Answers false where the system gives none;
  // `digest` is then undefined.
  bool Finish(std::uint8_t (&digest)[kDigestSize]);

 private:
  CryptProvider provider_;
  CryptHash hash_;  // goes before its provider
};

// The digest of the `length` bytes at `data`, 0 or more, with the same results.
bool Sha256Digest(const std::uint8_t* data, std::uint32_t length,
                  std::uint8_t (&digest)[kDigestSize]);

}  // namespace launcher

#endif  // LAUNCHER_CIPHER_SHA256_H_
