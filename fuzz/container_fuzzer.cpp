// Both ways to decode a container, and to encode it in place, compared with libcrypto's Blowfish
// and SHA-256. For reads and writes beyond a buffer, and for containers that no table has.
//
// A random change of a container changes whole blocks, which the digest refuses. So our own mutator
// deciphers the container, changes the content, and enciphers it again.

// The plain functions of the cipher take words, as the container has them.
#define OPENSSL_SUPPRESS_DEPRECATED
#include <openssl/blowfish.h>
#include <openssl/sha.h>

#include <algorithm>
#include <cstring>
#include <optional>
#include <random>

#include "config/string_table.h"
#include "fuzz/fuzzing.h"
#include "launcher_dll.h"
#include "support/guarded_buffer.h"
#include "support/imitated_cpu.h"

extern "C" std::size_t LLVMFuzzerMutate(std::uint8_t* data, std::size_t size, std::size_t maxSize);

namespace launcher {
namespace {

using fuzz::Bytes;
using fuzz::Require;
using test::GuardedBuffer;

constexpr std::size_t kPayload = 40;
constexpr std::uint32_t kUnwritten = 0xCDCDCDCD;

enum Flag : std::uint8_t { kHasPrefix = 1, kChecksMarker = 2, kHasPlainCpu = 4 };

// Three bytes of flags and lengths, and then the fields.
struct Input {
  std::uint8_t flags = 0;
  Bytes key;  // none: the built-in one
  Bytes prefix;
  Bytes block;

  Input(const std::uint8_t* data, std::size_t size) {
    const std::uint8_t* const end = data + size;
    std::uint8_t head[3] = {};
    for (std::uint8_t& byte : head) byte = data != end ? *data++ : std::uint8_t{0};
    const auto take = [&](std::size_t count) {
      const auto taken = std::min(count, static_cast<std::size_t>(end - data));
      data += taken;
      return Bytes(data - taken, data);
    };
    flags = head[0];
    key = take(head[1] % 64u);
    prefix = take(head[2] % 64u);
    std::replace(prefix.begin(), prefix.end(), std::uint8_t{0}, std::uint8_t{1});
    block = take(size);
  }

  Bytes Written() const {
    Bytes bytes = {flags, static_cast<std::uint8_t>(key.size()),
                   static_cast<std::uint8_t>(prefix.size())};
    for (const Bytes* part : {&key, &prefix, &block}) {
      bytes.insert(bytes.end(), part->begin(), part->end());
    }
    return bytes;
  }

  bool HasBuiltInKey() const { return key.empty(); }
  Bytes Key() const { return HasBuiltInKey() ? test::BytesOf(kBuiltInKey) : key; }
};

// All whole blocks of 8 bytes from offset 4 on, by BF_encrypt or BF_decrypt.
Bytes Transformed(Bytes block, const Bytes& key, decltype(BF_encrypt)& transform) {
  // Seldom another key than before.
  static Bytes known;
  static BF_KEY schedule;
  if (key != known) BF_set_key(&schedule, static_cast<int>(key.size()), key.data());
  known = key;
  for (std::size_t at = 4; at + 8 <= block.size(); at += 8) {
    BF_LONG words[2];
    std::memcpy(words, &block[at], 8);
    transform(words, &schedule);
    std::memcpy(&block[at], words, 8);
  }
  return block;
}

std::uint64_t SizeFor(std::uint64_t payloadSize) { return 4 + (payloadSize + 36 + 7) / 8 * 8; }

// What an intact deciphered container holds.
std::optional<std::uint32_t> PayloadSize(const Bytes& plain) {
  std::uint32_t payloadSize = 0;
  std::memcpy(&payloadSize, &plain[4], 4);
  if (SizeFor(payloadSize) != plain.size()) return std::nullopt;
  std::uint8_t digest[SHA256_DIGEST_LENGTH];
  SHA256(plain.data() + kPayload, payloadSize, digest);
  if (std::memcmp(&plain[8], digest, sizeof digest) != 0) return std::nullopt;
  return payloadSize;
}

// What is to become of a block.
struct Expected {
  Bytes block;                               // after the call
  std::optional<std::uint32_t> payloadSize;  // of an intact container
};

Expected ExpectedOf(const Input& input) {
  const Bytes& block = input.block;
  const std::size_t keyLength = input.Key().size();
  const bool isTried = block.size() >= kPayload && block.size() % 8 == 4 &&
                       std::memcmp(block.data(), "BFBR", 4) == 0 && keyLength >= 4 &&
                       keyLength <= 56;
  if (!isTried) return {block, std::nullopt};
  Bytes plain = Transformed(block, input.Key(), BF_decrypt);
  const std::optional<std::uint32_t> payloadSize = PayloadSize(plain);
  return {std::move(plain), payloadSize};
}

// By file_cipher_decode, or by QX_Decode, which has its own key and its own prefix.
void CheckDecode(const Input& input, const Expected& expected, bool isKeyed) {
  const std::string prefix =
      isKeyed ? kSignatureMarker : std::string(input.prefix.begin(), input.prefix.end());
  const bool asksPrefix = (input.flags & (isKeyed ? kChecksMarker : kHasPrefix)) != 0;
  const bool isIntact = expected.payloadSize.has_value();
  const bool skips = asksPrefix && isIntact && prefix.size() <= *expected.payloadSize &&
                     std::memcmp(&expected.block[kPayload], prefix.data(), prefix.size()) == 0;
  const GuardedBuffer block(input.block);
  const GuardedBuffer key(input.Key());
  std::uint32_t size = kUnwritten;
  std::uint32_t offset = kUnwritten;
  if (isKeyed) {
    const ResultCode result = QX_Decode(block.Data(), static_cast<std::int32_t>(block.Size()),
                                        &size, &offset, asksPrefix ? 0xFF : 0xFFFFFF00);
    Require(result == (input.block.empty() ? QX_SIZE_REFUSED : QX_SUCCEEDED), "its result");
  } else {
    const CipherCode result = file_cipher_decode(block.Data(), block.Size(), key.Data(),
                                                 static_cast<std::int32_t>(key.Size()), &size,
                                                 &offset, asksPrefix ? prefix.c_str() : nullptr);
    const bool succeeds = isIntact && skips == asksPrefix;
    Require(result == (succeeds ? QX_CIPHER_SUCCEEDED : QX_CIPHER_FAILED), "the prefix decides");
  }
  Require(block.Content() == expected.block, "what is deciphered");
  if (isIntact) {
    const auto skipped = static_cast<std::uint32_t>(skips ? prefix.size() : 0);
    Require(size == *expected.payloadSize - skipped && offset == kPayload + skipped, "the payload");
  } else {
    const std::uint32_t left = isKeyed && !input.block.empty() ? 0 : kUnwritten;
    Require(size == left && offset == left, "the outputs if no container is intact");
  }
}

// Encodes the payload of an intact container in an area where it overlaps its container. The result
// is that container, except for the filler.
void CheckEncode(const Input& input, const Expected& expected) {
  const std::uint32_t size = *expected.payloadSize;
  Bytes plain = expected.block;
  std::fill(plain.begin() + kPayload + size, plain.end(), std::uint8_t{0});
  const GuardedBuffer area(input.block.size() + input.flags);
  std::uint8_t* const payload = area.Data() + kPayload + input.flags;
  std::copy_n(plain.begin() + kPayload, size, payload);
  Bytes wanted = area.Content();
  Require(file_cipher_get_encode_size(size) == input.block.size(), "the size of a container");
  Require((file_cipher_encode(payload, size, area.Data()) == 0) == (size != 0), "encoding");
  if (size != 0) {
    const Bytes container = Transformed(plain, input.Key(), BF_encrypt);
    std::copy(container.begin(), container.end(), wanted.begin());
  }
  Require(area.Content() == wanted, "encode(decode(x)) == x, and nothing else is written");
}

// Changes the deciphered content, mostly so that the container stays intact.
void Change(Input& input, std::minstd_rand& random, std::size_t maxSize) {
  const auto oneIn = [&](unsigned count) { return random() / 7 % count == 0; };
  Bytes plain = Transformed(input.block, input.Key(), BF_decrypt);
  plain.resize(std::max(plain.size(), kPayload));
  std::size_t payloadSize = PayloadSize(plain).value_or(plain.size() - kPayload);
  const std::size_t maxPayload = std::max(payloadSize, maxSize - std::min(maxSize, kPayload + 80));
  plain.resize(kPayload + maxPayload);
  if (maxPayload != 0 && !oneIn(4)) {
    payloadSize = LLVMFuzzerMutate(plain.data() + kPayload, payloadSize, maxPayload);
  }
  plain.resize(kPayload + payloadSize);
  const Bytes marker = test::BytesOf(kSignatureMarker);
  for (const Bytes& start : {input.prefix, marker}) {
    if (oneIn(8)) plain.insert(plain.begin() + kPayload, start.begin(), start.end());
  }
  std::uint8_t filler = oneIn(4) ? 0xF1 : 0;
  if (!input.prefix.empty() && oneIn(16)) {  // all of the prefix, but its end is no payload
    plain.resize(kPayload);
    plain.insert(plain.end(), input.prefix.begin(), input.prefix.end() - 1);
    filler = input.prefix.back();
    input.flags |= kHasPrefix;
  }
  payloadSize = plain.size() - kPayload;
  plain.resize(SizeFor(payloadSize), filler);
  std::memcpy(plain.data(), "BFBR", 4);
  std::memcpy(&plain[4], &payloadSize, 4);
  SHA256(plain.data() + kPayload, payloadSize, &plain[8]);

  // A flaw: a length near 2^32, which wraps, a bit of the length or the digest, or the size.
  if (oneIn(16)) std::fill(&plain[5], &plain[8], std::uint8_t{0xFF});
  if (oneIn(8)) plain[4 + random() % 36] ^= static_cast<std::uint8_t>(1 << random() % 8);
  if (oneIn(16)) plain.resize(plain.size() + random() % 17 - 8);

  if (oneIn(8)) input.key = test::Pattern(random() % 60);
  if (oneIn(8)) input.flags = static_cast<std::uint8_t>(random());
  input.block = Transformed(plain, input.Key(), BF_encrypt);
}

}  // namespace
}  // namespace launcher

extern "C" std::size_t LLVMFuzzerCustomMutator(std::uint8_t* data, std::size_t size,
                                               std::size_t maxSize, unsigned seed) {
  using namespace launcher;
  std::minstd_rand random(seed);
  if (random() % 4 == 0) return LLVMFuzzerMutate(data, size, maxSize);
  Input input(data, size);
  Change(input, random, maxSize);
  const Bytes written = input.Written();
  if (written.size() > maxSize) return LLVMFuzzerMutate(data, size, maxSize);
  std::copy(written.begin(), written.end(), data);
  return written.size();
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace launcher;
  const Input input(data, size);
  std::optional<test::ImitatedCpu> plainCpu;
  if ((input.flags & kHasPlainCpu) != 0) plainCpu.emplace(CpuFeatures());

  const Expected expected = ExpectedOf(input);
  CheckDecode(input, expected, false);
  if (input.HasBuiltInKey()) CheckDecode(input, expected, true);
  if (input.HasBuiltInKey() && expected.payloadSize) CheckEncode(input, expected);
  return 0;
}
