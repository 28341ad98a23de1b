// The digest by both services of the system: for a wrong one, and for one of another length.

#include "cipher/sha256.h"

#include <gtest/gtest.h>

#include "support/bytes.h"

#if !defined(_WIN32)
namespace {
DWORD missingBytes = 0;
}

// The linker replaces the native layer's function, so that it can report another length.
extern "C" {
BOOL __real__Z17CryptGetHashParammjPhPjj(HCRYPTHASH hash, DWORD parameter, BYTE* data, DWORD* size,
                                         DWORD flags);
BOOL __wrap__Z17CryptGetHashParammjPhPjj(HCRYPTHASH hash, DWORD parameter, BYTE* data, DWORD* size,
                                         DWORD flags) {
  const BOOL result = __real__Z17CryptGetHashParammjPhPjj(hash, parameter, data, size, flags);
  *size -= missingBytes;
  return result;
}
}
#endif

namespace launcher {
namespace {

using test::Bytes;

template <class Service>
Bytes DigestBy(const Bytes& message) {
  Service service;
  std::uint8_t digest[kDigestSize] = {};
  EXPECT_TRUE(service.Create());
  EXPECT_TRUE(service.Update(message.data(), static_cast<std::uint32_t>(message.size())));
  EXPECT_TRUE(service.Finish(digest));
  return Bytes(digest, digest + sizeof digest);
}

// The examples of NIST's "Secure Hash Standard" (FIPS 180-4), and the empty message.
TEST(Sha256, GivesThePublishedDigests) {
  const std::pair<std::string, const char*> cases[] = {
      {"", "e3b0c44298fc1c149afbf4c8996fb92427ae41e4649b934ca495991b7852b855"},
      {"abc", "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad"},
      {"abcdbcdecdefdefgefghfghighijhijkijkljklmklmnlmnomnopnopq",
       "248d6a61d20638b8e5c026930c3e6039a33ce45964ff2167f6ecedd419db06c1"},
      {std::string(1000000, 'a'),
       "cdc76e5c9914fb9281a1c7e284d73e67f1809a48a497200e046d39ccc7112cd0"},
  };
  for (const auto& [message, digits] : cases) {
    const Bytes bytes = test::BytesOf(message);
    std::uint8_t digest[kDigestSize];
    ASSERT_TRUE(Sha256Digest(bytes.data(), static_cast<std::uint32_t>(bytes.size()), digest));
    EXPECT_EQ(Bytes(digest, digest + sizeof digest), test::BytesFromHex(digits));
    EXPECT_EQ(DigestBy<CngSha256>(bytes), test::BytesFromHex(digits));
    EXPECT_EQ(DigestBy<CryptoApiSha256>(bytes), test::BytesFromHex(digits));
  }
}

#if !defined(_WIN32)
TEST(Sha256, HasTheLengthThatTheSystemReports) {
  std::uint8_t digest[kDigestSize];
  CryptoApiSha256 service;
  ASSERT_TRUE(service.Create() && service.Update(digest, 0));
  missingBytes = 1;
  EXPECT_FALSE(service.Finish(digest));
  missingBytes = 0;
}
#endif

}  // namespace
}  // namespace launcher
