// QX_Encode, QX_Decode and QX_SignSignature: for wrong limits, a wrong order of checks and lookups,
// and markers that are missed, skipped wrongly or written past the capacity.

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

const std::string kMarker = "/* QTRMWO_Kd3Z_HLvN */";

class KeyedCodec : public test::ScratchTest {
 protected:
  static Decoding Decode(std::uint8_t* block, std::int32_t blockSize, std::uint32_t checkMarker) {
    Decoding decoding;
    decoding.result = QX_Decode(block, blockSize, &decoding.size, &decoding.offset, checkMarker);
    return decoding;
  }

  static Bytes Encoded(const Bytes& payload) {
    const GuardedBuffer output(QX_GetEncodeDataSize(static_cast<std::uint32_t>(payload.size())));
    EXPECT_EQ(QX_Encode(output.Data(), payload.data(), static_cast<std::int32_t>(payload.size())),
              QX_SUCCEEDED);
    return output.Content();
  }
};

TEST_F(KeyedCodec, DecodesInPlace) {
  int decoded = 0;
  for (const KnownContainer& known : test::KnownContainers()) {
    for (const std::uint32_t checkMarker : {0u, 1u}) {
      if (!known.keyedDecoding[checkMarker]) continue;
      SCOPED_TRACE(known.name);
      const GuardedBuffer block(known.container);
      EXPECT_EQ(Decode(block.Data(), static_cast<std::int32_t>(block.Size()), checkMarker),
                known.keyedDecoding[checkMarker]);
      test::ExpectDecodedInPlace(block, known);
      ++decoded;
    }
  }
  EXPECT_GE(decoded, 40);
}

TEST_F(KeyedCodec, ReadsOneByteOfCheckMarker) {
  const KnownContainer known = test::KnownContainerNamed("signed");
  for (const auto& [checkMarker, sameAs] : {std::pair{0x100u, 0u}, std::pair{0x180u, 1u}}) {
    Bytes block = known.container;
    EXPECT_EQ(Decode(block.data(), static_cast<std::int32_t>(block.size()), checkMarker),
              known.keyedDecoding[sameAs]);
  }
}

TEST_F(KeyedCodec, LooksTheTextsUpForEveryBlock) {
  QX_IsStaging();
  Bytes block(100, 'a');
  EXPECT_EQ(test::StandardOutputOf([&] { Decode(block.data(), 100, 0); }),
            CallLine(11000) + CallLine(11000));
  EXPECT_EQ(test::StandardOutputOf([&] { Decode(block.data(), 100, 1); }),
            CallLine(11000) + CallLine(11001) + CallLine(11000));
}

TEST_F(KeyedCodec, RefusesBadArgumentsWithoutALookup) {
  Bytes block = test::KnownContainerNamed("size-4").container;
  const Bytes before = block;
  std::uint32_t number = 5;
  const std::string printed = test::StandardOutputOf([&] {
    EXPECT_EQ(QX_Decode(nullptr, 44, &number, &number, 0), QX_FAILED);
    EXPECT_EQ(QX_Decode(block.data(), 44, nullptr, &number, 0), QX_FAILED);
    EXPECT_EQ(QX_Decode(block.data(), 0, &number, nullptr, 0), QX_FAILED)
        << "checked before the size";
    for (const std::int32_t size : {-44, 0, 0x100000, 0x7FFFFFFF}) {
      EXPECT_EQ(QX_Decode(block.data(), size, &number, &number, 0), QX_SIZE_REFUSED) << size;
    }
  });
  EXPECT_EQ(printed, "");
  EXPECT_EQ(number, 5u);
  EXPECT_EQ(block, before);
}

TEST_F(KeyedCodec, FailsWhereTheSettingsDoNotLoad) {
  test::WriteFile("config.json", "{}");
  Bytes block = test::KnownContainerNamed("size-4").container;
  const Bytes before = block;
  EXPECT_EQ(Decode(block.data(), 44, 0), Decoding{QX_FAILED});
  EXPECT_EQ(block, before);
}

TEST_F(KeyedCodec, ReadsBlocksBelowAMebibyte) {
  Bytes largest = Encoded(test::Pattern(0xFFFD4));
  ASSERT_EQ(largest.size(), 0xFFFFCu);
  EXPECT_EQ(Decode(largest.data(), 0xFFFFC, 0), (Decoding{0, 0xFFFD4, 40}));

  Bytes tooLarge = Encoded(test::Pattern(0xFFFD5));
  EXPECT_EQ(Decode(tooLarge.data(), static_cast<std::int32_t>(tooLarge.size()), 0),
            Decoding{QX_SIZE_REFUSED});

  tooLarge.resize(0xFFFFF);
  EXPECT_EQ(Decode(tooLarge.data(), 0xFFFFF, 0), (Decoding{0, 0, 0})) << "no size of a container";
}

TEST_F(KeyedCodec, EncodesNothingThatIsNotThere) {
  Bytes output(44, 0xEE);
  const Bytes payload(4, 'p');
  EXPECT_EQ(QX_Encode(nullptr, payload.data(), 4), QX_FAILED);
  EXPECT_EQ(QX_Encode(output.data(), nullptr, 4), QX_FAILED);
  for (const std::int32_t size : {0, -1, -0x7FFFFFFF - 1}) {
    EXPECT_EQ(QX_Encode(output.data(), payload.data(), size), QX_FAILED) << size;
  }
  EXPECT_EQ(output, Bytes(44, 0xEE));
}

TEST_F(KeyedCodec, SignsWithinTheCapacity) {
  EXPECT_EQ(QX_GetSignatureSize(), kMarker.size());
  const Bytes data = test::BytesOf("some data");
  const auto dataSize = static_cast<std::uint32_t>(data.size());

  const GuardedBuffer fitting(22 + data.size());
  EXPECT_EQ(QX_SignSignature(fitting.Data(), fitting.Size(), data.data(), dataSize), 1);
  EXPECT_EQ(fitting.Content(), test::BytesOf(kMarker + "some data"));

  const GuardedBuffer markerOnly(22);
  EXPECT_EQ(QX_SignSignature(markerOnly.Data(), 22, data.data(), 0), 1);
  EXPECT_EQ(markerOnly.Content(), test::BytesOf(kMarker));

  // The last three sums with 22 go beyond 32 bits.
  const GuardedBuffer small(22 + data.size() - 1);
  for (const auto& [capacity, size] :
       {std::pair{small.Size(), dataSize}, std::pair{21u, 0u}, std::pair{0u, 0u},
        std::pair{small.Size(), 0xFFFFFFFFu}, std::pair{small.Size(), 0xFFFFFFEAu},
        std::pair{0xFFFFFFFFu, 0xFFFFFFEAu}}) {
    EXPECT_EQ(QX_SignSignature(small.Data(), capacity, data.data(), size), 0)
        << capacity << ' ' << size;
  }
  EXPECT_EQ(QX_SignSignature(small.Data(), 100, nullptr, 0), 0);
  EXPECT_EQ(QX_SignSignature(nullptr, 100, data.data(), 1), 0);
  EXPECT_TRUE(small.IsUntouched());
}

// The marker is written before the data move, so data in its place lose what it covers.
TEST_F(KeyedCodec, SignsDataInItsOwnBuffer) {
  const std::string text = "data that move towards the front, to the back, or not at all";
  const auto size = static_cast<std::uint32_t>(text.size());
  for (const std::size_t offset : {0u, 10u, 22u, 23u, 40u}) {
    const GuardedBuffer area(std::max<std::size_t>(offset, 22) + text.size());
    std::copy(text.begin(), text.end(), area.Data() + offset);
    std::string data = text;
    if (offset < 22) data.replace(0, 22 - offset, kMarker, offset, 22 - offset);
    EXPECT_EQ(QX_SignSignature(area.Data(), area.Size(), area.Data() + offset, size), 1);
    EXPECT_EQ(std::string(area.Text(), 22 + size), kMarker + data) << offset;
  }
}

TEST_F(KeyedCodec, BringsSignedDataBack) {
  const Bytes data = test::Pattern(1000);
  Bytes payload(1022);
  ASSERT_EQ(QX_SignSignature(payload.data(), 1022, data.data(), 1000), 1);
  Bytes block = Encoded(payload);
  EXPECT_EQ(Decode(block.data(), static_cast<std::int32_t>(block.size()), 1),
            (Decoding{0, 1000, 62}));
  EXPECT_EQ(Bytes(block.data() + 62, block.data() + 1062), data);
}

}  // namespace
}  // namespace launcher
