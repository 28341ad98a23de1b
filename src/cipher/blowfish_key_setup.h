// The code of Blowfish's key set-up, for run time and for compile time.
//
// Key set-up is 521 encipherments, each of the result of the one before. Blocks side by side are
// impossible here, so the time that one round takes decides. To shorten it, each half is combined
// with its next subkey while the round function still works on the other half.

#ifndef LAUNCHER_CIPHER_BLOWFISH_KEY_SETUP_H_
#define LAUNCHER_CIPHER_BLOWFISH_KEY_SETUP_H_

#include <cstddef>
#include <cstdint>
#include <utility>

#include "cipher/blowfish.h"
#include "cipher/blowfish_pi.h"

namespace launcher {

// Enciphers one block, with all rounds written out. Each pair of rounds also applies the subkey of
// the round after it: `l` starts with p[0], and the last pair applies p[16].
template <std::size_t... kPair>
constexpr void EncipherForKeySetup(const BlowfishContext& context, std::uint32_t& left,
                                   std::uint32_t& right, std::index_sequence<kPair...> /*pairs*/) {
  std::uint32_t l = left ^ context.p[0];
  std::uint32_t r = right;
  ((r = (r ^ context.p[2 * kPair + 1]) ^ BlowfishF(context.s, l),
    l = (l ^ context.p[2 * kPair + 2]) ^ BlowfishF(context.s, r)),
   ...);
  left = r ^ context.p[kBlowfishRounds + 1];
  right = l;
}

// Replaces each pair of words with the encipherment of the pair before it. The words are part of
// `context`: as published, each encipherment already uses the words that were replaced before.
template <std::size_t kCount>
constexpr void ReplacePairs(const BlowfishContext& context, std::uint32_t (&words)[kCount],
                            std::uint32_t& left, std::uint32_t& right) {
  for (std::size_t i = 0; i < kCount; i += 2) {
    EncipherForKeySetup(context, left, right, std::make_index_sequence<kBlowfishRounds / 2>());
    words[i] = left;
    words[i + 1] = right;
  }
}

// BlowfishSetKey for a key that is not null and whose length is an IsBlowfishKeyLength. `Byte` is
// std::uint8_t, or char for a text.
template <class Byte>
constexpr void BlowfishSetKeyUnchecked(BlowfishContext& context, const Byte* key,
                                       std::uint32_t keyLength) {
  context = kBlowfishPi;
  // Each word takes four bytes of the key, the first byte most significant. The key repeats.
  std::uint32_t position = 0;
  for (std::uint32_t& word : context.p) {
    std::uint32_t bytes = 0;
    for (int i = 0; i < 4; ++i) {
      bytes = (bytes << 8) | static_cast<std::uint8_t>(key[position]);
      position = position + 1 == keyLength ? 0 : position + 1;
    }
    word ^= bytes;
  }

  std::uint32_t left = 0;
  std::uint32_t right = 0;
  ReplacePairs(context, context.p, left, right);
  for (BlowfishBox& box : context.s) ReplacePairs(context, box, left, right);
}

}  // namespace launcher

#endif  // LAUNCHER_CIPHER_BLOWFISH_KEY_SETUP_H_
