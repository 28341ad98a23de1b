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

TEST(Container, IsRefusedUnchangedForAKeyOfNoLength) {
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

TEST(Container, IsBrokenByAnyBitBehindTheMagic) {
  const KnownContainer known = test::KnownContainerNamed("size-44");  // no filler
  ASSERT_EQ(known.container.size(), 84u);
  for (std::size_t i = 4; i < known.container.size(); ++i) {
    Bytes block = known.container;
    block[i] ^= 0x10;
    EXPECT_EQ(Decode(block.data(), block.size(), known.key), (Decoding{QX_CIPHER_FAILED}))
        << "byte " << i;
  }
}

TEST(Container, SkipsAPrefixThatThePayloadBeginsWith) {
  const KnownContainer known = test::KnownContainerNamed("marker-cut");
  const std::string payload(known.payload.begin(), known.payload.end());
  std::string other = payload;
  other.back() ^= 1;
  struct Case {
    std::string prefix;
    CipherCode result;
    std::uint32_t length;  // of what is skipped
  };
  const Case cases[] = {
      {"", 0, 0},      {payload.substr(0, 3), 0, 3}, {payload, 0, 21},
      {other, 7, 0},   {payload + "x", 7, 0},        {"*", 7, 0},
      {"/* Q-", 7, 0},
  };
  for (const Case& tried : cases) {
    SCOPED_TRACE(tried.prefix);
    Bytes block = known.container;
    EXPECT_EQ(Decode(block.data(), block.size(), known.key, tried.prefix.c_str()),
              (Decoding{tried.result, 21 - tried.length, 40 + tried.length}));
  }
}

TEST(Container, MayTakeThePlaceOfItsPayload) {
  const KnownContainer known = test::KnownContainerNamed("size-2048");
  // At 40 the payload stands where it has to be; at 2048 the container ends in it.
  for (const std::size_t payloadOffset : {40u, 41u, 77u, 2048u}) {
    const GuardedBuffer area(std::max<std::size_t>(2092, payloadOffset + 2048));
    std::copy(known.payload.begin(), known.payload.end(), area.Data() + payloadOffset);
    EXPECT_EQ(file_cipher_encode(area.Data() + payloadOffset, 2048, area.Data()), 0);
    EXPECT_EQ(Bytes(area.Data(), area.Data() + 2092), known.container) << payloadOffset;
  }
}

}  // namespace
}  // namespace launcher
