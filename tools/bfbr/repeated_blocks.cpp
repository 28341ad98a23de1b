#include "bfbr/repeated_blocks.h"

#include <algorithm>
#include <cstring>

namespace launcher {
namespace {

// Spreads blocks that look alike over all 64 bits; different blocks stay different.
std::uint64_t Mixed(std::uint64_t block) {
  block ^= block >> 32;
  block *= 0x9E3779B97F4A7C15;  // odd, so that the product can be undone
  block ^= block >> 29;
  block *= 0xBF58476D1CE4E5B9;
  return block ^ (block >> 32);
}

// Sorts by eight bits at a time from the top, each word swapped to its stretch, until stretches are
// so short that a plain sort is quicker.
std::uint64_t CountRepeated(std::uint64_t* words, std::size_t count, int shift) {
  if (count < 2) return 0;
  constexpr std::size_t kShort = 64;
  if (count <= kShort) {
    std::sort(words, words + count);
    const auto distinct = std::unique(words, words + count) - words;
    return count - static_cast<std::size_t>(distinct);
  }
  const auto digit = [shift](std::uint64_t word) { return (word >> shift) & 0xFF; };
  std::size_t next[257] = {};
  for (std::size_t i = 0; i < count; ++i) ++next[digit(words[i]) + 1];
  for (std::size_t d = 1; d < 257; ++d) next[d] += next[d - 1];
  std::size_t begin[257];
  std::copy(next, next + 257, begin);
  for (std::size_t d = 0; d < 256; ++d) {
    while (next[d] < begin[d + 1]) {
      std::uint64_t word = words[next[d]];
      while (digit(word) != d) std::swap(word, words[next[digit(word)]++]);
      words[next[d]++] = word;
    }
  }
  std::uint64_t repeated = 0;
  for (std::size_t d = 0; d < 256; ++d) {
    const std::size_t size = begin[d + 1] - begin[d];
    if (shift > 0) {
      repeated += CountRepeated(words + begin[d], size, shift - 8);
    } else if (size > 1) {
      repeated += size - 1;  // all 64 bits are the same
    }
  }
  return repeated;
}

}  // namespace

std::uint64_t CountRepeatedBlocks(std::uint8_t* blocks, std::size_t count) {
  auto* const words = reinterpret_cast<std::uint64_t*>(blocks);
  for (std::size_t i = 0; i < count; ++i) {
    std::uint64_t word = 0;
    std::memcpy(&word, blocks + 8 * i, sizeof word);
    words[i] = Mixed(word);
  }
  return CountRepeated(words, count, 56);
}

}  // namespace launcher
