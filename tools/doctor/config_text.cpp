#include "doctor/config_text.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <string>
#include <utility>

#include "doctor/finding.h"

namespace launcher::doctor {
namespace {

// Deeper nesting is read over: nobody writes settings so, and the stack has an end.
constexpr int kDeepest = 200;

constexpr FaultKind kUtf16 = {"the file is in UTF-16, which the library cannot read",
                              "saved as UTF-16 (some editors call it Unicode) by an editor",
                              "save it as UTF-8"};
constexpr FaultKind kNotUtf8 = {"a character is not in UTF-8",
                                "saved as ANSI (Windows-1252) by an editor", "save it as UTF-8"};
constexpr FaultKind kZeros = {
    "the file holds zero bytes only",
    "the machine went down, or the disk was full, while the file was written",
    "restore the file from a copy, or remove it: the library writes a new one with the defaults"};
constexpr FaultKind kEmpty = {
    "the file is empty", "the machine went down, or the disk was full, while the file was written",
    "restore the file from a copy, or remove it: the library writes a new one with the defaults"};
constexpr FaultKind kNoJson = {"the file holds something else than settings",
                               "a page or another file was saved under this name",
                               "restore the file from a copy"};
constexpr FaultKind kComment = {"a comment", "JSON has no comments", "remove it"};
constexpr FaultKind kExtraComma = {
    "a comma too many", "the last member of an object takes no comma behind it", "remove it"};
constexpr FaultKind kMissingComma = {"a comma is missing ahead of this",
                                     "a line was added without a comma behind the one before",
                                     "put a comma behind the value before"};
constexpr FaultKind kWrongComma = {"a semicolon where a comma belongs", "a slip of the pen",
                                   "write a comma"};
constexpr FaultKind kMissingColon = {"a colon is missing between a name and its value",
                                     "a slip of the pen", "put a colon between them"};
constexpr FaultKind kSingleQuotes = {"single quotes around a text",
                                     "other languages allow them, JSON does not",
                                     "write double quotes"};
constexpr FaultKind kCurlyQuotes = {"typographic quotes around a text",
                                    "written in, or copied from, a word processor or a message",
                                    "write plain double quotes"};
constexpr FaultKind kNoQuotes = {"a text without quotes", "a slip of the pen",
                                 "put double quotes around it"};
constexpr FaultKind kOpenQuote = {"the quote that ends this text is missing", "a slip of the pen",
                                  "put a double quote behind the text"};
constexpr FaultKind kInnerQuote = {"a double quote inside a text",
                                   "a quote ends the text unless a backslash stands ahead of it",
                                   "put a backslash ahead of it"};
constexpr FaultKind kLineBreak = {"a line break inside a text",
                                  "an editor or a message broke the long line",
                                  "join the two lines"};
constexpr FaultKind kControl = {"a tab or another control character inside a text",
                                "copied from elsewhere", "remove it, or write \\t for a tab"};
constexpr FaultKind kBackslash = {
    "a backslash ahead of a character that takes none",
    "a path of Windows was written as it is: in JSON each backslash is doubled",
    "write two backslashes"};
constexpr FaultKind kSurrogate = {"half a character: \\u with one half of a pair",
                                  "the text was cut by another program",
                                  "write the character itself"};
constexpr FaultKind kBlank = {"an invisible character that is no blank",
                              "copied from a web page or a message", "write a plain blank"};
constexpr FaultKind kLiteral = {"true, false and null are written in small letters",
                                "other languages write them with a capital letter",
                                "write it in small letters"};
constexpr FaultKind kHugeNumber = {"a number beyond all bounds", "a slip of the pen",
                                   "write a smaller one"};
constexpr FaultKind kNoValue = {"a value is missing", "a value was removed and its name was not",
                                "write the value"};
constexpr FaultKind kOpenBrace = {
    "the bracket or brace that opens here is never closed",
    "a brace was removed with a line, or the file was cut off while it was written",
    "put the closing brace where it belongs"};
constexpr FaultKind kWrongBrace = {"another bracket than the one that was opened",
                                   "a slip of the pen", "write the one that fits"};
constexpr FaultKind kNoBrace = {"the brace at the beginning is missing",
                                "removed with the first line", "put a brace at the beginning"};
constexpr FaultKind kTooDeep = {"objects inside objects, deeper than doctor follows",
                                "the file is no settings file", "restore the file from a copy"};
constexpr FaultKind kMidZero = {"a zero byte",
                                "the machine went down while the file was written, or the file "
                                "is no text",
                                "remove it"};

// ---- Encodings

void AppendUtf8(std::string& text, std::uint32_t character) {
  const auto tail = [&](int shift) {
    text += static_cast<char>(0x80 | ((character >> shift) & 0x3F));
  };
  if (character < 0x80) {
    text += static_cast<char>(character);
  } else if (character < 0x800) {
    text += static_cast<char>(0xC0 | (character >> 6));
    tail(0);
  } else if (character < 0x10000) {
    text += static_cast<char>(0xE0 | (character >> 12));
    tail(6);
    tail(0);
  } else {
    text += static_cast<char>(0xF0 | (character >> 18));
    tail(12);
    tail(6);
    tail(0);
  }
}

constexpr std::uint32_t kReplacement = 0xFFFD;

bool IsFirstHalf(std::uint32_t unit) { return unit >= 0xD800 && unit < 0xDC00; }
bool IsSecondHalf(std::uint32_t unit) { return unit >= 0xDC00 && unit < 0xE000; }
std::uint32_t Joined(std::uint32_t first, std::uint32_t second) {
  return 0x10000 + ((first - 0xD800) << 10) + (second - 0xDC00);
}

// The bytes of a character in UTF-8, 0 where there is none: no long forms, no halves of pairs.
std::size_t Utf8Length(const std::string& bytes, std::size_t at) {
  const auto byte = [&](std::size_t i) -> std::uint32_t {
    return at + i < bytes.size() ? static_cast<unsigned char>(bytes[at + i]) : 0;
  };
  const std::uint32_t lead = byte(0);
  if (lead < 0x80) return 1;
  const std::size_t length = lead >= 0xF0 ? 4 : lead >= 0xE0 ? 3 : 2;
  if (lead < 0xC2 || lead > 0xF4) return 0;
  for (std::size_t i = 1; i < length; ++i) {
    if ((byte(i) & 0xC0) != 0x80) return 0;
  }
  if ((lead == 0xE0 && byte(1) < 0xA0) || (lead == 0xED && byte(1) > 0x9F) ||
      (lead == 0xF0 && byte(1) < 0x90) || (lead == 0xF4 && byte(1) > 0x8F)) {
    return 0;
  }
  return length;
}

std::uint32_t Windows1252(unsigned char byte) {
  constexpr std::uint16_t kUpper[32] = {
      0x20AC, 0x81,   0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021, 0x02C6, 0x2030, 0x0160,
      0x2039, 0x0152, 0x8D,   0x017D, 0x8F,   0x90,   0x2018, 0x2019, 0x201C, 0x201D, 0x2022,
      0x2013, 0x2014, 0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x9D,   0x017E, 0x0178};
  return byte >= 0x80 && byte < 0xA0 ? kUpper[byte - 0x80] : byte;
}

std::string FromUtf16(const std::string& bytes, std::size_t from, bool isBigEndian) {
  const auto unit = [&](std::size_t at) -> std::uint32_t {
    const auto first = static_cast<unsigned char>(bytes[at]);
    const auto second = static_cast<unsigned char>(bytes[at + 1]);
    return isBigEndian ? (std::uint32_t{first} << 8) | second
                       : (std::uint32_t{second} << 8) | first;
  };
  std::string text;
  for (std::size_t at = from; at + 1 < bytes.size(); at += 2) {
    std::uint32_t character = unit(at);
    if (IsFirstHalf(character) && at + 3 < bytes.size() && IsSecondHalf(unit(at + 2))) {
      character = Joined(character, unit(at + 2));
      at += 2;
    } else if (IsFirstHalf(character) || IsSecondHalf(character)) {
      character = kReplacement;
    }
    AppendUtf8(text, character);
  }
  return text;
}

std::string ToUtf8(const std::string& bytes, std::vector<Fault>& faults) {
  const auto begins = [&](const char* mark, std::size_t size) {
    return bytes.compare(0, size, mark, size) == 0 && bytes.size() >= size;
  };
  const auto zeroAt = [&](std::size_t i) { return i < bytes.size() && bytes[i] == '\0'; };
  const bool isLittle = begins("\xFF\xFE", 2) || (zeroAt(1) && zeroAt(3) && !zeroAt(0));
  const bool isBig = begins("\xFE\xFF", 2) || (zeroAt(0) && zeroAt(2) && !zeroAt(1));
  if (isLittle || isBig) {
    faults.push_back({&kUtf16, 0, {}});
    const bool hasMark = begins("\xFF\xFE", 2) || begins("\xFE\xFF", 2);
    return FromUtf16(bytes, hasMark ? 2 : 0, isBig);
  }
  std::string text;
  for (std::size_t at = begins("\xEF\xBB\xBF", 3) ? 3 : 0; at < bytes.size();) {
    const std::size_t length = Utf8Length(bytes, at);
    if (length == 0) {
      const auto byte = static_cast<unsigned char>(bytes[at]);
      std::string character;
      AppendUtf8(character, Windows1252(byte));
      faults.push_back({&kNotUtf8, text.size(), character});
      text += character;
      ++at;
    } else {
      text.append(bytes, at, length);
      at += length;
    }
  }
  return text;
}

// ---- Reading

bool IsDigit(char c) { return c >= '0' && c <= '9'; }
bool IsLetter(char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); }

std::string LowerCase(std::string text) {
  std::transform(text.begin(), text.end(), text.begin(), [](char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
  });
  return text;
}

// Whether all of a text is one number of JSON.
bool IsNumber(const std::string& text) {
  std::size_t at = 0;
  const auto take = [&](char c) { return at < text.size() && text[at] == c && ++at != 0; };
  const auto takeDigits = [&] {
    const std::size_t from = at;
    while (at < text.size() && IsDigit(text[at])) ++at;
    return at > from;
  };
  take('-');
  if (!take('0') && !takeDigits()) return false;
  if (take('.') && !takeDigits()) return false;
  if (take('e') || take('E')) {
    if (!take('+')) take('-');
    if (!takeDigits()) return false;
  }
  return at == text.size();
}

class Reader {
 public:
  Reader(const std::string& text, std::size_t at, std::vector<Fault>& faults)
      : text_(text), at_(at), faults_(faults) {}

  std::size_t at() const { return at_; }

  Node ReadDocument() {
    SkipBlanks();
    if (LooksLikeMember()) {
      Note(kNoBrace, at_);
      Node document = Begin(NodeType::object);
      ReadMembers(document, 1, false);
      return document;
    }
    return ReadValue(0);
  }

  // Members behind the document, as after a brace too many.
  std::vector<Member> ReadBehind() {
    Node rest;
    while (true) {
      SkipBlanks();
      if (Is('{')) {
        for (Member& member : ReadValue(1).members) rest.members.push_back(std::move(member));
      } else if (LooksLikeMember()) {
        ReadMembers(rest, 1, false);
      } else if (Is(',') || Is('}') || Is(']')) {
        ++at_;
      } else {
        return std::move(rest.members);
      }
    }
  }

  void SkipBlanks() {
    while (!AtEnd()) {
      if (std::strchr(" \t\r\n", Now()) != nullptr && Now() != '\0') {
        ++at_;
      } else if (Starts("//") || Is('#')) {
        Note(kComment, at_);
        at_ = std::min(text_.find('\n', at_), text_.size());
      } else if (Starts("/*")) {
        Note(kComment, at_);
        const std::size_t end = text_.find("*/", at_ + 2);
        at_ = end == std::string::npos ? text_.size() : end + 2;
      } else if (Starts("\xC2\xA0") || Starts("\xE2\x80\x8B") || Starts("\xEF\xBB\xBF")) {
        Note(kBlank, at_);
        at_ += Starts("\xC2\xA0") ? 2U : 3U;
      } else if (Is('\0')) {
        Note(kMidZero, at_);
        while (Is('\0')) ++at_;
      } else {
        return;
      }
    }
  }

  bool AtEnd() const { return at_ >= text_.size(); }

 private:
  struct QuotePair {
    const char* open;
    std::vector<const char*> close;
    const FaultKind* fault;
  };

  char Now() const { return text_[at_]; }
  bool Is(char c) const { return !AtEnd() && Now() == c; }
  bool IsOneOf(const char* characters) const {
    return !AtEnd() && Now() != '\0' && std::strchr(characters, Now()) != nullptr;
  }
  bool StartsAt(std::size_t at, const std::string& what) const {
    return text_.compare(at, what.size(), what) == 0;
  }
  bool Starts(const std::string& what) const { return !AtEnd() && StartsAt(at_, what); }

  void Note(const FaultKind& kind, std::size_t offset, const std::string& detail = {}) {
    faults_.push_back({&kind, offset, detail});
  }

  Node Begin(NodeType type) const {
    Node node;
    node.type = type;
    node.offset = at_;
    return node;
  }

  // The quotes that begin a text here, null for none.
  const QuotePair* QuotesHere() const {
    static const std::vector<QuotePair> kPairs = {
        {"\"", {"\""}, nullptr},
        {"'", {"'"}, &kSingleQuotes},
        {"`", {"`", "'"}, &kSingleQuotes},
        {"\xE2\x80\x9C", {"\xE2\x80\x9D", "\xE2\x80\x9C", "\""}, &kCurlyQuotes},
        {"\xE2\x80\x9D", {"\xE2\x80\x9D", "\xE2\x80\x9C", "\""}, &kCurlyQuotes},
        {"\xE2\x80\x9E", {"\xE2\x80\x9C", "\xE2\x80\x9D", "\""}, &kCurlyQuotes},
        {"\xE2\x80\x98", {"\xE2\x80\x99", "\xE2\x80\x98", "'"}, &kCurlyQuotes},
        {"\xE2\x80\x99", {"\xE2\x80\x99", "'"}, &kCurlyQuotes},
        {"\xC2\xAB", {"\xC2\xBB"}, &kCurlyQuotes}};
    for (const QuotePair& pair : kPairs) {
      if (Starts(pair.open)) return &pair;
    }
    return nullptr;
  }

  // Whether a name and a colon come next, without a look at what is wrong with them.
  bool LooksLikeMember() const {
    std::vector<Fault> ignored;
    Reader ahead(text_, at_, ignored);
    if (QuotesHere() == nullptr) return false;
    ahead.ReadQuoted(true);
    ahead.SkipBlanks();
    return ahead.Is(':');
  }

  Node ReadValue(int depth) {
    SkipBlanks();
    if (AtEnd() || IsOneOf("}],;")) {
      Note(kNoValue, at_);
      Node node = Begin(NodeType::null);
      node.isCut = AtEnd();
      return node;
    }
    if (depth > kDeepest) {
      Note(kTooDeep, at_);
      at_ = text_.size();
      return Begin(NodeType::null);
    }
    if (Is('{')) {
      Node node = Begin(NodeType::object);
      ++at_;
      ReadMembers(node, depth + 1, true);
      return node;
    }
    if (Is('[')) return ReadArray(depth + 1);
    return QuotesHere() != nullptr ? ReadQuoted(false) : ReadBare();
  }

  // What stands between two members, or behind the last. Answers whether the object or array is at
  // its end.
  bool ReadSeparator(std::size_t opened, char close) {
    SkipBlanks();
    if (!IsOneOf(",;}]") && !AtEnd()) {
      Note(kMissingComma, at_);
      return false;
    }
    if (IsOneOf(",;")) {
      if (Is(';')) Note(kWrongComma, at_);
      const std::size_t comma = at_++;
      SkipBlanks();
      while (Is(',')) {
        Note(kExtraComma, at_++);
        SkipBlanks();
      }
      if (IsOneOf("}]")) Note(kExtraComma, comma);
    }
    return AtClose(opened, close);
  }

  bool AtClose(std::size_t opened, char close) {
    if (AtEnd()) {
      if (opened != std::string::npos) Note(kOpenBrace, opened);
      return true;
    }
    if (!IsOneOf("}]")) return false;
    if (!Is(close)) Note(kWrongBrace, at_);
    ++at_;
    return true;
  }

  void ReadMembers(Node& object, int depth, bool hasBrace) {
    const std::size_t opened = hasBrace ? at_ - 1 : std::string::npos;
    SkipBlanks();
    while (Is(',')) {
      Note(kExtraComma, at_++);
      SkipBlanks();
    }
    if (AtClose(opened, '}')) return;
    do {
      object.members.push_back(ReadMember(depth));
    } while (!ReadSeparator(opened, '}'));
  }

  Member ReadMember(int depth) {
    Member member;
    member.offset = at_;
    bool hasColon = false;
    if (Is('{') || Is('[')) {
      Note(kMissingColon, at_);
      member.value = ReadValue(depth);
      return member;
    }
    if (Is(':') || Is('=')) {
      // A value without a name.
    } else if (QuotesHere() != nullptr) {
      member.key = ReadQuoted(true).text;
      // The quote came behind the colon.
      std::string& key = member.key;
      key.erase(key.find_last_not_of(' ') + 1);
      SkipBlanks();
      if (!IsOneOf(":=") && !key.empty() && key.back() == ':') {
        Note(kOpenQuote, member.offset);
        key.pop_back();
        hasColon = true;
      }
    } else {
      Note(kNoQuotes, at_);
      const std::size_t from = at_;
      while (!AtEnd() && !IsOneOf(":=,;{}[]\n")) ++at_;
      member.key = Trimmed(text_.substr(from, at_ - from));
      if (at_ == from) ++at_;
    }
    SkipBlanks();
    if (Is(':')) {
      ++at_;
    } else if (!hasColon) {
      Note(kMissingColon, at_);
      if (Is('=')) ++at_;
    }
    SkipBlanks();
    member.value = ReadValue(depth);
    return member;
  }

  Node ReadArray(int depth) {
    Node array = Begin(NodeType::array);
    const std::size_t opened = at_++;
    SkipBlanks();
    if (AtClose(opened, ']')) return array;
    do {
      // Only broken text has a colon here.
      if (Is(':')) ++at_;
      array.items.push_back(ReadValue(depth));
    } while (!ReadSeparator(opened, ']'));
    return array;
  }

  // Without blanks at the ends, and without a quote that stands alone.
  static std::string Trimmed(const std::string& text) {
    constexpr const char* kBlanks = " \t\r\n\"'";
    const std::size_t from = text.find_first_not_of(kBlanks);
    if (from == std::string::npos) return {};
    return text.substr(from, text.find_last_not_of(kBlanks) + 1 - from);
  }

  // A number, a truth value, null, or a text whose quotes are missing.
  Node ReadBare() {
    Node node = Begin(NodeType::string);
    std::size_t end = at_;
    while (end < text_.size() && (IsLetter(text_[end]) || IsDigit(text_[end]) ||
                                  (text_[end] != '\0' && std::strchr("+-.", text_[end])))) {
      ++end;
    }
    const std::string word = text_.substr(at_, end - at_);
    const bool isWhole =
        end == text_.size() || (text_[end] != '\0' && std::strchr(" \t\r\n,;}]\"/#", text_[end]));
    const std::string lower = LowerCase(word);
    if (isWhole && (lower == "true" || lower == "false" || lower == "null")) {
      if (lower != word) Note(kLiteral, at_);
      node.type = lower == "null" ? NodeType::null : NodeType::boolean;
      node.text = lower;
    } else if (isWhole && IsNumber(word)) {
      if (std::isinf(std::strtod(word.c_str(), nullptr))) Note(kHugeNumber, at_);
      node.type = NodeType::number;
      node.text = word;
    } else {
      Note(kNoQuotes, at_);
      end = at_;
      while (end < text_.size() && std::strchr(",;}]\n", text_[end]) == nullptr) ++end;
      node.text = Trimmed(text_.substr(at_, end - at_));
      if (end == at_) ++end;
      node.isCut = end == text_.size();
    }
    at_ = end;
    return node;
  }

  // How many bytes of a closing quote stand at `at`, 0 for none.
  std::size_t ClosingQuote(std::size_t at, const QuotePair& quotes) const {
    for (const char* const close : quotes.close) {
      if (StartsAt(at, close)) return std::strlen(close);
    }
    return 0;
  }

  // A double quote that something else follows than what may follow a text, and that is not the
  // last of its line.
  bool IsInnerQuote(std::size_t at) const {
    const std::size_t next = text_.find_first_not_of(" \t", at + 1);
    if (next == std::string::npos || std::strchr(",;:}]\r\n\"/#", text_[next]) != nullptr) {
      return false;
    }
    const std::size_t another = text_.find('"', next);
    return another < text_.find('\n', next);
  }

  // What becomes of a line end inside a text: it ends the text if the next line begins a member or
  // closes the object, else the two lines are one.
  bool LineEndsText() const {
    const std::size_t next = text_.find_first_not_of(" \t\r\n", at_);
    if (next == std::string::npos) return false;
    if (std::strchr("\"'{}[]", text_[next]) != nullptr) return true;
    const std::size_t quote = text_.find('"', next);
    return quote == std::string::npos || quote > text_.find('\n', next);
  }

  Node ReadQuoted(bool isName) {
    Node node = Begin(NodeType::string);
    const QuotePair& quotes = *QuotesHere();
    if (quotes.fault != nullptr) Note(*quotes.fault, at_);
    at_ += std::strlen(quotes.open);
    std::string& value = node.text;
    while (!AtEnd()) {
      const char c = Now();
      if (const std::size_t length = ClosingQuote(at_, quotes); length != 0) {
        if (isName || c != '"' || !IsInnerQuote(at_)) {
          at_ += length;
          return node;
        }
        Note(kInnerQuote, at_);
        value += c;
        ++at_;
      } else if (c == '\\') {
        ReadEscape(value);
      } else if (c == '\n' || (c == '\r' && StartsAt(at_ + 1, "\n"))) {
        if (isName || LineEndsText()) {
          Note(kOpenQuote, node.offset);
          value.erase(value.find_last_not_of(" \t\r") + 1);
          if (!value.empty() && (value.back() == ',' || value.back() == ';')) {
            value.pop_back();
            at_ = text_.find_last_of(",;", at_);
          }
          return node;
        }
        Note(kLineBreak, at_);
        at_ = std::min(text_.find_first_not_of(" \t\r\n", at_), text_.size());
      } else {
        if (static_cast<unsigned char>(c) < 0x20) Note(kControl, at_);
        value += c;
        ++at_;
      }
    }
    Note(kOpenQuote, node.offset);
    node.isCut = true;
    return node;
  }

  // The four digits behind "\u" at `at`; answers whether they are there.
  bool ReadUnit(std::size_t at, std::uint32_t& unit) const {
    if (!StartsAt(std::min(at, text_.size()), "\\u") || text_.size() - at < 6) return false;
    unit = 0;
    for (std::size_t i = at + 2; i < at + 6; ++i) {
      const char c = LowerCase(std::string(1, text_[i]))[0];
      if (!IsDigit(c) && (c < 'a' || c > 'f')) return false;
      unit = unit * 16 + static_cast<std::uint32_t>(IsDigit(c) ? c - '0' : c - 'a' + 10);
    }
    return true;
  }

  void ReadEscape(std::string& value) {
    constexpr const char* kNames = "\"\\/bfnrt";
    constexpr const char* kValues = "\"\\/\b\f\n\r\t";
    const char name = at_ + 1 < text_.size() ? text_[at_ + 1] : '\0';
    const char* const known = name != '\0' ? std::strchr(kNames, name) : nullptr;
    std::uint32_t unit = 0;
    if (known != nullptr) {
      value += kValues[known - kNames];
      at_ += 2;
    } else if (ReadUnit(at_, unit)) {
      std::uint32_t second = 0;
      if (IsFirstHalf(unit) && ReadUnit(at_ + 6, second) && IsSecondHalf(second)) {
        unit = Joined(unit, second);
        at_ += 6;
      } else if (IsFirstHalf(unit) || IsSecondHalf(unit)) {
        Note(kSurrogate, at_);
        unit = kReplacement;
      }
      AppendUtf8(value, unit);
      at_ += 6;
    } else {
      Note(kBackslash, at_);
      value += '\\';
      ++at_;
    }
  }

  const std::string& text_;
  std::size_t at_;
  std::vector<Fault>& faults_;
};

void Render(const Node& node, std::size_t indent, std::string& out) {
  constexpr std::size_t kStep = 4;
  const bool isObject = node.type == NodeType::object;
  if (!isObject && node.type != NodeType::array) {
    if (node.type == NodeType::string) {
      out += Quoted(node.text);
    } else {
      out += node.type == NodeType::null ? "null" : node.text;
    }
    return;
  }
  const std::size_t count = isObject ? node.members.size() : node.items.size();
  out += isObject ? '{' : '[';
  for (std::size_t i = 0; i < count; ++i) {
    out += (i == 0 ? "\n" : ",\n") + std::string(indent + kStep, ' ');
    if (isObject) out += Quoted(node.members[i].key) + ": ";
    Render(isObject ? node.members[i].value : node.items[i], indent + kStep, out);
  }
  if (count != 0) out += '\n' + std::string(indent, ' ');
  out += isObject ? '}' : ']';
}

}  // namespace

ConfigText ReadConfigText(const std::string& bytes) {
  ConfigText settings;
  if (!bytes.empty() && bytes.find_first_not_of('\0') == std::string::npos) {
    settings.faults.push_back({&kZeros, 0, {}});
    return settings;
  }
  settings.text = ToUtf8(bytes, settings.faults);
  const std::size_t first = settings.text.find_first_not_of(" \t\r\n");
  if (first == std::string::npos) {
    settings.faults.push_back({&kEmpty, 0, {}});
    return settings;
  }
  if (settings.text[first] == '<') {
    settings.faults.push_back({&kNoJson, first, {}});
    settings.end = settings.text.size();
    return settings;
  }

  Reader reader(settings.text, 0, settings.faults);
  settings.document = reader.ReadDocument();
  settings.end = reader.at();
  const auto isBehind = [&](const Fault& fault) {
    return fault.offset > settings.end || (fault.kind == &kNotUtf8 && fault.offset >= settings.end);
  };
  settings.faults.erase(std::remove_if(settings.faults.begin(), settings.faults.end(), isBehind),
                        settings.faults.end());
  std::stable_sort(settings.faults.begin(), settings.faults.end(),
                   [](const Fault& a, const Fault& b) { return a.offset < b.offset; });

  // What is wrong behind the document is no fault: the library does not read it.
  std::vector<Fault> ignored;
  Reader behind(settings.text, settings.end, ignored);
  behind.SkipBlanks();
  settings.hasMoreBehind = !behind.AtEnd();
  settings.behind = behind.ReadBehind();
  return settings;
}

Place PlaceOf(const std::string& text, std::size_t offset) {
  Place place = {1, 1};
  for (std::size_t i = 0; i < std::min(offset, text.size()); ++i) {
    if (text[i] == '\n') {
      ++place.line;
      place.column = 1;
    } else if ((static_cast<unsigned char>(text[i]) & 0xC0) != 0x80) {
      ++place.column;
    }
  }
  return place;
}

std::string RenderNode(const Node& node) {
  std::string out;
  Render(node, 0, out);
  return out + '\n';
}

}  // namespace launcher::doctor
