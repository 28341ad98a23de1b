// Key set-up and single blocks: for a wrong table, a wrong round, a key length that is taken or
// refused wrongly, and a key that counts as the built-in one.

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
using test::BytesFromHex;

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

TEST(Blowfish, GivesThePublishedVectorsBothWays) {
  const auto vectors = test::ReadDataLines("blowfish_vectors.txt", 3);
  ASSERT_EQ(vectors.size(), 55u);
  for (const auto& vector : vectors) {
    SCOPED_TRACE("key " + vector[0] + ", block " + vector[1]);
    const BlowfishContext context = ContextOf(BytesFromHex(vector[0]));

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
  BlowfishContext pattern;
  std::memset(&pattern, 0xA5, sizeof pattern);
  BlowfishContext context = pattern;

  for (const std::uint32_t length : {0u, 1u, 3u, 57u, 0x80000008u, 0xFFFFFFFFu}) {
    BlowfishSetKey(context, key.data(), length);
    EXPECT_TRUE(AreEqual(context, pattern)) << "a key of " << length;
  }
  BlowfishSetKey(context, nullptr, 16);
  EXPECT_TRUE(AreEqual(context, pattern)) << "a null key";

  for (const std::uint32_t length : {4u, 56u}) {
    context = pattern;
    BlowfishSetKey(context, key.data(), length);
    EXPECT_FALSE(AreEqual(context, pattern)) << "a key of " << length;
  }
}

TEST(Blowfish, HasTheBuiltInKeysContextFromTheCompiler) {
  const Bytes builtIn = test::BytesOf("7E3A90C2D1F86B45");
  EXPECT_TRUE(AreEqual(kBuiltInKeyContext, ContextOf(builtIn)));

  BlowfishContext own;
  EXPECT_EQ(&ContextForKey(builtIn.data(), 16, own), &kBuiltInKeyContext);
  for (std::uint32_t length = kBlowfishMinKeySize; length <= kBlowfishMaxKeySize; ++length) {
    const Bytes key = test::Pattern(length);
    ASSERT_EQ(&ContextForKey(key.data(), length, own), &own);
    EXPECT_TRUE(AreEqual(own, ContextOf(key))) << length;
  }
  // Keys that are a part of the built-in one, or begin like it, are other keys.
  for (const char* const text : {"7E3A90C2D1F86B4", "7E3A90C2D1F86B450", "7E3A90C2D1F86B44"}) {
    const Bytes key = test::BytesOf(text);
    ContextForKey(key.data(), static_cast<std::uint32_t>(key.size()), own);
    EXPECT_TRUE(AreEqual(own, ContextOf(key))) << text;
  }
}

TEST(Blowfish, RepeatsAShortKey) {
  EXPECT_TRUE(AreEqual(ContextOf({1, 2, 3, 4}), ContextOf({1, 2, 3, 4, 1, 2, 3, 4})));
}

}  // namespace
}  // namespace launcher
