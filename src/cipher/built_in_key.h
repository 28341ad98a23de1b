// The built-in key without its key set-up at run time.

#ifndef LAUNCHER_CIPHER_BUILT_IN_KEY_H_
#define LAUNCHER_CIPHER_BUILT_IN_KEY_H_

#include <cstdint>

#include "cipher/blowfish.h"

namespace launcher {

// The context that BlowfishSetKey makes of the built-in key, computed by the compiler.
extern const BlowfishContext kBuiltInKeyContext;

// Returns the context for a key of keyLength bytes, which must be an IsBlowfishKeyLength. For the
// built-in key that is kBuiltInKeyContext, and `own` stays unwritten. For any other key it is
// `own`, set up by BlowfishSetKey, so the result lives only as long as the caller's `own`.
const BlowfishContext& ContextForKey(const std::uint8_t* key, std::uint32_t keyLength,
                                     BlowfishContext& own);

}  // namespace launcher

#endif  // LAUNCHER_CIPHER_BUILT_IN_KEY_H_
