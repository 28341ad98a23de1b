// For faults of the cipher's kernels and of the code that calls them in stretches: a size at which
// a kernel changes its step, bytes outside the region, a byte of the digest that is not compared.

#include "cipher/ecb.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>

#include "cipher/built_in_key.h"
#include "cipher/ecb_kernels.h"
#include "launcher_dll.h"
#include "support/bytes.h"
#include "support/guarded_buffer.h"
#include "support/imitated_cpu.h"

namespace launcher {
namespace {

using test::Bytes;
using test::GuardedBuffer;

// The kernels' steps are 64, 1024 and 2048 bytes.
TEST(EcbKernels, AreBlockByBlockAtEverySizeAndAlignment) {
  const Bytes clear = test::Pattern(430 * kBlockSize);
  Bytes enciphered = clear;
  for (std::size_t i = 0; i < clear.size(); i += kBlockSize) {
    std::uint32_t left = LoadLittleEndian(&clear[i]);
    std::uint32_t right = LoadLittleEndian(&clear[i + 4]);
    BlowfishEncipherBlock(kBuiltInKeyContext, left, right);
    StoreLittleEndian(&enciphered[i], left);
    StoreLittleEndian(&enciphered[i + 4], right);
  }
  constexpr std::size_t kBefore = 70;
  for (std::size_t size = 0; size <= clear.size(); size += kBlockSize) {
    // Once directly before a page that is guarded, and once with other bytes after it.
    for (const std::size_t after : {std::size_t{0}, size / kBlockSize % 70 + 1}) {
      const GuardedBuffer area(kBefore + size + after);
      Bytes expected = area.Content();
      std::copy_n(enciphered.begin(), size, &expected[kBefore]);
      std::uint8_t* const region = area.Data() + kBefore;
      for (const EcbKernel& kernel : kEcbKernels) {
        if (!kernel.runsOn(ThisCpu())) continue;
        std::copy_n(clear.begin(), size, region);
        kernel.transform(kBuiltInKeyContext.p, kBuiltInKeyContext.s, region, size);
        ASSERT_EQ(area.Content(), expected) << kernel.name << ", " << size << ", " << after;
      }
    }
  }
  for (const EcbKernel& kernel : kEcbKernels) {
    if (!kernel.runsOn(ThisCpu())) GTEST_SKIP() << kernel.name << ": not on this processor";
  }
}

TEST(EcbKernels, AreTakenAsTheProcessorAllows) {
  CpuFeatures cpu;
  EXPECT_EQ(FastestEcbKernel(cpu).transform, &TransformSideBySide);
  cpu.hasAvx512Vbmi = true;
  EXPECT_EQ(FastestEcbKernel(cpu).transform, &TransformByBytePlanes);
}

std::uint32_t DecodedSize(Bytes& block) {
  const Bytes key = test::BytesOf("7E3A90C2D1F86B45");
  std::uint32_t size = 0;
  std::uint32_t offset = 0;
  file_cipher_decode(block.data(), static_cast<std::uint32_t>(block.size()), key.data(), 16, &size,
                     &offset, nullptr);
  return size;
}

// Sizes around the stretch of 64 KiB, which begins with 36 bytes of length and digest; on this
// processor and on one without extensions.
TEST(EcbKernels, MakeTheSameContainers) {
  for (const std::uint32_t size : {1u, 65499u, 65500u, 65501u, 131036u, 200000u}) {
    SCOPED_TRACE(size);
    const Bytes payload = test::Pattern(size);
    Bytes block(file_cipher_get_encode_size(size));
    ASSERT_EQ(file_cipher_encode(payload.data(), size, block.data()), 0);

    const test::ImitatedCpu plain({});
    Bytes plainBlock(block.size(), 0xFF);
    ASSERT_EQ(file_cipher_encode(payload.data(), size, plainBlock.data()), 0);
    ASSERT_EQ(plainBlock, block);
    ASSERT_EQ(DecodedSize(block), size);
    plainBlock[8] ^= 1;  // damaged, and deciphered as a whole
    ASSERT_EQ(DecodedSize(plainBlock), 0u);
    for (const Bytes& deciphered : {block, plainBlock}) {
      ASSERT_TRUE(std::equal(payload.begin(), payload.end(), &deciphered[40]));
    }
  }
}

// Changing a byte of the container changes eight bytes of the digest. Here only one changes.
TEST(Digest, IsComparedByteForByte) {
  Bytes block(file_cipher_get_encode_size(5));
  ASSERT_EQ(file_cipher_encode(test::Pattern(5).data(), 5, block.data()), 0);
  const auto regionSize = static_cast<std::uint32_t>(block.size() - 4);
  DecipherRegion(kBuiltInKeyContext, &block[4], regionSize);
  for (std::size_t i = 0; i < 32; ++i) {
    Bytes forged = block;
    forged[8 + i] ^= 1;
    EncipherRegion(kBuiltInKeyContext, &forged[4], regionSize);
    EXPECT_EQ(DecodedSize(forged), 0u) << i;
  }
}

}  // namespace
}  // namespace launcher
