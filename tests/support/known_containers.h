// The containers of docs/container-vectors.json, which OpenSSL made.

#ifndef LAUNCHER_TESTS_SUPPORT_KNOWN_CONTAINERS_H_
#define LAUNCHER_TESTS_SUPPORT_KNOWN_CONTAINERS_H_

#include <optional>
#include <string>
#include <vector>

#include "support/bytes.h"
#include "support/guarded_buffer.h"

namespace launcher::test {

// What a decoder returns and writes.
struct Decoding {
  static constexpr std::uint32_t kUnwritten = 0xCDCDCDCD;

  std::int32_t result = 0;
  std::uint32_t size = kUnwritten;
  std::uint32_t offset = kUnwritten;
};
bool operator==(const Decoding& one, const Decoding& other);

struct KnownContainer {
  std::string name;
  Bytes key;
  std::string prefix;
  Bytes container;
  bool isDeciphered;  // its size, its magic and the key are right
  bool isIntact;
  bool isMadeByEncoding;
  Bytes payload;      // of an intact one, prefix included
  Decoding decoding;  // by file_cipher_decode
  // By QX_Decode, without and with checkMarker; empty unless the key is the built-in one.
  std::optional<Decoding> keyedDecoding[2];
};

std::vector<KnownContainer> KnownContainers();
KnownContainer KnownContainerNamed(const std::string& name);

// Fails the test unless `block` is what a decoder leaves of the container.
void ExpectDecodedInPlace(const GuardedBuffer& block, const KnownContainer& known);

}  // namespace launcher::test

#endif  // LAUNCHER_TESTS_SUPPORT_KNOWN_CONTAINERS_H_
