// For faults of the key set-up (a length of key, a wrong table, a key taken for the built-in one)
// and of the rounds: blocks that others enciphered.

#include "cipher/blowfish.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "cipher/built_in_key.h"
#include "support/bytes.h"
#include "support/data_file.h"

namespace launcher {
namespace {

using test::Bytes;

BlowfishContext ContextOf(const Bytes& key) {
  BlowfishContext context;
  BlowfishSetKey(context, key.data(), static_cast<std::uint32_t>(key.size()));
  return context;
}

bool AreEqual(const BlowfishContext& a, const BlowfishContext& b) {
  return std::memcmp(&a, &b, sizeof a) == 0;
}

TEST(Blowfish, GivesTheBlocksOfOthersBothWays) {
  auto vectors = test::ReadDataLines("blowfish_vectors.txt", 3);
  const auto everyKeyLength = test::ReadDataLines("blowfish_key_vectors.txt", 3);
  vectors.insert(vectors.end(), everyKeyLength.begin(), everyKeyLength.end());
  ASSERT_EQ(vectors.size(), 55u + 53u);
  for (const auto& vector : vectors) {
    SCOPED_TRACE("key " + vector[0] + ", block " + vector[1]);
    const Bytes key = test::BytesFromHex(vector[0]);
    const BlowfishContext context = ContextOf(key);
    const std::uint64_t clear = std::stoull(vector[1], nullptr, 16);
    auto left = static_cast<std::uint32_t>(clear >> 32);
    auto right = static_cast<std::uint32_t>(clear);
    BlowfishEncipherBlock(context, left, right);
    EXPECT_EQ(std::uint64_t{left} << 32 | right, std::stoull(vector[2], nullptr, 16));
    BlowfishDecipherBlock(context, left, right);
    EXPECT_EQ(std::uint64_t{left} << 32 | right, clear);
  }
}

TEST(Blowfish, LeavesTheContextAloneForARefusedKey) {
  const Bytes key = test::Pattern(64);
  const BlowfishContext before = ContextOf(key);
  BlowfishContext context = before;
  for (const std::uint32_t length : {0u, 3u, 57u, 64u, 0x80000008u, 0xFFFFFFFFu}) {
    BlowfishSetKey(context, key.data(), length);
    EXPECT_TRUE(AreEqual(context, before)) << length;
  }
  BlowfishSetKey(context, nullptr, 16);
  EXPECT_TRUE(AreEqual(context, before));
}

TEST(Blowfish, KnowsTheBuiltInKeyFromEveryOther) {
  const std::string builtIn = "7E3A90C2D1F86B45";
  EXPECT_TRUE(AreEqual(kBuiltInKeyContext, ContextOf(test::BytesOf(builtIn))));
  BlowfishContext own;
  for (const std::string& text : {builtIn, builtIn.substr(0, 15), builtIn + '\0', builtIn + builtIn,
                                  builtIn.substr(0, 15) + '4', '6' + builtIn.substr(1)}) {
    const Bytes key = test::BytesOf(text);
    const BlowfishContext& context =
        ContextForKey(key.data(), static_cast<std::uint32_t>(key.size()), own);
    EXPECT_EQ(&context == &kBuiltInKeyContext, text == builtIn) << text;
    EXPECT_TRUE(AreEqual(context, ContextOf(key))) << text;
  }
}

}  // namespace
}  // namespace launcher
