// The vectors that the container's page offers to writers of other readers: both decoders answer
// what stands there.

#include <gtest/gtest.h>

#include <fstream>
#include <nlohmann/json.hpp>

#include "launcher_dll.h"
#include "support/bytes.h"
#include "support/guarded_buffer.h"

namespace launcher {
namespace {

using nlohmann::json;
using test::Bytes;
using test::GuardedBuffer;

constexpr std::uint32_t kUnwritten = 0xA5A5A5A5;

struct Answer {
  std::int32_t result = 0;
  std::uint32_t payloadSize = kUnwritten;
  std::uint32_t payloadOffset = kUnwritten;
};

void ExpectAnswer(const Answer& answer, const json& expected) {
  EXPECT_EQ(answer.result, expected.at("result").get<std::int32_t>());
  EXPECT_EQ(answer.payloadSize, expected.value("payloadSize", kUnwritten));
  EXPECT_EQ(answer.payloadOffset, expected.value("payloadOffset", kUnwritten));
}

TEST(Container, IsReadAsTheVectorsTell) {
  std::ifstream file(LAUNCHER_VECTORS);
  const json vectors = json::parse(file).at("vectors");
  ASSERT_GE(vectors.size(), 40u);
  for (const json& vector : vectors) {
    SCOPED_TRACE(vector.at("name").get<std::string>());
    const Bytes container = test::BytesFromHex(vector.at("container").get<std::string>());
    const Bytes key = test::BytesFromHex(vector.at("key").get<std::string>());
    const auto prefix = vector.at("prefix").get<std::string>();

    const GuardedBuffer block(container);
    Answer answer;
    answer.result = file_cipher_decode(block.Data(), block.Size(), key.data(),
                                       static_cast<std::int32_t>(key.size()), &answer.payloadSize,
                                       &answer.payloadOffset, prefix.c_str());
    ExpectAnswer(answer, vector.at("file_cipher_decode"));
    if (!vector.at("payload").is_null()) {
      const Bytes payload = test::BytesFromHex(vector.at("payload").get<std::string>());
      ASSERT_EQ(answer.payloadSize, payload.size());
      const auto* const begin = block.Data() + answer.payloadOffset;
      EXPECT_EQ(Bytes(begin, begin + answer.payloadSize), payload);
    }

    for (const std::uint32_t checkMarker : {0u, 1u}) {
      const auto expected = vector.find("QX_Decode, checkMarker " + std::to_string(checkMarker));
      if (expected == vector.end()) continue;
      const GuardedBuffer again(container);
      answer = Answer();
      answer.result = QX_Decode(again.Data(), static_cast<std::int32_t>(again.Size()),
                                &answer.payloadSize, &answer.payloadOffset, checkMarker);
      ExpectAnswer(answer, *expected);
    }
  }
}

}  // namespace
}  // namespace launcher
