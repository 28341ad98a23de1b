// For faults of the container's exports: a size that wraps, a check left out or too late, bytes
// read or written outside a buffer, an output that is touched, a lookup of the string table out of
// order, a marker skipped unasked.

#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <nlohmann/json.hpp>
#include <string>
#include <tuple>

#include "launcher_dll.h"
#include "support/bytes.h"
#include "support/captured_output.h"
#include "support/data_file.h"
#include "support/guarded_buffer.h"
#include "support/scratch_directory.h"

namespace launcher {
namespace {

using nlohmann::json;
using test::Bytes;
using test::CallLine;
using test::GuardedBuffer;

using Container = test::ScratchTest;

const Bytes kKey = test::BytesOf("7E3A90C2D1F86B45");

// What a decoder returns and writes.
using Decoding = std::tuple<std::int32_t, std::uint32_t, std::uint32_t>;
constexpr std::uint32_t kUnwritten = 0xCDCDCDCD;

Decoding Decode(std::uint8_t* block, std::uint32_t blockSize, const Bytes& key,
                const char* prefix) {
  Decoding decoding = {0, kUnwritten, kUnwritten};
  auto& [result, size, offset] = decoding;
  result = file_cipher_decode(block, blockSize, key.data(), static_cast<std::int32_t>(key.size()),
                              &size, &offset, prefix);
  return decoding;
}

Decoding QxDecode(std::uint8_t* block, std::uint32_t blockSize, std::uint32_t checkMarker) {
  Decoding decoding = {0, kUnwritten, kUnwritten};
  auto& [result, size, offset] = decoding;
  result = QX_Decode(block, static_cast<std::int32_t>(blockSize), &size, &offset, checkMarker);
  return decoding;
}

// Of 44 bytes.
Bytes SmallContainer() {
  Bytes container(44);
  EXPECT_EQ(file_cipher_encode(kKey.data(), 4, container.data()), QX_CIPHER_SUCCEEDED);
  return container;
}

TEST_F(Container, SizesAreRoundedUpToWholeBlocks) {
  // The size of a payload, then the results of file_cipher_get_encode_size and of
  // QX_GetEncodeDataSize, which wraps.
  const std::tuple<std::uint32_t, std::uint32_t, std::uint32_t> cases[] = {
      {0, 44, 44},
      {4, 44, 44},
      {5, 52, 52},
      {0x7FFFFFFF, 0x8000002C, 0x8000002C},
      {0x80000000, 0, 0x8000002C},
      {0xFFFFFFD5, 0, 4},
  };
  for (const auto& [payloadSize, containerSize, wrappingSize] : cases) {
    EXPECT_EQ(file_cipher_get_encode_size(payloadSize), containerSize);
    EXPECT_EQ(QX_GetEncodeDataSize(payloadSize), wrappingSize);
  }
}

TEST_F(Container, IsByteForByteWhatOpensslMakes) {
  std::ifstream file(LAUNCHER_VECTORS);
  const json document = json::parse(file);
  int count = 0;
  for (const json& vector : document.at("vectors")) {
    SCOPED_TRACE(vector.at("name"));
    const Bytes key = test::BytesFromHex(vector.at("key"));
    const Bytes container = test::BytesFromHex(vector.at("container"));
    const std::string prefix = vector.at("prefix");
    const json& reason = vector.at("reason");
    const bool isDeciphered = reason != "size" && reason != "magic" && reason != "key";
    Bytes content = test::BytesOf(vector.at("verdict") == "valid" ? prefix : "");
    if (vector.at("verdict") != "invalid") {
      const Bytes delivered = test::BytesFromHex(vector.at("payload"));
      content.insert(content.end(), delivered.begin(), delivered.end());
    }

    // Only the low byte of checkMarker counts.
    for (const auto& [decoder, checkMarker] : {std::pair{"file_cipher_decode", 0u},
                                               {"QX_Decode, checkMarker 0", 0u},
                                               {"QX_Decode, checkMarker 0", 0x100u},
                                               {"QX_Decode, checkMarker 1", 1u},
                                               {"QX_Decode, checkMarker 1", 0x180u}}) {
      if (!vector.contains(decoder)) continue;
      const json& expected = vector.at(decoder);
      const GuardedBuffer block(container);
      EXPECT_EQ(*decoder == 'f' ? Decode(block.Data(), block.Size(), key, prefix.c_str())
                                : QxDecode(block.Data(), block.Size(), checkMarker),
                Decoding(expected.at("result"), expected.value("payloadSize", kUnwritten),
                         expected.value("payloadOffset", kUnwritten)));
      EXPECT_EQ(block.Content() != container, isDeciphered);
      EXPECT_TRUE(std::equal(content.begin(), content.end(), block.Data() + 40));
    }

    if (!vector.at("encoded")) continue;
    const GuardedBuffer payload(content);
    for (const bool isQx : {false, true}) {
      const GuardedBuffer output(container.size());
      EXPECT_EQ(
          isQx ? QX_Encode(output.Data(), payload.Data(), static_cast<std::int32_t>(payload.Size()))
               : file_cipher_encode(payload.Data(), payload.Size(), output.Data()),
          0);
      EXPECT_EQ(output.Content(), container);
      EXPECT_EQ(payload.Content(), content);
    }
    ++count;
  }
  EXPECT_GT(count, 0);
}

TEST_F(Container, IsNeitherReadNorMadeWithABadArgument) {
  const Bytes container = SmallContainer();
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
  for (const std::int32_t keyLength : {-0x7FFFFFF0, 256 + 16}) {
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

// The payload ends at the guard page, so a comparison with all five characters crashes.
TEST_F(Container, IsNotReadFurtherForALongPrefix) {
  const GuardedBuffer block(SmallContainer());
  EXPECT_EQ(Decode(block.Data(), 44, kKey, "7E3A9"), Decoding(QX_CIPHER_FAILED, 4, 40));
}

// If the payload overlaps the container, enciphering one stretch must not overwrite payload bytes
// that have not moved yet.
TEST_F(Container, MayOverlapItsPayload) {
  const Bytes payload = test::Pattern(200000);
  const std::uint32_t containerSize = file_cipher_get_encode_size(200000);
  for (const auto& [payloadAt, outputAt] :
       {std::pair{40u, 0u}, {41u, 0u}, {8u, 0u}, {0u, 100000u}}) {
    SCOPED_TRACE(payloadAt);
    Bytes area(outputAt + containerSize + payloadAt);
    std::copy(payload.begin(), payload.end(), &area[payloadAt]);
    std::uint8_t* const output = &area[outputAt];
    EXPECT_EQ(file_cipher_encode(&area[payloadAt], 200000, output), QX_CIPHER_SUCCEEDED);

    const bool isIntact = payloadAt >= 40;
    EXPECT_EQ(std::get<0>(Decode(output, containerSize, kKey, nullptr)),
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

TEST_F(Container, LooksUpTextsBeforeDecoding) {
  // Creates config.json.
  QX_IsStaging();
  Bytes block(100, 'a');
  EXPECT_EQ(test::StandardOutputOf([&] { QxDecode(block.data(), 100, 0); }),
            CallLine(11000) + CallLine(11000));
  EXPECT_EQ(test::StandardOutputOf([&] { QxDecode(block.data(), 100, 1); }),
            CallLine(11000) + CallLine(11001) + CallLine(11000));
  test::WriteFile("config.json", "{}");
  EXPECT_EQ(test::StandardOutputOf([&] {
              EXPECT_EQ(QxDecode(block.data(), 100, 1),
                        Decoding(QX_FAILED, kUnwritten, kUnwritten));
            }),
            CallLine(11000));
}

TEST_F(Container, IsRefusedWithoutALookup) {
  const Bytes container = SmallContainer();
  const GuardedBuffer block(container);
  std::uint32_t size = 5;
  std::uint32_t offset = 5;
  const auto refuse = [&](std::uint8_t* data, std::int32_t blockSize, std::uint32_t* sizeFound,
                          std::uint32_t* offsetFound, ResultCode result) {
    EXPECT_EQ(QX_Decode(data, blockSize, sizeFound, offsetFound, 1), result) << blockSize;
  };
  const std::string printed = test::StandardOutputOf([&] {
    refuse(nullptr, 44, &size, &offset, QX_FAILED);
    refuse(block.Data(), 44, nullptr, &offset, QX_FAILED);
    refuse(block.Data(), 0, &size, nullptr, QX_FAILED);  // checked before the size
    for (const std::int32_t blockSize : {-44, 0, 0x100000}) {
      refuse(block.Data(), blockSize, &size, &offset, QX_SIZE_REFUSED);
    }
  });
  EXPECT_EQ(printed, "");
  EXPECT_EQ(size + offset, 10u);
  EXPECT_EQ(block.Content(), container);
}

TEST_F(Container, IsDecodedBelowAMebibyte) {
  const Bytes payload = test::Pattern(0xFFFD4);
  Bytes largest(0xFFFFF);
  QX_Encode(largest.data(), payload.data(), 0xFFFD4);
  // Accepted, but no container has such a size.
  EXPECT_EQ(QxDecode(largest.data(), 1, 0), Decoding(0, 0, 0));
  EXPECT_EQ(QxDecode(largest.data(), 0xFFFFF, 0), Decoding(0, 0, 0));
  EXPECT_EQ(QxDecode(largest.data(), 0xFFFFC, 0), Decoding(0, 0xFFFD4, 40));
}

TEST_F(Container, SignsDataWithinTheCapacity) {
  const std::string marker = "/* QTRMWO_Kd3Z_HLvN */";
  EXPECT_EQ(QX_GetSignatureSize(), 22u);
  const GuardedBuffer data(test::BytesOf("some data"));
  // In the last rows, a check that adds 22 to the size of the data would wrap.
  const std::tuple<std::uint32_t, std::uint32_t, bool> cases[] = {
      {22, 0, true},           {31, 9, true},
      {40, 9, true},           {21, 0, false},
      {30, 9, false},          {21, 0xFFFFFFFF, false},
      {30, 0xFFFFFFEA, false}, {0xFFFFFFFF, 0xFFFFFFEA, false}};
  for (const auto& [capacity, dataSize, fits] : cases) {
    const GuardedBuffer buffer(fits ? 22 + dataSize : std::min(capacity, 30u));
    EXPECT_EQ(QX_SignSignature(buffer.Data(), capacity, data.Data(), dataSize), fits ? 1 : 0);
    EXPECT_EQ(buffer.Content(), fits
                                    ? test::BytesOf((marker + "some data").substr(0, buffer.Size()))
                                    : Bytes(buffer.Size(), GuardedBuffer::kFill))
        << capacity << ", " << dataSize;
  }
  const GuardedBuffer buffer(30);
  EXPECT_EQ(QX_SignSignature(buffer.Data(), 30, nullptr, 0), 0);
  EXPECT_EQ(QX_SignSignature(nullptr, 100, data.Data(), 1), 0);
  EXPECT_TRUE(buffer.IsUntouched());

  // Data that overlap the destination: in their place, and after it.
  const std::string text = "data that move towards the front or not at all";
  for (const std::size_t dataAt : {22u, 23u, 40u}) {
    Bytes area(dataAt + text.size());
    std::copy(text.begin(), text.end(), &area[dataAt]);
    EXPECT_EQ(QX_SignSignature(area.data(), static_cast<std::uint32_t>(area.size()), &area[dataAt],
                               static_cast<std::uint32_t>(text.size())),
              1);
    EXPECT_EQ(std::string(area.begin(), area.begin() + 22 + 46), marker + text) << dataAt;
  }
}

}  // namespace
}  // namespace launcher
