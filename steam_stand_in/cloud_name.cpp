#include "steam_stand_in/cloud_name.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <iterator>
#include <string_view>

#include "steam_stand_in/ascii.h"

namespace launcher::stand_in {
namespace {

// Other bytes cannot be converted to a name on Windows, where names are UTF-16.
bool IsUtf8(std::string_view text) {
  for (std::size_t i = 0; i < text.size();) {
    const auto lead = static_cast<std::uint8_t>(text[i]);
    const std::size_t size = lead < 0x80                   ? 1
                             : lead >= 0xC2 && lead < 0xE0 ? 2
                             : lead >= 0xE0 && lead < 0xF0 ? 3
                             : lead >= 0xF0 && lead < 0xF5 ? 4
                                                           : 0;
    if (size == 0 || size > text.size() - i) return false;
    std::uint32_t code = size == 1 ? lead : lead & (0xFFU >> (size + 1));
    for (std::size_t k = 1; k < size; ++k) {
      const auto next = static_cast<std::uint8_t>(text[i + k]);
      if ((next & 0xC0U) != 0x80) return false;
      code = (code << 6) | (next & 0x3FU);
    }
    constexpr std::uint32_t kLeastOfSize[] = {0, 0, 0x80, 0x800, 0x10000};
    const bool isSurrogate = code >= 0xD800 && code < 0xE000;
    if (code < kLeastOfSize[size] || isSurrogate || code > 0x10FFFF) return false;
    i += size;
  }
  return true;
}

bool IsForbidden(char c) {
  constexpr std::string_view kForbidden = ":*?\"<>|";
  const auto byte = static_cast<std::uint8_t>(c);
  return byte < 0x20 || byte == 0x7F || kForbidden.find(c) != std::string_view::npos;
}

// True for the name of a Windows device, with or without an extension.
bool IsReserved(std::string_view component) {
  std::string stem(component.substr(0, component.find('.')));
  stem.erase(stem.find_last_not_of(' ') + 1);
  stem = LowerCase(stem);

  constexpr std::string_view kDevices[] = {"con", "prn", "aux", "nul", "conin$", "conout$"};
  if (std::find(std::begin(kDevices), std::end(kDevices), stem) != std::end(kDevices)) return true;

  const std::string_view family = std::string_view(stem).substr(0, 3);
  if (family != "com" && family != "lpt") return false;
  // Windows takes the superscript digits 1 to 3 for digits of a port.
  constexpr std::string_view kPorts[] = {"1", "2", "3", "4",      "5",      "6",
                                         "7", "8", "9", "\u00B9", "\u00B2", "\u00B3"};
  const std::string_view port = std::string_view(stem).substr(3);
  return std::find(std::begin(kPorts), std::end(kPorts), port) != std::end(kPorts);
}

bool IsFit(std::string_view component) {
  // Windows removes a dot or a blank at the end. Refusing the dot also refuses "." and "..".
  return !component.empty() && component.back() != '.' && component.back() != ' ' &&
         std::none_of(component.begin(), component.end(), IsForbidden) && !IsReserved(component);
}

}  // namespace

std::optional<std::string> CloudName(const char* name) {
  if (name == nullptr) return std::nullopt;
  const void* const end = std::memchr(name, '\0', kLongestCloudName + 1);
  if (end == nullptr) return std::nullopt;

  std::string text(name, static_cast<const char*>(end));
  if (!IsUtf8(text)) return std::nullopt;
  std::replace(text.begin(), text.end(), '\\', '/');
  for (std::string_view rest = text;;) {
    const std::size_t slash = rest.find('/');
    if (!IsFit(rest.substr(0, slash))) return std::nullopt;
    if (slash == std::string_view::npos) return text;
    rest.remove_prefix(slash + 1);
  }
}

}  // namespace launcher::stand_in
