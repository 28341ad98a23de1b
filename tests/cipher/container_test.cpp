// For faults of the container's exports: a size that wraps, a check left out or too late, bytes
// read or written outside a buffer, an output that is touched.

#include <gtest/gtest.h>

#include <algorithm>
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

const Bytes kKey = test::BytesOf("7E3A90C2D1F86B45");

Decoding Decode(std::uint8_t* block, std::uint32_t blockSize, const Bytes& key,
                const char* prefix) {
  Decoding decoding;
  decoding.result =
      file_cipher_decode(block, blockSize, key.data(), static_cast<std::int32_t>(key.size()),
                         &decoding.size, &decoding.offset, prefix);
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
      {4, 44, 44},
      {5, 52, 52},
      {2048, 2092, 2092},
      {0x7FFFFFFF, 0x8000002C, 0x8000002C},
      {0x80000000, 0, 0x8000002C},
      {0xFFFFFFD4, 0, 0xFFFFFFFC},
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
    SCOPED_TRACE(known.name);
    const GuardedBuffer block(known.container);
    EXPECT_EQ(Decode(block.Data(), block.Size(), known.key, known.prefix.c_str()), known.decoding);
    test::ExpectDecodedInPlace(block, known);

    if (!known.isMadeByEncoding) continue;
    const GuardedBuffer payload(known.payload);
    const GuardedBuffer output(known.container.size());
    const GuardedBuffer keyedOutput(known.container.size());
    EXPECT_EQ(file_cipher_encode(payload.Data(), payload.Size(), output.Data()), 0);
    EXPECT_EQ(
        QX_Encode(keyedOutput.Data(), payload.Data(), static_cast<std::int32_t>(payload.Size())),
        QX_SUCCEEDED);
    EXPECT_EQ(output.Content(), known.container);
    EXPECT_EQ(keyedOutput.Content(), known.container);
    EXPECT_EQ(payload.Content(), known.payload);
    ++count;
  }
  EXPECT_EQ(count, 17);
}

TEST(Container, IsNeitherReadNorMadeWithABadArgument) {
  const Bytes container = test::KnownContainerNamed("size-4").container;
  const GuardedBuffer block(container);
  std::uint32_t size = 9;
  std::uint32_t offset = 9;
  const auto refuse = [&](std::uint8_t* data, const std::uint8_t* key, std::int32_t keyLength,
                          std::uint32_t* sizeFound, std::uint32_t* offsetFound) {
    EXPECT_EQ(file_cipher_decode(data, 44, key, keyLength, sizeFound, offsetFound, nullptr),
              QX_CIPHER_FAILED);
  };
  refuse(nullptr, kKey.data(), 16, &size, &offset);
  refuse(block.Data(), nullptr, 16, &size, &offset);
  refuse(block.Data(), kKey.data(), 16, nullptr, &offset);
  refuse(block.Data(), kKey.data(), 16, &size, nullptr);
  for (const std::int32_t keyLength : {-0x7FFFFFFF, -4, 57, 256 + 16, 0x7FFFFFFF}) {
    refuse(block.Data(), kKey.data(), keyLength, &size, &offset);
  }
  EXPECT_EQ(size + offset, 18u);

  EXPECT_EQ(file_cipher_encode(nullptr, 4, block.Data()), QX_CIPHER_FAILED);
  EXPECT_EQ(file_cipher_encode(kKey.data(), 4, nullptr), QX_CIPHER_FAILED);
  for (const std::uint32_t badSize : {0u, 0x80000000u, 0xFFFFFFFFu}) {
    EXPECT_EQ(file_cipher_encode(kKey.data(), badSize, block.Data()), QX_CIPHER_FAILED);
    EXPECT_EQ(QX_Encode(block.Data(), kKey.data(), static_cast<std::int32_t>(badSize)), QX_FAILED);
  }
  EXPECT_EQ(block.Content(), container);
}

// No filler follows the payload: whoever reads further leaves the buffer.
TEST(Container, SkipsAPrefixThatThePayloadBeginsWith) {
  const std::string text = "payload of 20 bytes.";
  Bytes container(60);
  ASSERT_EQ(file_cipher_encode(test::BytesOf(text).data(), 20, container.data()), 0);
  // How much of each is skipped.
  const std::pair<std::string, std::uint32_t> cases[] = {
      {"", 0}, {"pay", 3}, {text, 20}, {"payload of 20 bytes!", 0}, {text + "x", 0}, {"qay", 0}};
  for (const auto& [prefix, skipped] : cases) {
    const GuardedBuffer block(container);
    const CipherCode result = skipped == prefix.size() ? QX_CIPHER_SUCCEEDED : QX_CIPHER_FAILED;
    EXPECT_EQ(Decode(block.Data(), 60, kKey, prefix.c_str()),
              (Decoding{result, 20 - skipped, 40 + skipped}))
        << prefix;
  }
}

// A payload of several stretches: before one is enciphered it must not cover what is yet to move.
TEST(Container, MayOverlapItsPayload) {
  const Bytes payload = test::Pattern(200000);
  const std::uint32_t containerSize = file_cipher_get_encode_size(200000);
  for (const auto& [payloadAt, outputAt] :
       {std::pair{40u, 0u}, {41u, 0u}, {2048u, 0u}, {8u, 0u}, {0u, 100000u}}) {
    SCOPED_TRACE(payloadAt);
    Bytes area(outputAt + containerSize + payloadAt);
    std::copy(payload.begin(), payload.end(), &area[payloadAt]);
    std::uint8_t* const output = &area[outputAt];
    EXPECT_EQ(file_cipher_encode(&area[payloadAt], 200000, output), QX_CIPHER_SUCCEEDED);

    const bool isIntact = payloadAt >= 40;
    EXPECT_EQ(Decode(output, containerSize, kKey, nullptr).result,
              isIntact ? QX_CIPHER_SUCCEEDED : QX_CIPHER_FAILED);
    // The header overwrites what it covers of the payload before the payload moves.
    Bytes expected = payload;
    for (std::uint32_t i = 0; i < 40 && !isIntact; ++i) {
      const std::uint32_t covered = outputAt + i - payloadAt;
      if (covered < 200000) expected[covered] = output[i];
    }
    EXPECT_TRUE(std::equal(expected.begin(), expected.end(), output + 40));
  }
}

}  // namespace
}  // namespace launcher
