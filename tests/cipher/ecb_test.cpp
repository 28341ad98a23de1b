#include "cipher/ecb.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <ostream>
#include <string>

#include "cipher/ecb_kernels.h"
#include "launcher_dll.h"
#include "support/bytes.h"
#include "support/guarded_buffer.h"
#include "support/imitated_cpu.h"

namespace launcher {

// For the names of the tests.
void PrintTo(const EcbKernel& kernel, std::ostream* output) { *output << kernel.name; }

namespace {

using test::Bytes;
using test::GuardedBuffer;

BlowfishContext AnyContext() {
  const Bytes key = test::Pattern(16);
  BlowfishContext context;
  BlowfishSetKey(context, key.data(), 16);
  return context;
}

Bytes EncipheredBlockByBlock(const BlowfishContext& context, Bytes bytes) {
  for (std::size_t i = 0; i < bytes.size(); i += kBlockSize) {
    std::uint32_t left = LoadLittleEndian(&bytes[i]);
    std::uint32_t right = LoadLittleEndian(&bytes[i + 4]);
    BlowfishEncipherBlock(context, left, right);
    StoreLittleEndian(&bytes[i], left);
    StoreLittleEndian(&bytes[i + 4], right);
  }
  return bytes;
}

TEST(Ecb, DeciphersWhatItEnciphers) {
  const BlowfishContext context = AnyContext();
  const Bytes clear = test::Pattern(2000);
  Bytes region = clear;
  EncipherRegion(context, region.data(), 2000);
  EXPECT_EQ(region, EncipheredBlockByBlock(context, clear));
  DecipherRegion(context, region.data(), 2000);
  EXPECT_EQ(region, clear);
}

class EcbKernels : public testing::TestWithParam<EcbKernel> {
 protected:
  void SetUp() override {
    if (!GetParam().runsOn(ThisCpu())) {
      GTEST_SKIP() << "this processor cannot run the kernel '" << GetParam().name << "'";
    }
  }

  const BlowfishContext context_ = AnyContext();
};

INSTANTIATE_TEST_SUITE_P(Each, EcbKernels, testing::ValuesIn(kEcbKernels), [](const auto& kernel) {
  std::string name = kernel.param.name;
  std::replace(name.begin(), name.end(), ' ', '_');
  return name;
});

// Sizes inside, at and past each kernel's strides, which are 64, 1024 and 2048 bytes.
TEST_P(EcbKernels, AreBlockByBlockAtEverySize) {
  const Bytes text = test::Pattern(430 * kBlockSize);
  const Bytes expected = EncipheredBlockByBlock(context_, text);
  for (std::size_t size = 0; size <= text.size(); size += kBlockSize) {
    const auto end = static_cast<std::ptrdiff_t>(size);
    const GuardedBuffer region(Bytes(text.begin(), text.begin() + end));
    GetParam().transform(context_.p, context_.s, region.Data(), size);
    ASSERT_EQ(region.Content(), Bytes(expected.begin(), expected.begin() + end)) << size;
  }
}

TEST_P(EcbKernels, TakeAnyAlignmentAndLeaveTheirNeighboursAlone) {
  const Bytes clear = test::Pattern(3500 / kBlockSize * kBlockSize);
  const Bytes enciphered = EncipheredBlockByBlock(context_, clear);
  for (std::size_t offset = 0; offset <= 64; ++offset) {
    Bytes memory(offset, 0xEE);
    memory.insert(memory.end(), clear.begin(), clear.end());
    memory.insert(memory.end(), 70, 0xEE);
    Bytes expected(offset, 0xEE);
    expected.insert(expected.end(), enciphered.begin(), enciphered.end());
    expected.insert(expected.end(), 70, 0xEE);

    GetParam().transform(context_.p, context_.s, memory.data() + offset, clear.size());
    ASSERT_EQ(memory, expected) << "at offset " << offset;
  }
}

TEST(EcbKernels, AreTakenAsTheProcessorAllows) {
  CpuFeatures cpu;
  EXPECT_EQ(FastestEcbKernel(cpu).transform, &TransformSideBySide);
  cpu.hasAvx512Vbmi = true;
  EXPECT_EQ(FastestEcbKernel(cpu).transform, &TransformByBytePlanes);
}

// Whole containers around the stretch of 64 KiB, on this processor and on one that can do nothing.
TEST(EcbKernels, MakeTheSameContainers) {
  const Bytes key = test::BytesOf("7E3A90C2D1F86B45");
  for (const std::uint32_t size : {1u, 65499u, 65500u, 65501u, 131036u, 200000u}) {
    SCOPED_TRACE(size);
    const Bytes payload = test::Pattern(size);
    Bytes block(file_cipher_get_encode_size(size));
    ASSERT_EQ(file_cipher_encode(payload.data(), size, block.data()), 0);

    const test::ImitatedCpu plain({});
    Bytes plainBlock(block.size());
    ASSERT_EQ(file_cipher_encode(payload.data(), size, plainBlock.data()), 0);
    ASSERT_EQ(plainBlock, block);
    std::uint32_t foundSize = 0;
    std::uint32_t offset = 0;
    ASSERT_EQ(file_cipher_decode(block.data(), static_cast<std::uint32_t>(block.size()), key.data(),
                                 16, &foundSize, &offset, nullptr),
              0);
    ASSERT_EQ(foundSize, size);
    ASSERT_TRUE(std::equal(payload.begin(), payload.end(), block.data() + offset));
  }
}

}  // namespace
}  // namespace launcher
