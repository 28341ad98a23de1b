// For a digest that the system did not make, or not whole, and that counts as made; and for one of
// the two services that makes another digest.

#include "cipher/sha256.h"

#include <gtest/gtest.h>

#include <cstring>

#include "platform/posix/faults.h"

namespace {

DWORD reportedSize = 0;

}  // namespace

// The linker's --wrap redirects the library's calls of CryptGetHashParam to the first of these.
extern "C" BOOL __real__Z17CryptGetHashParammjPhPjj(HCRYPTHASH, DWORD, BYTE*, DWORD*, DWORD);
extern "C" BOOL __wrap__Z17CryptGetHashParammjPhPjj(HCRYPTHASH hash, DWORD parameter, BYTE* value,
                                                    DWORD* size, DWORD flags) {
  const BOOL result = __real__Z17CryptGetHashParammjPhPjj(hash, parameter, value, size, flags);
  if (reportedSize != 0) *size = reportedSize;
  return result;
}

namespace launcher {
namespace {

TEST(Sha256, IsOfTheSizeThatTheSystemReports) {
  const std::uint8_t data[5] = {1, 2, 3, 4, 5};
  std::uint8_t digest[kDigestSize];
  std::uint8_t otherDigest[kDigestSize];
  EXPECT_TRUE(Sha256Digest(data, 5, digest));
  posix::FailEveryCall("BCryptCreateHash");
  for (const DWORD size : {31u, 33u, 32u}) {
    reportedSize = size;
    EXPECT_EQ(Sha256Digest(data, 5, otherDigest), size == 32) << size;
  }
  EXPECT_EQ(std::memcmp(digest, otherDigest, kDigestSize), 0) << "of the other service";
  reportedSize = 0;
  posix::StopFailing();
}

TEST(Sha256, IsLostWithAPieceThatTheSystemRefuses) {
  const std::uint8_t data[5] = {};
  std::uint8_t digest[kDigestSize];
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
