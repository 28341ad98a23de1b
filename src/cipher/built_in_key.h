// The built-in key without its key set-up at run time.

#ifndef LAUNCHER_CIPHER_BUILT_IN_KEY_H_
#define LAUNCHER_CIPHER_BUILT_IN_KEY_H_

#include <cstdint>

#include "cipher/blowfish.h"

namespace launcher {

// The context that BlowfishSetKey makes of the built-in key, computed by the compiler.
extern const BlowfishContext kBuiltInKeyContext;

// Returns the context for a key whose length is an IsBlowfishKeyLength: kBuiltInKeyContext for the
// built-in key, with `own` unwritten, and for any other key `own`, set up by BlowfishSetKey.
const BlowfishContext& ContextForKey(const std::uint8_t* key, std::uint32_t keyLength,
                                     BlowfishContext& own);

}  // namespace launcher

#endif  // LAUNCHER_CIPHER_BUILT_IN_KEY_H_
