// The subkeys for a key, in the least time.

#ifndef LAUNCHER_CIPHER_BUILT_IN_KEY_H_
#define LAUNCHER_CIPHER_BUILT_IN_KEY_H_

#include <cstdint>

#include "cipher/blowfish.h"

namespace launcher {

// Those of the built-in key, which the compiler computes.
extern const BlowfishContext kBuiltInContext;

// The subkeys that BlowfishSetKey makes of a key whose length IsBlowfishKeyLength: in `own`, or,
// for the built-in key, kBuiltInContext with `own` unwritten.
const BlowfishContext& SubkeysFor(const std::uint8_t* key, std::uint32_t keyLength,
                                  BlowfishContext& own);

}  // namespace launcher

#endif  // LAUNCHER_CIPHER_BUILT_IN_KEY_H_
