// For a digest that the system did not make, or not whole, and that counts as made; and for one of
// the two services that makes another digest.

#include "cipher/sha256.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "platform/posix/faults.h"

static DWORD moreBytes = 0;

// The linker's --wrap redirects the library's calls of CryptGetHashParam to the second of these.
extern "C" BOOL __real__Z17CryptGetHashParammjPhPjj(HCRYPTHASH, DWORD, BYTE*, DWORD*, DWORD);
extern "C" BOOL __wrap__Z17CryptGetHashParammjPhPjj(HCRYPTHASH hash, DWORD parameter, BYTE* value,
                                                    DWORD* size, DWORD flags) {
  const BOOL result = __real__Z17CryptGetHashParammjPhPjj(hash, parameter, value, size, flags);
  *size += moreBytes;
  return result;
}

namespace launcher {
namespace {

TEST(Sha256, IsWholeOrRefused) {
  const std::uint8_t data[5] = {1, 2, 3, 4, 5};
  std::uint8_t digest[kDigestSize];
  std::uint8_t otherDigest[kDigestSize];
  EXPECT_TRUE(Sha256Digest(data, 5, digest));
  posix::FailEveryCall("BCryptCreateHash");
  for (const DWORD more : {~0u, 1u, 0u}) {
    moreBytes = more;
    EXPECT_EQ(Sha256Digest(data, 5, otherDigest), more == 0);
  }
  EXPECT_TRUE(std::equal(digest, std::end(digest), otherDigest));

  for (const char* const call : {"CryptAcquireContextA", "CryptCreateHash"}) {
    Sha256 sha256;
    posix::FailCall(call, 1);
    posix::FailEveryCall("BCryptCreateHash");
    EXPECT_FALSE(sha256.Update(data, 5)) << call;
    EXPECT_FALSE(sha256.Update(data, 5)) << call;
    EXPECT_FALSE(sha256.Finish(digest)) << call;
  }
  posix::StopFailing();
  EXPECT_EQ(posix::OpenObjectCount(), 0);
}

}  // namespace
}  // namespace launcher
