#include "support/known_containers.h"

#include <gtest/gtest.h>

#include <fstream>
#include <nlohmann/json.hpp>
#include <stdexcept>

namespace launcher::test {
namespace {

using nlohmann::json;

Decoding DecodingFrom(const json& expected) {
  return {expected.at("result").get<std::int32_t>(),
          expected.value("payloadSize", Decoding::kUnwritten),
          expected.value("payloadOffset", Decoding::kUnwritten)};
}

}  // namespace

bool operator==(const Decoding& one, const Decoding& other) {
  return one.result == other.result && one.size == other.size && one.offset == other.offset;
}

std::vector<KnownContainer> KnownContainers() {
  std::ifstream file(LAUNCHER_VECTORS);
  const json document = json::parse(file);
  std::vector<KnownContainer> containers;
  for (const json& vector : document.at("vectors")) {
    KnownContainer& known = containers.emplace_back();
    known.name = vector.at("name");
    known.key = BytesFromHex(vector.at("key"));
    known.prefix = vector.at("prefix");
    known.container = BytesFromHex(vector.at("container"));
    const json& reason = vector.at("reason");
    known.isDeciphered = reason != "size" && reason != "magic" && reason != "key";
    known.isIntact = vector.at("verdict") != "invalid";
    known.isMadeByEncoding = vector.at("encoded");
    const Bytes delivered = known.isIntact ? BytesFromHex(vector.at("payload")) : Bytes();
    if (vector.at("verdict") == "valid") known.payload = BytesOf(known.prefix);
    known.payload.insert(known.payload.end(), delivered.begin(), delivered.end());
    known.decoding = DecodingFrom(vector.at("file_cipher_decode"));
    for (const int checkMarker : {0, 1}) {
      const auto expected = vector.find("QX_Decode, checkMarker " + std::to_string(checkMarker));
      if (expected != vector.end()) known.keyedDecoding[checkMarker] = DecodingFrom(*expected);
    }
  }
  EXPECT_GE(containers.size(), 40u);  // a test that reads none must not pass
  return containers;
}

KnownContainer KnownContainerNamed(const std::string& name) {
  for (KnownContainer& known : KnownContainers()) {
    if (known.name == name) return known;
  }
  throw std::invalid_argument(name);
}

void ExpectDecodedInPlace(const GuardedBuffer& block, const KnownContainer& known) {
  const Bytes content = block.Content();
  EXPECT_EQ(content != known.container, known.isDeciphered);
  if (!known.isIntact) return;
  ASSERT_GE(content.size(), 40 + known.payload.size());
  EXPECT_EQ(Bytes(&content[40], &content[40] + known.payload.size()), known.payload);
}

}  // namespace launcher::test
