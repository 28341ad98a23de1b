// The cipher's two texts: labels 11000 and 11001 of the string table.

#ifndef LAUNCHER_CONFIG_CIPHER_TEXTS_H_
#define LAUNCHER_CONFIG_CIPHER_TEXTS_H_

namespace launcher {

// The key of every container that the library makes: these 16 characters as they stand, no
// terminator. They are not turned into 8 bytes of value.
inline constexpr char kBuiltInKey[] = "7E3A90C2D1F86B45";

// Stands ahead of data that the library vouches for, without its terminator.
inline constexpr char kSignatureMarker[] = "/* QTRMWO_Kd3Z_HLvN */";

}  // namespace launcher

#endif  // LAUNCHER_CONFIG_CIPHER_TEXTS_H_
