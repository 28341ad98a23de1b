// For a digest that the system did not make, or not whole, and that counts as made.

#include <gtest/gtest.h>

#include "cipher/sha256.h"
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
  std::uint8_t digest[kDigestSize];
  posix::FailEveryCall("BCryptCreateHash");
  for (const DWORD size : {31u, 32u, 33u}) {
    reportedSize = size;
    EXPECT_EQ(Sha256Digest(digest, 5, digest), size == 32) << size;
  }
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
