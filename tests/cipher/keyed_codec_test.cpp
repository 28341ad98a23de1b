// For faults of QX_Decode, whose key and marker come from the string table (lookups out of order,
// an output touched or left, a marker skipped unasked), and of QX_SignSignature: a sum that wraps.

#include <gtest/gtest.h>

#include <algorithm>
#include <string>

#include "launcher_dll.h"
#include "support/bytes.h"
#include "support/captured_output.h"
#include "support/data_file.h"
#include "support/known_containers.h"
#include "support/scratch_directory.h"

namespace launcher {
namespace {

using test::Bytes;
using test::CallLine;
using test::Decoding;
using test::GuardedBuffer;
using test::KnownContainer;

using KeyedCodec = test::ScratchTest;

Decoding Decode(std::uint8_t* block, std::size_t blockSize, std::uint32_t checkMarker) {
  Decoding decoding;
  decoding.result = QX_Decode(block, static_cast<std::int32_t>(blockSize), &decoding.size,
                              &decoding.offset, checkMarker);
  return decoding;
}

TEST_F(KeyedCodec, DecodesInPlaceAndReadsOneByteOfCheckMarker) {
  int decoded = 0;
  for (const KnownContainer& known : test::KnownContainers()) {
    for (const std::uint32_t checkMarker : {0u, 1u, 0x100u, 0x180u}) {
      const auto& expected = known.keyedDecoding[(checkMarker & 0xFF) != 0];
      if (!expected) continue;
      SCOPED_TRACE(known.name + ", " + std::to_string(checkMarker));
      const GuardedBuffer block(known.container);
      EXPECT_EQ(Decode(block.Data(), block.Size(), checkMarker), expected);
      test::ExpectDecodedInPlace(block, known);
      ++decoded;
    }
  }
  EXPECT_GE(decoded, 80);
}

TEST_F(KeyedCodec, LooksTheTextsUpForEveryBlock) {
  QX_IsStaging();
  Bytes block(100, 'a');
  EXPECT_EQ(test::StandardOutputOf([&] { Decode(block.data(), 100, 0); }),
            CallLine(11000) + CallLine(11000));
  EXPECT_EQ(test::StandardOutputOf([&] { Decode(block.data(), 100, 1); }),
            CallLine(11000) + CallLine(11001) + CallLine(11000));
  test::WriteFile("config.json", "{}");
  EXPECT_EQ(
      test::StandardOutputOf([&] { EXPECT_EQ(Decode(block.data(), 100, 1), Decoding{QX_FAILED}); }),
      CallLine(11000));
}

TEST_F(KeyedCodec, RefusesBadArgumentsWithoutALookup) {
  const Bytes container = test::KnownContainerNamed("size-4").container;
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
    for (const std::int32_t blockSize : {-44, 0, 0x100000, 0x7FFFFFFF}) {
      refuse(block.Data(), blockSize, &size, &offset, QX_SIZE_REFUSED);
    }
  });
  EXPECT_EQ(printed, "");
  EXPECT_EQ(size + offset, 10u);
  EXPECT_EQ(block.Content(), container);
}

TEST_F(KeyedCodec, ReadsBlocksBelowAMebibyte) {
  const Bytes payload = test::Pattern(0xFFFD4);
  Bytes largest(0xFFFFF);
  ASSERT_EQ(QX_Encode(largest.data(), payload.data(), 0xFFFD4), QX_SUCCEEDED);
  EXPECT_EQ(Decode(largest.data(), 0xFFFFF, 0), (Decoding{0, 0, 0})) << "no size of a container";
  EXPECT_EQ(Decode(largest.data(), 0xFFFFC, 0), (Decoding{0, 0xFFFD4, 40}));
}

TEST_F(KeyedCodec, SignsWithinTheCapacity) {
  const std::string marker = "/* QTRMWO_Kd3Z_HLvN */";
  EXPECT_EQ(QX_GetSignatureSize(), 22u);
  const GuardedBuffer data(test::BytesOf("some data"));
  for (const auto& [capacity, dataSize] : {std::pair{22u, 0u}, {31u, 9u}, {40u, 9u}}) {
    const GuardedBuffer buffer(22 + dataSize);
    EXPECT_EQ(QX_SignSignature(buffer.Data(), capacity, data.Data(), dataSize), 1) << capacity;
    EXPECT_EQ(buffer.Content(), test::BytesOf((marker + "some data").substr(0, buffer.Size())));
  }
  const GuardedBuffer buffer(30);
  // The last sums with 22 go beyond 32 bits.
  for (const auto& [capacity, dataSize] : {std::pair{0u, 0u},
                                           {21u, 0u},
                                           {21u, 0xFFFFFFFFu},
                                           {30u, 9u},
                                           {30u, 0xFFFFFFEAu},
                                           {30u, 0xFFFFFFFFu},
                                           {0xFFFFFFFFu, 0xFFFFFFEAu}}) {
    EXPECT_EQ(QX_SignSignature(buffer.Data(), capacity, data.Data(), dataSize), 0)
        << capacity << ", " << dataSize;
  }
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
