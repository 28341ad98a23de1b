// The cipher against libcrypto's, at every length of key.

#include <gtest/gtest.h>
#include <openssl/evp.h>
#include <openssl/provider.h>

#include <memory>

#include "cipher/ecb.h"
#include "support/bytes.h"

namespace launcher {
namespace {

using test::Bytes;

template <auto kFree>
struct Deleter {
  template <class T>
  void operator()(T* object) const {
    kFree(object);
  }
};

// libcrypto reads a block's halves most significant byte first.
Bytes WithWordsTurnedRound(Bytes bytes) {
  for (std::size_t i = 0; i + 4 <= bytes.size(); i += 4) {
    std::swap(bytes[i], bytes[i + 3]);
    std::swap(bytes[i + 1], bytes[i + 2]);
  }
  return bytes;
}

Bytes EncipheredByLibcrypto(const Bytes& key, const Bytes& region) {
  const std::unique_ptr<EVP_CIPHER_CTX, Deleter<EVP_CIPHER_CTX_free>> context(EVP_CIPHER_CTX_new());
  const std::unique_ptr<EVP_CIPHER, Deleter<EVP_CIPHER_free>> cipher(
      EVP_CIPHER_fetch(nullptr, "BF-ECB", nullptr));
  const Bytes input = WithWordsTurnedRound(region);
  Bytes output(region.size());
  int written = 0;
  if (EVP_EncryptInit_ex2(context.get(), cipher.get(), nullptr, nullptr, nullptr) != 1 ||
      EVP_CIPHER_CTX_set_key_length(context.get(), static_cast<int>(key.size())) != 1 ||
      EVP_CIPHER_CTX_set_padding(context.get(), 0) != 1 ||
      EVP_EncryptInit_ex2(context.get(), nullptr, key.data(), nullptr, nullptr) != 1 ||
      EVP_EncryptUpdate(context.get(), output.data(), &written, input.data(),
                        static_cast<int>(input.size())) != 1) {
    return {};
  }
  return WithWordsTurnedRound(output);
}

TEST(BlowfishOracle, AgreesWithLibcryptoForEveryKeyLength) {
  const std::unique_ptr<OSSL_PROVIDER, Deleter<OSSL_PROVIDER_unload>> legacy(
      OSSL_PROVIDER_load(nullptr, "legacy"));
  ASSERT_TRUE(legacy);
  for (std::uint32_t length = kBlowfishMinKeySize; length <= kBlowfishMaxKeySize; ++length) {
    const Bytes key = test::Pattern(length);
    Bytes region = test::Pattern(8 * (length + 1));
    const Bytes expected = EncipheredByLibcrypto(key, region);

    BlowfishContext context;
    BlowfishSetKey(context, key.data(), length);
    EncipherRegion(context, region.data(), static_cast<std::uint32_t>(region.size()));
    EXPECT_EQ(region, expected) << "a key of " << length;
  }
}

}  // namespace
}  // namespace launcher
