#include "cipher/sha256.h"

#include "platform/owners.h"
#include "platform/win32.h"

namespace launcher {
namespace {

CryptProvider AcquireProvider() {
  HCRYPTPROV provider = 0;
  // No key container: hashing takes no key, and the default one may be missing or locked.
  const bool acquired =
      CryptAcquireContextA(&provider, nullptr, nullptr, PROV_RSA_AES, CRYPT_VERIFYCONTEXT) != FALSE;
  return CryptProvider(acquired ? provider : 0);
}

CryptHash CreateHash(const CryptProvider& provider) {
  constexpr HCRYPTKEY kNoKey = 0;
  HCRYPTHASH hash = 0;
  const bool created = CryptCreateHash(provider.Get(), CALG_SHA_256, kNoKey, 0, &hash) != FALSE;
  return CryptHash(created ? hash : 0);
}

}  // namespace

bool Sha256Digest(const std::uint8_t* data, std::uint32_t length,
                  std::uint8_t (&digest)[kDigestSize]) {
  const CryptProvider provider = AcquireProvider();
  if (!provider) return false;
  const CryptHash hash = CreateHash(provider);  // goes before its provider
  if (!hash) return false;

  DWORD digestSize = kDigestSize;
  return CryptHashData(hash.Get(), data, length, 0) &&
         CryptGetHashParam(hash.Get(), HP_HASHVAL, digest, &digestSize, 0) &&
         digestSize == kDigestSize;
}

}  // namespace launcher
