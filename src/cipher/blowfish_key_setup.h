// The key schedule's own code, for run time and for compile time.
//
// It is 521 encipherments of which each takes the result of the one before, so a round's latency is
// all that counts. The other half takes its subkey ahead of the round, off that path.

#ifndef LAUNCHER_CIPHER_BLOWFISH_KEY_SETUP_H_
#define LAUNCHER_CIPHER_BLOWFISH_KEY_SETUP_H_

#include <cstddef>
#include <cstdint>
#include <utility>

#include "cipher/blowfish.h"
#include "cipher/blowfish_pi.h"

namespace launcher {

// Enciphers one block; the rounds are written out.
template <std::size_t... kPair>
constexpr void EncipherForSchedule(const BlowfishContext& context, std::uint32_t& left,
                                   std::uint32_t& right, std::index_sequence<kPair...> /*pairs*/) {
  std::uint32_t l = left ^ context.p[0];
  std::uint32_t r = right;
  ((r = (r ^ context.p[2 * kPair + 1]) ^ BlowfishF(context.s, l),
    l = (l ^ context.p[2 * kPair + 2]) ^ BlowfishF(context.s, r)),
   ...);
  left = r ^ context.p[kBlowfishRounds + 1];
  right = l;
}

// Each pair of words becomes the cipher text, under the words so far, of the pair before it.
template <std::size_t kCount>
constexpr void ReplacePairs(const BlowfishContext& context, std::uint32_t (&words)[kCount],
                            std::uint32_t& left, std::uint32_t& right) {
  for (std::size_t i = 0; i < kCount; i += 2) {
    EncipherForSchedule(context, left, right, std::make_index_sequence<kBlowfishRounds / 2>());
    words[i] = left;
    words[i + 1] = right;
  }
}

// Expands a key whose length IsBlowfishKeyLength. `Byte` is std::uint8_t, or char for a text.
template <class Byte>
constexpr void ExpandKey(BlowfishContext& context, const Byte* key, std::uint32_t keyLength) {
  context = kBlowfishPi;
  // Four bytes of the key to a word, first byte first, going back to its start at its end.
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
