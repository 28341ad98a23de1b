// file_cipher_encode and file_cipher_decode: for a container that differs from the format, a
// damaged one that passes, reads and writes outside the buffers, and outputs that a failure
// touches.

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <string>

#include "launcher_dll.h"
#include "support/bytes.h"
#include "support/known_containers.h"

namespace launcher {
namespace {

using test::Bytes;
using test::Decoding;
using test::GuardedBuffer;
using test::KnownContainer;

Decoding Decode(std::uint8_t* block, std::size_t blockSize, const Bytes& key,
                const char* prefix = nullptr) {
  Decoding decoding;
  decoding.result = file_cipher_decode(block, static_cast<std::uint32_t>(blockSize), key.data(),
                                       static_cast<std::int32_t>(key.size()), &decoding.size,
                                       &decoding.offset, prefix);
  return decoding;
}

TEST(Container, SizesAreRoundedUpToWholeBlocks) {
  struct Case {
    std::uint32_t payloadSize;
    std::uint32_t containerSize;
    std::uint32_t wrappingSize;
  };
  const Case cases[] = {
      {0, 44, 44},
      {1, 44, 44},
      {4, 44, 44},
      {5, 52, 52},
      {2048, 2092, 2092},
      {0x7FFFFFFF, 0x8000002C, 0x8000002C},
      {0x80000000, 0, 0x8000002C},
      {0xFFFFFFD5, 0, 4},
      {0xFFFFFFFF, 0, 44},
  };
  for (const Case& sized : cases) {
    EXPECT_EQ(file_cipher_get_encode_size(sized.payloadSize), sized.containerSize);
    EXPECT_EQ(QX_GetEncodeDataSize(sized.payloadSize), sized.wrappingSize);
  }
}

TEST(Container, IsByteForByteWhatOpensslMakes) {
  int count = 0;
  for (const KnownContainer& known : test::KnownContainers()) {
    if (!known.isMadeByEncoding) continue;
    SCOPED_TRACE(known.name);
    const GuardedBuffer payload(known.payload);
    const GuardedBuffer output(known.container.size());
    EXPECT_EQ(file_cipher_encode(payload.Data(), payload.Size(), output.Data()), 0);
    EXPECT_EQ(output.Content(), known.container);
    EXPECT_EQ(payload.Content(), known.payload);
    ++count;
  }
  EXPECT_EQ(count, 17);
}

TEST(Container, IsDecodedInPlace) {
  for (const KnownContainer& known : test::KnownContainers()) {
    SCOPED_TRACE(known.name);
    const GuardedBuffer block(known.container);
    EXPECT_EQ(Decode(block.Data(), block.Size(), known.key, known.prefix.c_str()), known.decoding);
    test::ExpectDecodedInPlace(block, known);
  }
}

TEST(Container, IsRefusedUnchangedForAWrongKeyLength) {
  const KnownContainer known = test::KnownContainerNamed("size-4");
  const Bytes key(64, 'k');
  for (const std::int32_t length : {-0x7FFFFFFF - 1, -4, 0, 0x7FFFFFFF}) {
    const GuardedBuffer block(known.container);
    std::uint32_t size = 9;
    std::uint32_t offset = 9;
    EXPECT_EQ(
        file_cipher_decode(block.Data(), block.Size(), key.data(), length, &size, &offset, nullptr),
        QX_CIPHER_FAILED);
    EXPECT_EQ(size + offset, 18u);
    EXPECT_EQ(block.Content(), known.container) << "a key of " << length;
  }
}

TEST(Container, TakesNoNull) {
  const KnownContainer known = test::KnownContainerNamed("size-4");
  const GuardedBuffer block(known.container);
  std::uint8_t* const data = block.Data();
  const std::uint8_t* const key = known.key.data();
  std::uint32_t number = 0;
  EXPECT_EQ(file_cipher_decode(nullptr, 44, key, 16, &number, &number, nullptr), 7);
  EXPECT_EQ(file_cipher_decode(data, 44, nullptr, 16, &number, &number, nullptr), 7);
  EXPECT_EQ(file_cipher_decode(data, 44, key, 16, nullptr, &number, nullptr), 7);
  EXPECT_EQ(file_cipher_decode(data, 44, key, 16, &number, nullptr, nullptr), 7);
  EXPECT_EQ(block.Content(), known.container);

  EXPECT_EQ(file_cipher_encode(nullptr, 4, data), 7);
  EXPECT_EQ(file_cipher_encode(data, 4, nullptr), 7);
  EXPECT_EQ(file_cipher_encode(data, 0, data), 7);
  EXPECT_EQ(file_cipher_encode(data, 0x80000000, data), 7);
  EXPECT_EQ(file_cipher_encode(data, 0xFFFFFFFF, data), 7);
  EXPECT_EQ(block.Content(), known.container);
}

// Enciphers whole blocks with the built-in key, as a payload whose blocks they are.
Bytes Enciphered(const Bytes& blocks) {
  Bytes payload(4);
  payload.insert(payload.end(), blocks.begin(), blocks.end());
  const auto size = static_cast<std::uint32_t>(payload.size());
  Bytes container(file_cipher_get_encode_size(size));
  file_cipher_encode(payload.data(), size, container.data());
  const auto begin = container.begin() + 44;
  return Bytes(begin, begin + static_cast<std::ptrdiff_t>(blocks.size()));
}

// A changed byte of the container changes its whole block, so the digest is changed before it is
// enciphered. It begins with a zero byte, which would end a comparison of texts.
TEST(Container, IsRefusedForAnyWrongByteOfTheDigest) {
  const Bytes key = test::BytesOf("7E3A90C2D1F86B45");
  Bytes plain(52);
  for (std::uint32_t number = 0; plain[8] != 0 || plain[0] == 0; ++number) {
    std::uint8_t payload[12] = {};
    std::memcpy(payload, &number, sizeof number);
    ASSERT_EQ(file_cipher_encode(payload, sizeof payload, plain.data()), 0);
    ASSERT_EQ(Decode(plain.data(), plain.size(), key), (Decoding{0, 12, 40}));
  }
  for (std::size_t i = 4; i <= 40; ++i) {
    Bytes blocks(plain.begin() + 4, plain.end());
    if (i < 40) blocks[i - 4] ^= 1;
    Bytes block = test::BytesOf("BFBR");
    const Bytes enciphered = Enciphered(blocks);
    block.insert(block.end(), enciphered.begin(), enciphered.end());
    EXPECT_EQ(Decode(block.data(), block.size(), key),
              i < 40 ? Decoding{QX_CIPHER_FAILED} : (Decoding{0, 12, 40}))
        << "byte " << i;
  }
}

// The payload ends at unreadable memory.
TEST(Container, SkipsAPrefixThatThePayloadBeginsWith) {
  const std::pair<std::string, std::int32_t> cases[] = {
      {"", 0},           {"abc", 3},           {"abcdefghijkl", 12}, {"abcdefghijkk", -1},
      {"bcdefghij", -1}, {"abcdefghijklm", -1}};
  for (const auto& [prefix, skipped] : cases) {
    SCOPED_TRACE(prefix);
    const GuardedBuffer block(52);
    file_cipher_encode(reinterpret_cast<const std::uint8_t*>("abcdefghijkl"), 12, block.Data());
    const std::uint32_t length = skipped < 0 ? 0 : static_cast<std::uint32_t>(skipped);
    EXPECT_EQ(Decode(block.Data(), 52, test::BytesOf("7E3A90C2D1F86B45"), prefix.c_str()),
              (Decoding{skipped < 0 ? QX_CIPHER_FAILED : 0, 12 - length, 40 + length}));
  }
}

TEST(Container, MayTakeThePlaceOfItsPayload) {
  const KnownContainer known = test::KnownContainerNamed("size-2048");
  // At 40 the payload is in its final place; at 2048 the container ends in the payload.
  for (const std::size_t payloadOffset : {40u, 41u, 77u, 2048u}) {
    const GuardedBuffer area(std::max<std::size_t>(2092, payloadOffset + 2048));
    std::copy(known.payload.begin(), known.payload.end(), area.Data() + payloadOffset);
    EXPECT_EQ(file_cipher_encode(area.Data() + payloadOffset, 2048, area.Data()), 0);
    EXPECT_EQ(Bytes(area.Data(), area.Data() + 2092), known.container) << payloadOffset;
  }
}

}  // namespace
}  // namespace launcher
