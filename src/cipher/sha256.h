// SHA-256 (FIPS 180-4), by one of the system's two cryptographic services.

#ifndef LAUNCHER_CIPHER_SHA256_H_
#define LAUNCHER_CIPHER_SHA256_H_

#include <cstddef>
#include <cstdint>

#include "platform/owners.h"

namespace launcher {

inline constexpr std::size_t kDigestSize = 32;

// By CNG, with the pseudo-handle that Windows 10 and later have: there is nothing to acquire.
class CngSha256 {
 public:
  // Returns false if the service does not have the pseudo-handle. Then the other functions
  // must not be called.
  bool Create();
  bool Update(const std::uint8_t* data, std::uint32_t length);
  bool Finish(std::uint8_t (&digest)[kDigestSize]);

 private:
  CngHash hash_;
};

// By CryptoAPI, which every Windows has. Acquiring its provider can take milliseconds.
class CryptoApiSha256 {
 public:
  // Returns false if there is no provider or no hash. The other functions then return false too.
  bool Create();
  bool Update(const std::uint8_t* data, std::uint32_t length);
  bool Finish(std::uint8_t (&digest)[kDigestSize]);

 private:
  CryptProvider provider_;
  CryptHash hash_;  // declared after its provider, so that it is released first
};

// Computes one digest of data in pieces, by CNG or, only if CNG cannot create a hash, by CryptoAPI.
// Calls the system only from the first piece on, so that an unused object costs nothing.
class Sha256 {
 public:
  // Adds the next `length` bytes, 0 or more. Returns false if the system refuses; the digest is
  // then lost.
  bool Update(const std::uint8_t* data, std::uint32_t length);

  // Writes the digest of all pieces, at least one. Returns false, with `digest` undefined, if the
  // system fails.
  bool Finish(std::uint8_t (&digest)[kDigestSize]);

 private:
  enum class Service : std::uint8_t { kNone, kCng, kCryptoApi };

  Service service_ = Service::kNone;  // chosen at the first piece
  CngSha256 cng_;
  CryptoApiSha256 cryptoApi_;
};

// Computes the digest of the `length` bytes at `data`, 0 or more. Returns false, with `digest`
// undefined, if the system fails.
bool Sha256Digest(const std::uint8_t* data, std::uint32_t length,
                  std::uint8_t (&digest)[kDigestSize]);

}  // namespace launcher

#endif  // LAUNCHER_CIPHER_SHA256_H_
