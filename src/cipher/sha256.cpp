// The two services. CNG comes first because it is much faster: a provider of CryptoAPI takes longer
// to acquire than a small container to decipher.

#include "cipher/sha256.h"

#include "platform/win32.h"

namespace launcher {

bool CngSha256::Create() {
  // BCRYPT_SHA256_ALG_HANDLE, which MinGW's header does not have.
  const auto algorithm = reinterpret_cast<BCRYPT_ALG_HANDLE>(std::uintptr_t{0x41});
  BCRYPT_HASH_HANDLE hash = nullptr;
  if (!BCRYPT_SUCCESS(BCryptCreateHash(algorithm, &hash, nullptr, 0, nullptr, 0, 0))) return false;
  hash_.Reset(hash);
  return true;
}

bool CngSha256::Update(const std::uint8_t* data, std::uint32_t length) {
  // The parameter is not const, but CNG only reads the data.
  return BCRYPT_SUCCESS(BCryptHashData(hash_.Get(), const_cast<std::uint8_t*>(data), length, 0));
}

bool CngSha256::Finish(std::uint8_t (&digest)[kDigestSize]) {
  // CNG fails if kDigestSize is not the size of the digest.
  return BCRYPT_SUCCESS(BCryptFinishHash(hash_.Get(), digest, kDigestSize, 0));
}

bool CryptoApiSha256::Create() {
  HCRYPTPROV provider = 0;
  // No key container: hashing needs none, and the default one may be missing or locked.
  if (CryptAcquireContextA(&provider, nullptr, nullptr, PROV_RSA_AES, CRYPT_VERIFYCONTEXT) ==
      FALSE) {
    return false;
  }
  provider_.Reset(provider);

  constexpr HCRYPTKEY kNoKey = 0;
  HCRYPTHASH hash = 0;
  if (CryptCreateHash(provider, CALG_SHA_256, kNoKey, 0, &hash) == FALSE) return false;
  hash_.Reset(hash);
  return true;
}

// There is no hash if Create failed, which Sha256 does not remember.
bool CryptoApiSha256::Update(const std::uint8_t* data, std::uint32_t length) {
  return hash_ && CryptHashData(hash_.Get(), data, length, 0) != FALSE;
}

bool CryptoApiSha256::Finish(std::uint8_t (&digest)[kDigestSize]) {
  DWORD digestSize = kDigestSize;  // in: the capacity; out: the size of the digest
  return hash_ && CryptGetHashParam(hash_.Get(), HP_HASHVAL, digest, &digestSize, 0) != FALSE &&
         digestSize == kDigestSize;
}

bool Sha256::Update(const std::uint8_t* data, std::uint32_t length) {
  // Decided once: the pieces of one digest must not go to different services.
  if (service_ == Service::kNone) {
    const bool hasCng = cng_.Create();
    service_ = hasCng ? Service::kCng : Service::kCryptoApi;
    if (!hasCng && !cryptoApi_.Create()) return false;
  }
  return service_ == Service::kCng ? cng_.Update(data, length) : cryptoApi_.Update(data, length);
}

bool Sha256::Finish(std::uint8_t (&digest)[kDigestSize]) {
  return service_ == Service::kCng ? cng_.Finish(digest) : cryptoApi_.Finish(digest);
}

bool Sha256Digest(const std::uint8_t* data, std::uint32_t length,
                  std::uint8_t (&digest)[kDigestSize]) {
  Sha256 sha256;
  return sha256.Update(data, length) && sha256.Finish(digest);
}

}  // namespace launcher
