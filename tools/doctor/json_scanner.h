// Splits a settings file into tokens with their places. The file need not be valid JSON.

#ifndef LAUNCHER_TOOLS_DOCTOR_JSON_SCANNER_H_
#define LAUNCHER_TOOLS_DOCTOR_JSON_SCANNER_H_

#include <cstdint>
#include <string>
#include <vector>

namespace launcher::doctor {

enum class TokenKind : std::uint8_t { text, mark, word, comment };

// A text in quotes ends at the end of its line if its second quote is missing. A mark is one of
// {}[],: and a word is anything else without blanks.
struct Token {
  TokenKind kind;
  std::size_t begin;
  std::size_t end;
};

std::vector<Token> Scan(const std::string& text);

// "key": value, at any depth.
struct Pair {
  std::string key;
  std::size_t depth;  // 1 for the members of the outermost object
  std::size_t offset;
  std::size_t valueBegin;
  std::size_t valueEnd;
};

std::vector<Pair> Pairs(const std::string& text);

// Replaces values with stars if their key looks secret. Every character keeps its place.
std::string WithoutSecrets(const std::string& text);

// Removes comments, and commas before a closing bracket or brace. Adds a line for each kind.
std::string WithoutComments(const std::string& text, std::vector<std::string>& changes);

// In texts with a backslash that JSON does not accept, doubles every single backslash, as in a
// Windows path. Adds a line for each text.
std::string WithDoubledBackslashes(const std::string& text, std::vector<std::string>& changes);

// Both count from 1; a column is a character.
struct Place {
  std::size_t line;
  std::size_t column;
};
Place PlaceOf(const std::string& text, std::size_t offset);

// The line of a place, and a line with a caret below it.
std::string Excerpt(const std::string& text, std::size_t offset);

}  // namespace launcher::doctor

#endif  // LAUNCHER_TOOLS_DOCTOR_JSON_SCANNER_H_
