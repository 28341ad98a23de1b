// Byte planes: 256 blocks at a time by the byte permutes of AVX-512 VBMI.
//
// A plane is a register that holds the same byte of 64 blocks, so eight planes hold 64 blocks. An
// S-box becomes four tables of 256 bytes, one for each byte of its words. To look up 64 bytes in
// such a table takes two permutes over 128 bytes each. Sums are made byte by byte in planes. Their
// carries are planes too: through mask registers a carry would reach the next byte later.
//
// A batch is two groups of 64 blocks, which share each load of a table. Two batches take turns
// round by round: while one waits for its sums, the processor looks up for the other.
//
// No address depends on the data, so cache timing reveals nothing of key or text.
//
// Only this file is compiled for such processors. So it must not define an inline function or
// anything else of which the linker keeps one copy for all files: other processors would run it.

#include <immintrin.h>

#include <cstddef>
#include <cstring>

#include "cipher/ecb_kernels.h"

// Every loop below over planes, groups or batches must be unrolled. Otherwise GCC at -O2 keeps some
// of the loops, and with them their arrays in memory, which is much slower.
#define UNROLLED _Pragma("GCC unroll 8") for

namespace launcher {
namespace {

using Plane = __m512i;

constexpr std::size_t kGroups = 2;
constexpr std::size_t kGroupSize = 512;  // 64 blocks
constexpr std::size_t kBatchSize = kGroups * kGroupSize;
// An incomplete batch takes as long as a whole one. For fewer bytes than this the other kernel is
// faster.
constexpr std::size_t kWorthwhile = 320;

// A 32-bit half of each block of a batch: plane[0] holds the least significant bytes.
struct Half {
  Plane plane[4][kGroups];
};

// The key, laid out for the permutes.
struct alignas(64) Tables {
  std::uint8_t s[4][4][256];                // box, byte of its words, index
  std::uint32_t p[kBlowfishRounds + 2][4];  // word, its byte, repeated to fill 32 bits
};

// Replaces each byte of `index` that `lanes` selects with the byte of that number in the 128 bytes
// of `low` and `high`; the instruction ignores the top bit of an index. The other bytes stay. It is
// inline assembly because compilers turn the intrinsic into a full permute and a blend, which is a
// fifth slower.
inline Plane Permute(Plane index, Plane low, Plane high, __mmask64 lanes) {
  asm("vpermi2b %2, %1, %0 %{%3%}" : "+v"(index) : "v"(low), "v"(high), "Yk"(lanes));
  return index;
}

// The bytes of one half that index a box, and a mask of those that are 128 or more. All four tables
// of the box use them.
struct Index {
  explicit Index(const Plane (&bytes)[kGroups]) : byte(bytes) {
    UNROLLED(std::size_t g = 0; g < kGroups; ++g) isHigh[g] = _mm512_movepi8_mask(bytes[g]);
  }

  const Plane (&byte)[kGroups];
  __mmask64 isHigh[kGroups];
};

inline void LookUp(const std::uint8_t (&table)[256], const Index& index, Plane (&found)[kGroups]) {
  const Plane t0 = _mm512_load_si512(table);
  const Plane t1 = _mm512_load_si512(table + 64);
  const Plane t2 = _mm512_load_si512(table + 128);
  const Plane t3 = _mm512_load_si512(table + 192);
  UNROLLED(std::size_t g = 0; g < kGroups; ++g) {
    found[g] = Permute(index.byte[g], t2, t3, index.isHigh[g]);
  }
  // The lanes below 128 were not selected, so they still hold their index.
  UNROLLED(std::size_t g = 0; g < kGroups; ++g) {
    found[g] = Permute(found[g], t0, t1, _knot_mask64(index.isHigh[g]));
  }
}

using Box = std::uint8_t[4][256];

inline void Set(Half& sum, const Box& box, const Index& index) {
  UNROLLED(std::size_t j = 0; j < 4; ++j) LookUp(box[j], index, sum.plane[j]);
}

inline void Xor(Half& sum, const Box& box, const Index& index) {
  UNROLLED(std::size_t j = 0; j < 4; ++j) {
    Plane found[kGroups];
    LookUp(box[j], index, found);
    UNROLLED(std::size_t g = 0; g < kGroups; ++g) {
      sum.plane[j][g] = _mm512_xor_si512(sum.plane[j][g], found[g]);
    }
  }
}

// Returns the carry out of each byte of `sum`, 0 or 1. `sum` is a + b plus the carry in.
//
// A byte wrapped if at least two of a, b and not sum have their top bit set. The ternary logic
// computes the opposite, for all bits at once. The shuffle then makes a byte of the top bit: if it
// is set, 0; otherwise the low bits choose one of sixteen bytes, and all of them are 1.
inline Plane CarryOf(Plane a, Plane b, Plane sum) {
  // The truth table: bit 4a + 2b + sum is set if these three bits mean that there is no carry.
  constexpr int kHasNone = 0x2B;
  return _mm512_shuffle_epi8(_mm512_set1_epi8(1), _mm512_ternarylogic_epi32(a, b, sum, kHasNone));
}

inline void Add(Half& sum, const Box& box, const Index& index) {
  Plane carry[kGroups];
  UNROLLED(std::size_t j = 0; j < 4; ++j) {
    Plane found[kGroups];
    LookUp(box[j], index, found);
    UNROLLED(std::size_t g = 0; g < kGroups; ++g) {
      // The sum is modulo 2^32: nothing carries into the lowest byte or out of the highest.
      const Plane before = sum.plane[j][g];
      Plane after = _mm512_add_epi8(before, found[g]);
      if (j != 0) after = _mm512_add_epi8(after, carry[g]);
      if (j != 3) carry[g] = CarryOf(before, found[g], after);
      sum.plane[j][g] = after;
    }
  }
}

// other ^= F(half) ^ word. `word` is the subkey that `other` needs before the next round uses it.
// Here it takes part in a three-way exclusive-or, so it needs no instruction of its own.
inline void RunRound(const Tables& tables, const Half& half, Half& other,
                     const std::uint32_t (&word)[4]) {
  constexpr int kXorOfThree = 0x96;
  Half sum;
  Set(sum, tables.s[0], Index(half.plane[3]));
  Add(sum, tables.s[1], Index(half.plane[2]));
  Xor(sum, tables.s[2], Index(half.plane[1]));
  Add(sum, tables.s[3], Index(half.plane[0]));
  UNROLLED(std::size_t j = 0; j < 4; ++j) {
    const Plane subkey = _mm512_set1_epi32(static_cast<int>(word[j]));
    UNROLLED(std::size_t g = 0; g < kGroups; ++g) {
      other.plane[j][g] =
          _mm512_ternarylogic_epi32(other.plane[j][g], sum.plane[j][g], subkey, kXorOfThree);
    }
  }
}

// Transposes a 4 x 4 matrix of 128-bit quarters. Each function named Turn... transposes, and so
// undoes itself: Load and Store use the same ones.
inline void TurnQuarters(Plane& row0, Plane& row1, Plane& row2, Plane& row3) {
  constexpr int kEven = 0x88;
  constexpr int kOdd = 0xDD;
  const Plane a = _mm512_shuffle_i64x2(row0, row1, kEven);
  const Plane b = _mm512_shuffle_i64x2(row0, row1, kOdd);
  const Plane c = _mm512_shuffle_i64x2(row2, row3, kEven);
  const Plane d = _mm512_shuffle_i64x2(row2, row3, kOdd);
  row0 = _mm512_shuffle_i64x2(a, c, kEven);
  row1 = _mm512_shuffle_i64x2(b, d, kEven);
  row2 = _mm512_shuffle_i64x2(a, c, kOdd);
  row3 = _mm512_shuffle_i64x2(b, d, kOdd);
}

// Transposes an 8 x 8 matrix of 64-bit words: pairs of words by the unpacks, then the quarters.
inline void TurnWords(Plane (&row)[8]) {
  UNROLLED(std::size_t i = 0; i < 8; i += 2) {
    const Plane first = row[i];
    row[i] = _mm512_unpacklo_epi64(first, row[i + 1]);
    row[i + 1] = _mm512_unpackhi_epi64(first, row[i + 1]);
  }
  UNROLLED(std::size_t i = 0; i < 2; ++i) TurnQuarters(row[i], row[i + 2], row[i + 4], row[i + 6]);
}

// Transposes the 8 x 8 bytes of one register.
inline Plane TurnBytes(Plane square) {
  alignas(64) static constexpr std::uint8_t kOrder[64] = {
      0,  8,  16, 24, 32, 40, 48, 56, 1,  9,  17, 25, 33, 41, 49, 57, 2,  10, 18, 26, 34, 42,
      50, 58, 3,  11, 19, 27, 35, 43, 51, 59, 4,  12, 20, 28, 36, 44, 52, 60, 5,  13, 21, 29,
      37, 45, 53, 61, 6,  14, 22, 30, 38, 46, 54, 62, 7,  15, 23, 31, 39, 47, 55, 63};
  return _mm512_permutexvar_epi8(_mm512_load_si512(kOrder), square);
}

inline void XorSubkey(Half& half, const std::uint32_t (&word)[4]) {
  UNROLLED(std::size_t j = 0; j < 4; ++j) {
    const Plane subkey = _mm512_set1_epi32(static_cast<int>(word[j]));
    UNROLLED(std::size_t g = 0; g < kGroups; ++g) {
      half.plane[j][g] = _mm512_xor_si512(half.plane[j][g], subkey);
    }
  }
}

// A register is loaded with 8 blocks. TurnBytes collects the bytes of equal place in the block into
// one 64-bit word each, and TurnWords collects the words of all 64 blocks into planes. The words of
// a block are little-endian, so the planes are in the order of Half, the left half first.
inline void Load(const std::uint8_t* blocks, Half& left, Half& right) {
  UNROLLED(std::size_t g = 0; g < kGroups; ++g) {
    Plane row[8];
    UNROLLED(std::size_t i = 0; i < 8; ++i) {
      row[i] = TurnBytes(_mm512_loadu_si512(blocks + g * kGroupSize + i * 64));
    }
    TurnWords(row);
    UNROLLED(std::size_t j = 0; j < 4; ++j) {
      left.plane[j][g] = row[j];
      right.plane[j][g] = row[j + 4];
    }
  }
}

// Load in reverse.
inline void Store(std::uint8_t* blocks, const Half& left, const Half& right) {
  UNROLLED(std::size_t g = 0; g < kGroups; ++g) {
    Plane row[8];
    UNROLLED(std::size_t j = 0; j < 4; ++j) {
      row[j] = left.plane[j][g];
      row[j + 4] = right.plane[j][g];
    }
    TurnWords(row);
    UNROLLED(std::size_t i = 0; i < 8; ++i) {
      _mm512_storeu_si512(blocks + g * kGroupSize + i * 64, TurnBytes(row[i]));
    }
  }
}

// Transforms kBatches * kBatchSize bytes.
template <std::size_t kBatches>
void TransformBatches(const Tables& tables, std::uint8_t* blocks) {
  Half left[kBatches];
  Half right[kBatches];
  UNROLLED(std::size_t b = 0; b < kBatches; ++b) {
    Load(blocks + b * kBatchSize, left[b], right[b]);
    XorSubkey(left[b], tables.p[0]);
  }
  for (std::size_t round = 0; round < kBlowfishRounds; round += 2) {
    UNROLLED(std::size_t b = 0; b < kBatches; ++b) {
      RunRound(tables, left[b], right[b], tables.p[round + 1]);
    }
    UNROLLED(std::size_t b = 0; b < kBatches; ++b) {
      RunRound(tables, right[b], left[b], tables.p[round + 2]);
    }
  }
  UNROLLED(std::size_t b = 0; b < kBatches; ++b) {
    // The rounds have applied every subkey except the last. The cipher undoes the swap of its last
    // round, so the right half is stored as the left one.
    XorSubkey(right[b], tables.p[kBlowfishRounds + 1]);
    Store(blocks + b * kBatchSize, right[b], left[b]);
  }
}

// Puts the least significant bytes of 16 words into the first quarter of the register, the next
// bytes into the second, and so on.
inline Plane GatherBytes(Plane words) {
  alignas(64) static constexpr std::uint8_t kOrder[64] = {
      0,  4,  8,  12, 16, 20, 24, 28, 32, 36, 40, 44, 48, 52, 56, 60, 1,  5,  9,  13, 17, 21,
      25, 29, 33, 37, 41, 45, 49, 53, 57, 61, 2,  6,  10, 14, 18, 22, 26, 30, 34, 38, 42, 46,
      50, 54, 58, 62, 3,  7,  11, 15, 19, 23, 27, 31, 35, 39, 43, 47, 51, 55, 59, 63};
  return _mm512_permutexvar_epi8(_mm512_load_si512(kOrder), words);
}

// Makes the tables of a key. Takes 64 words of a box at a time: four registers of 16 words become
// four registers with one byte of each word.
void SetTables(Tables& tables, const BlowfishP& p, const BlowfishS& s) {
  for (std::size_t box = 0; box < 4; ++box) {
    for (std::size_t i = 0; i < 256; i += 64) {
      Plane row[4];
      UNROLLED(std::size_t j = 0; j < 4; ++j) {
        row[j] = GatherBytes(_mm512_loadu_si512(&s[box][i + 16 * j]));
      }
      TurnQuarters(row[0], row[1], row[2], row[3]);
      UNROLLED(std::size_t j = 0; j < 4; ++j) _mm512_store_si512(&tables.s[box][j][i], row[j]);
    }
  }
  for (std::size_t word = 0; word < kBlowfishRounds + 2; ++word) {
    for (std::size_t j = 0; j < 4; ++j) {
      tables.p[word][j] = ((p[word] >> (8 * j)) & 0xFF) * 0x01010101u;
    }
  }
}

}  // namespace

void TransformByBytePlanes(const BlowfishP& p, const BlowfishS& s, std::uint8_t* region,
                           std::size_t size) {
  if (size >= kWorthwhile) {
    Tables tables;
    SetTables(tables, p, s);
    for (; size >= 2 * kBatchSize; size -= 2 * kBatchSize, region += 2 * kBatchSize) {
      TransformBatches<2>(tables, region);
    }
    if (size >= kBatchSize) {
      TransformBatches<1>(tables, region);
      size -= kBatchSize;
      region += kBatchSize;
    }
    if (size >= kWorthwhile) {
      // In a buffer, since the bytes after the region are not ours. Its blocks that are missing are
      // zero, and what becomes of them is dropped.
      alignas(64) std::uint8_t batch[kBatchSize] = {};
      std::memcpy(batch, region, size);
      TransformBatches<1>(tables, batch);
      std::memcpy(region, batch, size);
      return;
    }
  }
  if (size != 0) TransformSideBySide(p, s, region, size);
}

}  // namespace launcher
