#include "cipher/key_setup.h"

#include <cstring>

#include "cipher/blowfish_schedule.h"
#include "config/cipher_texts.h"
#include "platform/cpu_features.h"

namespace launcher {
namespace {

constexpr std::uint32_t kBuiltInKeyLength = sizeof kBuiltInKey - 1;

constexpr BlowfishContext ExpandBuiltInKey() {
  BlowfishContext context = kBlowfishPi;
  ExpandKey<ShiftedBytes>(context, kBuiltInKey, kBuiltInKeyLength);
  return context;
}

// One instruction takes a byte out of the middle of a word where a shift and a mask are two, and
// every round waits for it. Compilers know the instruction but make the two of it again.
struct ExtractedBytes {
  static std::uint32_t Second(std::uint32_t x) { return Extract(x, 0x0810); }
  static std::uint32_t Third(std::uint32_t x) { return Extract(x, 0x0808); }

  // `bits` is how many, and behind it from which on.
  static std::uint32_t Extract(std::uint32_t x, std::uint32_t bits) {
    std::uint32_t byte = 0;
    asm("bextr %2, %1, %0" : "=r"(byte) : "r"(x), "r"(bits) : "cc");
    return byte;
  }
};

}  // namespace

constexpr BlowfishContext kBuiltInContext = ExpandBuiltInKey();

void BlowfishSetKeyByBmi1(BlowfishContext& context, const std::uint8_t* key,
                          std::uint32_t keyLength) {
  ExpandKey<ExtractedBytes>(context, key, keyLength);
}

const BlowfishContext& SubkeysFor(const std::uint8_t* key, std::uint32_t keyLength,
                                  BlowfishContext& own) {
  if (keyLength == kBuiltInKeyLength && std::memcmp(key, kBuiltInKey, keyLength) == 0) {
    return kBuiltInContext;
  }
  if (ThisCpu().hasBmi1) {
    BlowfishSetKeyByBmi1(own, key, keyLength);
  } else {
    BlowfishSetKey(own, key, keyLength);
  }
  return own;
}

}  // namespace launcher
