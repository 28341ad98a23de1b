#include "cipher/ecb.h"

#include <gtest/gtest.h>

#include "cipher/little_endian.h"
#include "support/bytes.h"
#include "support/guarded_buffer.h"

namespace launcher {
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

// Sizes around every stride that a way with several blocks side by side may have.
TEST(Ecb, IsBlockByBlockAtEverySize) {
  const BlowfishContext context = AnyContext();
  for (std::uint32_t blocks = 0; blocks <= 40; ++blocks) {
    const Bytes clear = test::Pattern(blocks * kBlockSize);
    const GuardedBuffer region(clear);
    EncipherRegion(context, region.Data(), region.Size());
    ASSERT_EQ(region.Content(), EncipheredBlockByBlock(context, clear)) << blocks << " blocks";
    DecipherRegion(context, region.Data(), region.Size());
    ASSERT_EQ(region.Content(), clear) << blocks << " blocks";
  }
}

TEST(Ecb, TakesAnyAlignmentAndLeavesItsNeighboursAlone) {
  const BlowfishContext context = AnyContext();
  const Bytes clear = test::Pattern(13 * kBlockSize);
  const Bytes enciphered = EncipheredBlockByBlock(context, clear);
  for (std::size_t offset = 0; offset < 8; ++offset) {
    Bytes memory(offset, 0xEE);
    memory.insert(memory.end(), clear.begin(), clear.end());
    memory.insert(memory.end(), 9, 0xEE);
    Bytes expected(offset, 0xEE);
    expected.insert(expected.end(), enciphered.begin(), enciphered.end());
    expected.insert(expected.end(), 9, 0xEE);

    EncipherRegion(context, memory.data() + offset, static_cast<std::uint32_t>(clear.size()));
    EXPECT_EQ(memory, expected) << "at offset " << offset;
  }
}

}  // namespace
}  // namespace launcher
