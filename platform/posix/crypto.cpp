// The calls of CNG and of CryptoAPI that compute a SHA-256 digest, by libcrypto. Anything that the
// library does not ask for is refused, so that a wrong argument fails natively too.

#include <openssl/evp.h>

#include "platform/posix/faults.h"

namespace launcher::posix {
namespace {

// A provider owns nothing here. Its handle can be any value except 0.
constexpr HCRYPTPROV kProvider = 1;
constexpr std::uintptr_t kSha256Handle = 0x41;  // BCRYPT_SHA256_ALG_HANDLE
constexpr DWORD kDigestSize = 32;

constexpr NTSTATUS kSuccess = 0;
constexpr NTSTATUS kUnsuccessful = -0x3FFFFFFF;      // STATUS_UNSUCCESSFUL
constexpr NTSTATUS kInvalidParameter = -0x3FFFFFF3;  // STATUS_INVALID_PARAMETER

EVP_MD_CTX* ContextOf(void* hash) { return static_cast<EVP_MD_CTX*>(hash); }
EVP_MD_CTX* ContextOf(HCRYPTHASH hash) { return reinterpret_cast<EVP_MD_CTX*>(hash); }

// Returns null if memory runs out.
EVP_MD_CTX* CreateContext() {
  EVP_MD_CTX* const context = EVP_MD_CTX_new();
  if (context == nullptr || EVP_DigestInit_ex(context, EVP_sha256(), nullptr) != 1) {
    EVP_MD_CTX_free(context);
    return nullptr;
  }
  CountObject(1);
  return context;
}

void DestroyContext(EVP_MD_CTX* context) {
  EVP_MD_CTX_free(context);
  CountObject(-1);
}

}  // namespace
}  // namespace launcher::posix

NTSTATUS BCryptCreateHash(BCRYPT_ALG_HANDLE algorithm, BCRYPT_HASH_HANDLE* hash, BYTE* object,
                          DWORD objectSize, BYTE* secret, DWORD secretSize, DWORD flags) {
  using namespace launcher::posix;
  if (MustFail(__func__)) return kUnsuccessful;
  if (reinterpret_cast<std::uintptr_t>(algorithm) != kSha256Handle || object != nullptr ||
      objectSize != 0 || secret != nullptr || secretSize != 0 || flags != 0) {
    return kInvalidParameter;
  }
  EVP_MD_CTX* const context = CreateContext();
  if (context == nullptr) return kUnsuccessful;
  *hash = context;
  return kSuccess;
}

NTSTATUS BCryptHashData(BCRYPT_HASH_HANDLE hash, BYTE* data, DWORD size, DWORD flags) {
  using namespace launcher::posix;
  if (MustFail(__func__)) return kUnsuccessful;
  if (flags != 0) return kInvalidParameter;
  return EVP_DigestUpdate(ContextOf(hash), data, size) == 1 ? kSuccess : kUnsuccessful;
}

NTSTATUS BCryptFinishHash(BCRYPT_HASH_HANDLE hash, BYTE* digest, DWORD size, DWORD flags) {
  using namespace launcher::posix;
  if (MustFail(__func__)) return kUnsuccessful;
  if (size != kDigestSize || flags != 0) return kInvalidParameter;
  return EVP_DigestFinal_ex(ContextOf(hash), digest, nullptr) == 1 ? kSuccess : kUnsuccessful;
}

NTSTATUS BCryptDestroyHash(BCRYPT_HASH_HANDLE hash) {
  using namespace launcher::posix;
  DestroyContext(ContextOf(hash));
  return MustFail(__func__) ? kUnsuccessful : kSuccess;
}

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
  EVP_MD_CTX* const context = CreateContext();
  if (context == nullptr) return Fail(kErrorNotEnoughMemory);
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
  DestroyContext(ContextOf(hash));
  return MustFail(__func__) ? FALSE : TRUE;
}

BOOL CryptReleaseContext(HCRYPTPROV provider, DWORD flags) {
  using namespace launcher::posix;
  if (provider != kProvider || flags != 0) return Fail(kErrorInvalidParameter);
  CountObject(-1);
  return MustFail(__func__) ? FALSE : TRUE;
}
