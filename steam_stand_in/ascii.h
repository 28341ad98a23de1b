// Lower case of ASCII text, for comparisons that ignore case.

#ifndef LAUNCHER_STEAM_STAND_IN_ASCII_H_
#define LAUNCHER_STEAM_STAND_IN_ASCII_H_

#include <algorithm>
#include <string>
#include <string_view>

namespace launcher::stand_in {

// Not std::tolower, which depends on the locale.
inline std::string LowerCase(std::string_view text) {
  std::string lower(text);
  std::transform(lower.begin(), lower.end(), lower.begin(), [](char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
  });
  return lower;
}

}  // namespace launcher::stand_in

#endif  // LAUNCHER_STEAM_STAND_IN_ASCII_H_
