// The key schedule, and one block at a time. Whole regions go through ecb.h.

#include "cipher/blowfish.h"

#include "cipher/blowfish_pi.h"

namespace launcher {
namespace {

// Joins the next four bytes of the key, first byte first, going back to its start at its end.
std::uint32_t NextKeyWord(const std::uint8_t* key, std::uint32_t keyLength,
                          std::uint32_t& position) {
  std::uint32_t word = 0;
  for (int i = 0; i < 4; ++i) {
    word = (word << 8) | key[position];
    position = position + 1 == keyLength ? 0 : position + 1;
  }
  return word;
}

}  // namespace

void BlowfishSetKey(BlowfishContext& context, const std::uint8_t* key, std::uint32_t keyLength) {
  if (key == nullptr || !IsBlowfishKeyLength(keyLength)) return;

  context = kBlowfishPi;
  std::uint32_t position = 0;
  for (std::uint32_t& word : context.p) word ^= NextKeyWord(key, keyLength, position);

  // Each pair of words becomes the cipher text, under the words so far, of the pair before it.
  std::uint32_t left = 0;
  std::uint32_t right = 0;
  const auto replacePairs = [&](auto& words) {
    constexpr std::size_t kCount = sizeof words / sizeof words[0];
    for (std::size_t i = 0; i < kCount; i += 2) {
      BlowfishEncipherBlock(context, left, right);
      words[i] = left;
      words[i + 1] = right;
    }
  };
  replacePairs(context.p);
  for (auto& box : context.s) replacePairs(box);
}

// Two rounds a turn, so that the halves change places by name and not by moving.

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
