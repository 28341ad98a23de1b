// Key set-up, and Blowfish for one block. Regions go through the kernels of ecb.h; these plain
// functions are what the kernels are tested against.

#include "cipher/blowfish.h"

#include "cipher/blowfish_key_setup.h"

namespace launcher {

void BlowfishSetKey(BlowfishContext& context, const std::uint8_t* key, std::uint32_t keyLength) {
  if (key == nullptr || !IsBlowfishKeyLength(keyLength)) return;
  BlowfishSetKeyUnchecked(context, key, keyLength);
}

// Two rounds per iteration: the halves swap their roles, and no value moves. The published cipher
// undoes the swap of its last round, so `r` ends as the left half and `l` as the right one.

void BlowfishEncipherBlock(const BlowfishContext& context, std::uint32_t& left,
                           std::uint32_t& right) {
  std::uint32_t l = left;
  std::uint32_t r = right;
  for (std::size_t i = 0; i < kBlowfishRounds; i += 2) {
    l ^= context.p[i];
    r ^= BlowfishF(context.s, l);
    r ^= context.p[i + 1];
    l ^= BlowfishF(context.s, r);
  }
  left = r ^ context.p[kBlowfishRounds + 1];
  right = l ^ context.p[kBlowfishRounds];
}

void BlowfishDecipherBlock(const BlowfishContext& context, std::uint32_t& left,
                           std::uint32_t& right) {
  std::uint32_t l = left;
  std::uint32_t r = right;
  for (std::size_t i = kBlowfishRounds + 1; i > 1; i -= 2) {
    l ^= context.p[i];
    r ^= BlowfishF(context.s, l);
    r ^= context.p[i - 1];
    l ^= BlowfishF(context.s, r);
  }
  left = r ^ context.p[0];
  right = l ^ context.p[1];
}

}  // namespace launcher
