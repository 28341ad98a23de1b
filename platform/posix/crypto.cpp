// The six calls of CryptoAPI that make a SHA-256 digest, over libcrypto.

#include <openssl/evp.h>

#include "platform/posix/faults.h"

namespace launcher::posix {
namespace {

// A provider holds nothing here; any value but 0 does.
constexpr HCRYPTPROV kProvider = 1;

EVP_MD_CTX* ContextOf(HCRYPTHASH hash) { return reinterpret_cast<EVP_MD_CTX*>(hash); }

}  // namespace
}  // namespace launcher::posix

BOOL CryptAcquireContextA(HCRYPTPROV* provider, const char* container, const char* name, DWORD type,
                          DWORD flags) {
  using namespace launcher::posix;
  if (MustFail(__func__)) return FALSE;
  if (container != nullptr || name != nullptr || type != PROV_RSA_AES ||
      flags != CRYPT_VERIFYCONTEXT) {
    return Fail(kErrorInvalidParameter);
  }
  CountObject(1);
  *provider = kProvider;
  return TRUE;
}

BOOL CryptCreateHash(HCRYPTPROV provider, ALG_ID algorithm, HCRYPTKEY key, DWORD flags,
                     HCRYPTHASH* hash) {
  using namespace launcher::posix;
  if (MustFail(__func__)) return FALSE;
  if (provider != kProvider || algorithm != CALG_SHA_256 || key != 0 || flags != 0) {
    return Fail(kErrorInvalidParameter);
  }
  EVP_MD_CTX* const context = EVP_MD_CTX_new();
  if (context == nullptr || EVP_DigestInit_ex(context, EVP_sha256(), nullptr) != 1) {
    EVP_MD_CTX_free(context);
    return Fail(kErrorNotEnoughMemory);
  }
  CountObject(1);
  *hash = reinterpret_cast<HCRYPTHASH>(context);
  return TRUE;
}

BOOL CryptHashData(HCRYPTHASH hash, const BYTE* data, DWORD size, DWORD flags) {
  using namespace launcher::posix;
  if (MustFail(__func__)) return FALSE;
  if (flags != 0) return Fail(kErrorInvalidParameter);
  return EVP_DigestUpdate(ContextOf(hash), data, size) == 1 ? TRUE : Fail(kErrorGeneralFailure);
}

BOOL CryptGetHashParam(HCRYPTHASH hash, DWORD parameter, BYTE* value, DWORD* size, DWORD flags) {
  using namespace launcher::posix;
  if (MustFail(__func__)) return FALSE;
  constexpr DWORD kDigestSize = 32;
  if (parameter != HP_HASHVAL || flags != 0 || *size < kDigestSize) {
    return Fail(kErrorInvalidParameter);
  }
  unsigned int written = 0;
  if (EVP_DigestFinal_ex(ContextOf(hash), value, &written) != 1) return Fail(kErrorGeneralFailure);
  *size = written;
  return TRUE;
}

BOOL CryptDestroyHash(HCRYPTHASH hash) {
  using namespace launcher::posix;
  EVP_MD_CTX_free(ContextOf(hash));
  CountObject(-1);
  return MustFail(__func__) ? FALSE : TRUE;
}

BOOL CryptReleaseContext(HCRYPTPROV provider, DWORD flags) {
  using namespace launcher::posix;
  if (provider != kProvider || flags != 0) return Fail(kErrorInvalidParameter);
  CountObject(-1);
  return MustFail(__func__) ? FALSE : TRUE;
}
