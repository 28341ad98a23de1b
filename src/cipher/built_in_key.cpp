// The key set-up of the built-in key happens at compile time, since at run time it would take most
// of the time that a small container needs.

#include "cipher/built_in_key.h"

#include <cstring>

#include "cipher/blowfish_key_setup.h"
#include "config/string_table.h"

namespace launcher {
namespace {

// The key is its characters, without the terminator.
constexpr std::uint32_t kBuiltInKeyLength = sizeof kBuiltInKey - 1;

constexpr BlowfishContext MakeBuiltInKeyContext() {
  // Key set-up writes every word. C++17 requires a first value at compile time nevertheless.
  BlowfishContext context = kBlowfishPi;
  BlowfishSetKeyUnchecked(context, kBuiltInKey, kBuiltInKeyLength);
  return context;
}

}  // namespace

constexpr BlowfishContext kBuiltInKeyContext = MakeBuiltInKeyContext();

const BlowfishContext& ContextForKey(const std::uint8_t* key, std::uint32_t keyLength,
                                     BlowfishContext& own) {
  // The length must match too: a longer key that begins with the built-in key is another key.
  if (keyLength == kBuiltInKeyLength && std::memcmp(key, kBuiltInKey, keyLength) == 0) {
    return kBuiltInKeyContext;
  }
  BlowfishSetKey(own, key, keyLength);
  return own;
}

}  // namespace launcher
