#include "cipher/built_in_key.h"

#include <cstring>

#include "cipher/blowfish_key_setup.h"
#include "config/string_table.h"

namespace launcher {
namespace {

constexpr std::uint32_t kBuiltInKeyLength = sizeof kBuiltInKey - 1;

constexpr BlowfishContext MakeBuiltInKeyContext() {
  BlowfishContext context = kBlowfishPi;
  BlowfishSetKeyUnchecked(context, kBuiltInKey, kBuiltInKeyLength);
  return context;
}

}  // namespace

constexpr BlowfishContext kBuiltInKeyContext = MakeBuiltInKeyContext();

const BlowfishContext& ContextForKey(const std::uint8_t* key, std::uint32_t keyLength,
                                     BlowfishContext& own) {
  if (keyLength == kBuiltInKeyLength && std::memcmp(key, kBuiltInKey, keyLength) == 0) {
    return kBuiltInKeyContext;
  }
  BlowfishSetKey(own, key, keyLength);
  return own;
}

}  // namespace launcher
