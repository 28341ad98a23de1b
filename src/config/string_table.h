// The library's texts, by label.

#ifndef LAUNCHER_CONFIG_STRING_TABLE_H_
#define LAUNCHER_CONFIG_STRING_TABLE_H_

#include <memory>

#include "frame/malloc_deleter.h"
#include "launcher_dll.h"

namespace launcher {

// The labels that the library itself looks up.
inline constexpr StringLabel kVendorNameLabel = 0;
inline constexpr StringLabel kBuildNameLabel = 10;
inline constexpr StringLabel kQaApiHostLabel = 5000;
inline constexpr StringLabel kCiApiHostLabel = 5001;
inline constexpr StringLabel kCipherKeyLabel = 11000;
inline constexpr StringLabel kSignatureMarkerLabel = 11001;

using OwnedText = std::unique_ptr<char, MallocDeleter>;

// Looks a text up by QX_LoadStringToMemory, with the line that it prints and the settings that it
// loads. Null where the lookup fails.
OwnedText LookUpText(StringLabel label);

}  // namespace launcher

#endif  // LAUNCHER_CONFIG_STRING_TABLE_H_
