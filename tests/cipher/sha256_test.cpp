// For a digest by either of the system's services that is not SHA-256, or not of all its pieces.

#include "cipher/sha256.h"

#include <gtest/gtest.h>

#include "support/bytes.h"

namespace launcher {
namespace {

template <class Service>
std::vector<std::uint8_t> DigestOfAbc() {
  const test::Bytes message = {'a', 'b', 'c'};
  Service service;
  std::uint8_t digest[kDigestSize] = {};
  EXPECT_TRUE(service.Create());
  EXPECT_TRUE(service.Update(message.data(), 2));
  EXPECT_TRUE(service.Update(message.data() + 2, 0));
  EXPECT_TRUE(service.Update(message.data() + 2, 1));
  EXPECT_TRUE(service.Finish(digest));
  return {digest, digest + sizeof digest};
}

// An example of NIST's "Secure Hash Standard" (FIPS 180-4).
TEST(Sha256, GivesThePublishedDigest) {
  const test::Bytes expected =
      test::BytesFromHex("ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad");
  EXPECT_EQ(DigestOfAbc<CngSha256>(), expected);
  EXPECT_EQ(DigestOfAbc<CryptoApiSha256>(), expected);
}

}  // namespace
}  // namespace launcher
