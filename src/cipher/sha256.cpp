#include "cipher/sha256.h"

#include "platform/win32.h"

namespace launcher {
namespace {

HCRYPTPROV AcquireProvider() {
  HCRYPTPROV provider = 0;
  // No key container: hashing needs none, and the default one may be missing or locked.
  const bool acquired =
      CryptAcquireContextA(&provider, nullptr, nullptr, PROV_RSA_AES, CRYPT_VERIFYCONTEXT) != FALSE;
  return acquired ? provider : 0;
}

HCRYPTHASH CreateHash(HCRYPTPROV provider) {
  constexpr HCRYPTKEY kNoKey = 0;
  HCRYPTHASH hash = 0;
  const bool created = CryptCreateHash(provider, CALG_SHA_256, kNoKey, 0, &hash) != FALSE;
  return created ? hash : 0;
}

}  // namespace

bool Sha256::Update(const std::uint8_t* data, std::uint32_t length) {
  if (!provider_) {
    provider_.Reset(AcquireProvider());
    if (!provider_) return false;
    hash_.Reset(CreateHash(provider_.Get()));
  }
  return hash_ && CryptHashData(hash_.Get(), data, length, 0) != FALSE;
}

bool Sha256::Finish(std::uint8_t (&digest)[kDigestSize]) {
  DWORD digestSize = kDigestSize;
  return hash_ && CryptGetHashParam(hash_.Get(), HP_HASHVAL, digest, &digestSize, 0) != FALSE &&
         digestSize == kDigestSize;
}

bool Sha256Digest(const std::uint8_t* data, std::uint32_t length,
                  std::uint8_t (&digest)[kDigestSize]) {
  Sha256 sha256;
  return sha256.Update(data, length) && sha256.Finish(digest);
}

}  // namespace launcher
