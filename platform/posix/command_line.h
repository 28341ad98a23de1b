// Windows command lines, and paths with backslashes.

#ifndef LAUNCHER_PLATFORM_POSIX_COMMAND_LINE_H_
#define LAUNCHER_PLATFORM_POSIX_COMMAND_LINE_H_

#include <algorithm>
#include <string>
#include <vector>

namespace launcher::posix {

// Returns a path with the separators of this system.
inline std::string NativePath(const char* path) {
  std::string native(path);
  std::replace(native.begin(), native.end(), '\\', '/');
  return native;
}

// Splits by the rules of CommandLineToArgvW. The first text is the program: if it begins with a
// double quote, it ends at the next one, otherwise at the next blank. In the other texts a quote
// starts or ends a quoted part. Before a quote, 2n backslashes mean n backslashes, and 2n + 1 mean
// n backslashes and the quote itself. Two quotes inside a quoted part mean one. An empty line has
// no text.
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
      // Backslashes that are not before a quote mean themselves.
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
