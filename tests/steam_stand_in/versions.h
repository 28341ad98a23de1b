// Contents of a file that can be told apart, and told from a mixture of two of them.

#ifndef LAUNCHER_TESTS_STEAM_STAND_IN_VERSIONS_H_
#define LAUNCHER_TESTS_STEAM_STAND_IN_VERSIONS_H_

#include <string>

namespace launcher::test {

constexpr unsigned kVersionCount = 26;

inline std::string Version(unsigned number) {
  const unsigned letter = number % kVersionCount;
  return std::string(300'000 + 1'000 * letter, static_cast<char>('a' + letter));
}

inline bool IsVersion(const std::string& content) {
  return !content.empty() && content == Version(static_cast<unsigned>(content[0] - 'a'));
}

}  // namespace launcher::test

#endif  // LAUNCHER_TESTS_STEAM_STAND_IN_VERSIONS_H_
