#include "doctor/json_scanner.h"

#include <algorithm>
#include <string>

#include "doctor/finding.h"

namespace launcher::doctor {
namespace {

const std::string kMarks = "{}[],:";
const std::string kBlanks = " \t\r\n";
const std::string kHexDigits = "0123456789abcdefABCDEF";

bool IsContinuation(char c) { return (c & 0xC0) == 0x80; }

std::size_t EndOfLine(const std::string& text, std::size_t at) {
  return std::min(text.find_first_of("\r\n", at), text.size());
}

std::size_t EndOfText(const std::string& text, std::size_t at) {
  for (++at; at < text.size() && text[at] != '\n' && text[at] != '\r'; ++at) {
    if (text[at] == '"') return at + 1;
    if (text[at] == '\\' && at + 1 < text.size() && text[at + 1] != '\n') ++at;
  }
  return std::min(at, text.size());
}

bool StartsComment(const std::string& text, std::size_t at) {
  return text.compare(at, 2, "//") == 0 || text.compare(at, 2, "/*") == 0;
}

char MarkOf(const std::string& text, const std::vector<Token>& tokens, std::size_t index) {
  const bool isMark = index < tokens.size() && tokens[index].kind == TokenKind::mark;
  return isMark ? text[tokens[index].begin] : '\0';
}

std::vector<Token> ScanWithoutComments(const std::string& text) {
  std::vector<Token> tokens = Scan(text);
  tokens.erase(std::remove_if(tokens.begin(), tokens.end(),
                              [](const Token& t) { return t.kind == TokenKind::comment; }),
               tokens.end());
  return tokens;
}

// Replaces each token with a blank.
std::string Without(const std::string& text, const std::vector<Token>& tokens) {
  std::string kept;
  std::size_t copied = 0;
  for (const Token& token : tokens) {
    kept += text.substr(copied, token.begin - copied) + ' ';
    copied = token.end;
  }
  return kept + text.substr(copied);
}

// The end of the first word that looks like the name of a secret, or npos.
std::size_t EndOfSecretName(const std::string& text) {
  const std::string lower = LowerCase(text);
  std::size_t end = std::string::npos;
  for (const std::string word : {"pass", "token", "secret", "key"}) {
    const std::size_t at = lower.find(word);
    if (at != std::string::npos) end = std::min(end, at + word.size());
  }
  return end;
}

}  // namespace

std::vector<Token> Scan(const std::string& text) {
  std::vector<Token> tokens;
  for (std::size_t at = text.find_first_not_of(kBlanks); at < text.size();
       at = text.find_first_not_of(kBlanks, tokens.back().end)) {
    Token token = {TokenKind::word, at, at + 1};
    if (text[at] == '"') {
      token.kind = TokenKind::text;
      token.end = EndOfText(text, at);
    } else if (kMarks.find(text[at]) != std::string::npos) {
      token.kind = TokenKind::mark;
    } else if (StartsComment(text, at)) {
      token.kind = TokenKind::comment;
      const std::size_t end = text.find("*/", at + 2);
      token.end = text[at + 1] == '/'        ? EndOfLine(text, at)
                  : end == std::string::npos ? text.size()
                                             : end + 2;
    } else {
      while (token.end < text.size() && !StartsComment(text, token.end) &&
             (kBlanks + kMarks + '"').find(text[token.end]) == std::string::npos) {
        ++token.end;
      }
    }
    tokens.push_back(token);
  }
  return tokens;
}

std::vector<Pair> Pairs(const std::string& text) {
  std::vector<Pair> pairs;
  std::vector<std::size_t> open;  // the pairs whose value is still open, npos for an array's item
  const std::vector<Token> tokens = ScanWithoutComments(text);
  std::size_t next = std::string::npos;  // the pair whose value comes next
  for (std::size_t i = 0; i < tokens.size(); ++i) {
    const Token& token = tokens[i];
    const char mark = MarkOf(text, tokens, i);
    if (mark == '{' || mark == '[') {
      open.push_back(next);
      next = std::string::npos;
    } else if ((mark == '}' || mark == ']') && !open.empty()) {
      if (open.back() != std::string::npos) pairs[open.back()].valueEnd = token.end;
      open.pop_back();
    } else if (mark == '\0') {
      next = std::string::npos;
      if (token.kind != TokenKind::text || MarkOf(text, tokens, i + 1) != ':') continue;
      const Json key =
          Json::parse(text.substr(token.begin, token.end - token.begin), nullptr, false);
      if (!key.is_string() || i + 2 == tokens.size()) continue;
      next = pairs.size();
      const Token& value = tokens[i + 2];
      const bool isNested = MarkOf(text, tokens, i + 2) != '\0';
      pairs.push_back({key.get<std::string>(), open.size(), token.begin, value.begin,
                       isNested ? text.size() : value.end});
      // Skips a plain value, so that it is not taken for a key.
      i += isNested ? 1 : 2;
    }
  }
  return pairs;
}

std::string WithoutSecrets(const std::string& text) {
  std::string masked = text;
  const std::vector<Token> tokens = Scan(text);
  std::size_t depth = 0;
  bool isSecret = false;
  for (std::size_t i = 0; i < tokens.size(); ++i) {
    const char mark = MarkOf(text, tokens, i);
    if (isSecret && (mark == '{' || mark == '[')) ++depth;
    if (isSecret && (mark == '}' || mark == ']') && depth > 0) --depth;
    // The value ends here. If the text is not JSON, its end cannot be known, and it ends here too.
    if ((mark == ',' || mark == '}' || mark == ']') && depth == 0) isSecret = false;
    if (mark != '\0') continue;
    const Token& token = tokens[i];
    std::size_t begin = isSecret ? token.begin : token.end;
    const std::string content = text.substr(token.begin, token.end - token.begin);
    const std::size_t end = EndOfSecretName(content);
    if (end != std::string::npos && !isSecret) {
      const std::size_t sign =
          content.find_first_of(token.kind == TokenKind::comment ? "=:" : "=", end);
      if (sign != std::string::npos) begin = token.begin + sign + 1;
      std::size_t next = i + 1;
      while (next < tokens.size() && tokens[next].kind == TokenKind::comment) ++next;
      isSecret = MarkOf(text, tokens, next) == ':' ||
                 (token.kind == TokenKind::word && sign != std::string::npos);
    }
    for (; begin < token.end; ++begin) {
      if (text[begin] != '"' && text[begin] != '\n') masked[begin] = '*';
    }
  }
  return masked;
}

std::string WithoutComments(const std::string& text, std::vector<std::string>& changes) {
  std::vector<Token> removed;
  const std::vector<Token> tokens = Scan(text);
  std::copy_if(tokens.begin(), tokens.end(), std::back_inserter(removed),
               [](const Token& token) { return token.kind == TokenKind::comment; });
  if (!removed.empty()) changes.push_back("removed " + Counted(removed.size(), "comment"));
  const std::string kept = Without(text, removed);

  removed.clear();
  const std::vector<Token> rest = Scan(kept);
  for (std::size_t i = 0; i < rest.size(); ++i) {
    const char next = MarkOf(kept, rest, i + 1);
    const bool isLast = next == '}' || next == ']';
    if (isLast && MarkOf(kept, rest, i) == ',') removed.push_back(rest[i]);
  }
  if (!removed.empty()) {
    changes.push_back("removed " + Counted(removed.size(), "comma") + " after a last value");
  }
  return Without(kept, removed);
}

std::string WithDoubledBackslashes(const std::string& text, std::vector<std::string>& changes) {
  std::string fixed;
  std::size_t copied = 0;
  for (const Token& token : Scan(text)) {
    if (token.kind != TokenKind::text) continue;
    std::string doubled;
    bool isWrong = false;
    for (std::size_t at = token.begin; at < token.end; ++at) {
      doubled += text[at];
      if (text[at] != '\\') continue;
      const char next = at + 1 < token.end ? text[at + 1] : ' ';
      isWrong = isWrong || std::string("\"\\/bfnrtu").find(next) == std::string::npos ||
                (next == 'u' && text.find_first_not_of(kHexDigits, at + 2) < at + 6);
      if (next == '\\' || next == '"') {
        doubled += text[++at];
      } else {
        doubled += '\\';
      }
    }
    if (!isWrong) continue;
    fixed += text.substr(copied, token.begin - copied) + doubled;
    copied = token.end;
    changes.push_back("doubled the backslashes of a path: " + doubled);
  }
  return fixed + text.substr(copied);
}

Place PlaceOf(const std::string& text, std::size_t offset) {
  Place place = {1, 1};
  for (const char c : text.substr(0, offset)) {
    if (!IsContinuation(c)) ++place.column;
    if (c == '\n') place = {place.line + 1, 1};
  }
  return place;
}

std::string Excerpt(const std::string& text, std::size_t offset) {
  constexpr std::size_t kBefore = 60;
  constexpr std::size_t kShown = 90;
  std::size_t begin = offset == 0 ? 0 : text.rfind('\n', offset - 1) + 1;
  std::size_t end = EndOfLine(text, offset);
  if (offset - begin > kBefore) begin = offset - kBefore;
  if (end - begin > kShown) end = begin + kShown;
  while (begin < offset && IsContinuation(text[begin])) ++begin;
  while (end < text.size() && IsContinuation(text[end])) ++end;
  std::string line = std::string(9, ' ') + "| ";
  std::string caret = line;
  for (std::size_t at = begin; at < end; ++at) {
    const auto byte = static_cast<unsigned char>(text[at]);
    line += byte < 0x20 || byte == 0x7F ? ' ' : text[at];
    if (at < offset && !IsContinuation(text[at])) caret += ' ';
  }
  return line + '\n' + caret + "^\n";
}

}  // namespace launcher::doctor
