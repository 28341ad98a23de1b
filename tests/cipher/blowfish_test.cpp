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

std::uint32_t Half(const std::string& digits, std::size_t offset) {
  return static_cast<std::uint32_t>(std::stoul(digits.substr(offset, 8), nullptr, 16));
}

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
    const auto keyLength = static_cast<std::uint32_t>(key.size());
    BlowfishContext own;
    const BlowfishContext& context = ContextForKey(key.data(), keyLength, own);
    EXPECT_EQ(&context, &own);

    std::uint32_t left = Half(vector[1], 0);
    std::uint32_t right = Half(vector[1], 8);
    BlowfishEncipherBlock(context, left, right);
    EXPECT_EQ(left, Half(vector[2], 0));
    EXPECT_EQ(right, Half(vector[2], 8));

    BlowfishDecipherBlock(context, left, right);
    EXPECT_EQ(left, Half(vector[1], 0));
    EXPECT_EQ(right, Half(vector[1], 8));
  }
}

TEST(Blowfish, LeavesTheContextAloneForARefusedKey) {
  const Bytes key = test::Pattern(64);
  const BlowfishContext before = ContextOf(key);
  BlowfishContext context = before;
  for (const std::uint32_t length : {0u, 3u, 57u, 64u, 0x80000008u, 0xFFFFFFFFu}) {
    BlowfishSetKey(context, key.data(), length);
    EXPECT_TRUE(AreEqual(context, before)) << "a key of " << length;
  }
  BlowfishSetKey(context, nullptr, 16);
  EXPECT_TRUE(AreEqual(context, before)) << "a null key";
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
