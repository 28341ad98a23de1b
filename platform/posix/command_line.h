// Windows command lines, and paths with backslashes.

#ifndef LAUNCHER_PLATFORM_POSIX_COMMAND_LINE_H_
#define LAUNCHER_PLATFORM_POSIX_COMMAND_LINE_H_

#include <algorithm>
#include <string>
#include <vector>

namespace launcher::posix {

// A path as this system writes it.
inline std::string NativePath(const char* path) {
  std::string native(path);
  std::replace(native.begin(), native.end(), '\\', '/');
  return native;
}

// Splits by the rules of CommandLineToArgvW. The first text is the program: up to the next double
// quote if it begins with one, else up to the next blank. In the others a quote opens or closes a
// quoted stretch, 2n backslashes ahead of a quote stand for n, 2n + 1 for n and the quote itself,
// and two quotes inside a quoted stretch for one.
template <class Char>
std::vector<std::basic_string<Char>> SplitCommandLine(const std::basic_string<Char>& line) {
  using Text = std::basic_string<Char>;
  const auto isBlank = [](Char c) { return c == ' ' || c == '\t'; };
  std::vector<Text> texts;
  auto at = line.begin();
  const auto end = line.end();
  if (at == end) return texts;

  if (*at == '"') {
    const auto close = std::find(at + 1, end, Char('"'));
    texts.emplace_back(at + 1, close);
    at = close == end ? end : close + 1;
  } else {
    const auto close = std::find_if(at, end, isBlank);
    texts.emplace_back(at, close);
    at = close;
  }

  while (true) {
    at = std::find_if_not(at, end, isBlank);
    if (at == end) return texts;
    Text text;
    bool isQuoted = false;
    while (at != end && (isQuoted || !isBlank(*at))) {
      const auto slashesEnd = std::find_if(at, end, [](Char c) { return c != '\\'; });
      auto slashes = static_cast<std::size_t>(slashesEnd - at);
      at = slashesEnd;
      if (at == end || *at != '"') {
        text.append(slashes, Char('\\'));
        if (at != end && (isQuoted || !isBlank(*at))) text.push_back(*at++);
        continue;
      }
      text.append(slashes / 2, Char('\\'));
      ++at;
      if (slashes % 2 == 1) {
        text.push_back(Char('"'));
      } else if (isQuoted && at != end && *at == '"') {
        text.push_back(*at++);
      } else {
        isQuoted = !isQuoted;
      }
    }
    texts.push_back(text);
  }
}

}  // namespace launcher::posix

#endif  // LAUNCHER_PLATFORM_POSIX_COMMAND_LINE_H_
