// The library's texts, by label.

#ifndef LAUNCHER_CONFIG_STRING_TABLE_H_
#define LAUNCHER_CONFIG_STRING_TABLE_H_

#include <cstdlib>
#include <memory>

#include "launcher_dll.h"

namespace launcher {

// The labels that the library itself looks up.
inline constexpr StringLabel kVendorNameLabel = 0;
inline constexpr StringLabel kBuildNameLabel = 10;
inline constexpr StringLabel kQaApiHostLabel = 5000;
inline constexpr StringLabel kCiApiHostLabel = 5001;
inline constexpr StringLabel kCipherKeyLabel = 11000;
inline constexpr StringLabel kSignatureMarkerLabel = 11001;

// The text of kCipherKeyLabel: the key of every container that the library makes. The key is these
// 16 characters, without the terminator; they are not converted to 8 bytes.
inline constexpr char kBuiltInKey[] = "7E3A90C2D1F86B45";

// The text of kSignatureMarkerLabel. Without its terminator it precedes the data that the library
// signs.
inline constexpr char kSignatureMarker[] = "/* QTRMWO_Kd3Z_HLvN */";

// Owns a text of QX_LoadStringToMemory, which is from the runtime's heap.
struct MallocDeleter {
  void operator()(void* block) const { std::free(block); }
};
using OwnedText = std::unique_ptr<char, MallocDeleter>;

// Looks a text up with QX_LoadStringToMemory, which prints a line and loads the settings. Returns
// null if the lookup fails.
OwnedText LookUpText(StringLabel label);

}  // namespace launcher

#endif  // LAUNCHER_CONFIG_STRING_TABLE_H_
