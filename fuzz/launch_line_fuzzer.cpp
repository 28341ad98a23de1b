// The launch line and what reads it: each reader against a plain model, the line that is written
// against the readers, and the arguments of any command line against Windows' rules.

#include <cstring>
#include <vector>

#include "config/string_table.h"
#include "fuzz/fuzzing.h"
#include "launch/launch_line.h"
#include "launcher_dll.h"
#include "platform/win32.h"

namespace {

std::wstring commandLine;

}  // namespace

// The linker's --wrap leads calls of GetCommandLineW here.
extern "C" wchar_t* __wrap__Z15GetCommandLineWv() { return commandLine.data(); }

namespace launcher {
namespace {

using fuzz::Bytes;
using fuzz::Require;

const std::string kHexDigits = "0123456789abcdef0123456789ABCDEF";

// What strtoul makes of eight characters at the most, in 32 bits.
std::uint32_t NumberAt(const std::string& text) {
  std::size_t at = std::min(text.find_first_not_of(" \t\n\v\f\r"), text.size());
  bool isNegative = false;
  if (at < text.size() && (text[at] == '-' || text[at] == '+')) isNegative = text[at++] == '-';
  const bool hasPrefix = text.size() - at > 2 && text[at] == '0' && (text[at + 1] | 0x20) == 'x' &&
                         kHexDigits.find(text[at + 2]) != std::string::npos;
  if (hasPrefix) at += 2;
  std::uint32_t number = 0;
  for (; at < text.size() && kHexDigits.find(text[at]) != std::string::npos; ++at) {
    number = number * 16 + static_cast<std::uint32_t>(kHexDigits.find(text[at]) % 16);
  }
  return isNegative ? 0 - number : number;
}

// Digits in their places, and 0 for what is none.
std::uint32_t DigitsAt(const std::string& text) {
  std::uint32_t number = 0;
  for (const char c : text) {
    const std::size_t digit = kHexDigits.find(c);
    number =
        number * 16 + (digit != std::string::npos ? static_cast<std::uint32_t>(digit % 16) : 0);
  }
  return number;
}

void CheckWordReaders(const std::string& text, bool isAsked) {
  const bool fits = text.size() >= 8;
  const std::size_t start = fits ? text.size() - 8 : 0;
  std::uint32_t number = 0xCDCDCDCD;
  Require(QX_RightAddress(isAsked ? &number : nullptr, text.c_str()) == (fits ? 0 : QX_FAILED),
          "an address by what is there");
  Require(number == (fits && isAsked ? DigitsAt(text.substr(start)) : 0xCDCDCDCD), "an address");

  Bytes line(text.c_str(), text.c_str() + text.size() + 1);
  number = 0xCDCDCDCD;
  Require(QX_RightDWORD(isAsked ? &number : nullptr, fuzz::TextAt(line)) == (fits ? 0 : QX_FAILED),
          "a number by what is there");
  Require(number == (fits && isAsked ? NumberAt(text.substr(start)) : 0xCDCDCDCD), "a number");
  Bytes left = test::BytesOf(text);
  left.push_back(0);
  if (fits) left[start] = 0;
  Require(line == left, "the text loses what was read");
}

void CheckBinary(const std::string& text, std::uint32_t capacity, std::uint32_t count) {
  const Bytes line(text.c_str(), text.c_str() + text.size() + 1);
  const char* const start = reinterpret_cast<const char*>(line.data());
  const bool fits = std::uint64_t{count} * 2 <= text.size() && count <= capacity;
  const ResultCode expected = fits ? QX_SUCCEEDED : QX_FAILED;
  Require(QX_RightBinary(nullptr, capacity, start, count) == expected, "bytes by what is there");

  Bytes buffer(std::min<std::size_t>(capacity, 1000), fuzz::kFill);
  if (buffer.size() < capacity && fits) return;
  std::uint8_t none = 0;
  const bool isEmpty = buffer.empty();
  Require(QX_RightBinary(isEmpty ? &none : buffer.data(), capacity, start, count) == expected,
          "bytes that are written");
  Bytes read(buffer.size(), fits ? std::uint8_t{0} : fuzz::kFill);
  for (std::size_t i = 0; fits && i < count; ++i) {
    read[i] = static_cast<std::uint8_t>(DigitsAt(text.substr(text.size() - 2 * (count - i), 2)));
  }
  Require(buffer == read, "the bytes, and zeros behind them");
}

// Whatever line is written, a client finds the numbers and the path again.
void CheckWriter(const std::string& path, std::uint32_t processId, std::uint32_t address) {
  char line[kLaunchLineCapacity];
  FormatLaunchLine(line, path.c_str(), processId, address);
  std::uint8_t block[kEncipheredLineSize];
  Require(EncipherLaunchLine(block, line), "enciphering a line");
  std::uint32_t size = 0;
  std::uint32_t offset = 0;
  Require(QX_Decode(block, sizeof block, &size, &offset, 0) == QX_SUCCEEDED, "deciphering a line");
  std::string area = std::string(kSignatureMarker) + line;
  area.resize(kSignedAreaSize);
  if (std::strlen(line) + sizeof kSignatureMarker - 1 > kSignedAreaSize)
    area.assign(kSignedAreaSize, 0);
  Require(size == kSignedAreaSize && std::memcmp(block + offset, area.data(), size) == 0, "signed");

  std::uint32_t readAddress = ~address;
  std::uint32_t readProcessId = ~processId;
  Require(QX_RightAddress(&readAddress, line) == 0 && readAddress == address, "the address");
  Require(QX_RightDWORD(nullptr, line) == 0, "cutting the address off");
  Require(QX_RightDWORD(&readProcessId, line) == 0 && readProcessId == processId, "the process");
  Require(line == '"' + path + "\" ", "the path");
}

// The texts of a command line, one character at a time.
std::vector<std::wstring> Split(const std::wstring& line) {
  std::vector<std::wstring> texts;
  if (line.empty()) return texts;
  std::size_t at = line[0] == L'"' ? 1 : 0;
  const std::size_t end = std::min(line.find_first_of(at != 0 ? L"\"" : L" \t", at), line.size());
  texts.push_back(line.substr(at, end - at));
  at = end + (at != 0 ? 1 : 0);

  bool isOpen = false;  // an argument
  bool isQuoted = false;
  std::size_t slashes = 0;
  for (; at < line.size(); ++at) {
    const wchar_t c = line[at];
    if (!isQuoted && (c == L' ' || c == L'\t')) {
      isOpen = false;
      slashes = 0;
      continue;
    }
    if (!isOpen) texts.emplace_back();
    isOpen = true;
    std::wstring& text = texts.back();
    if (c != L'"') {
      text += c;
      slashes = c == L'\\' ? slashes + 1 : 0;
      continue;
    }
    text.resize(text.size() - (slashes + 1) / 2);
    if (slashes % 2 == 1) {
      text += c;
    } else if (isQuoted && at + 1 < line.size() && line[at + 1] == c) {
      text += c;
      ++at;
    } else {
      isQuoted = !isQuoted;
    }
    slashes = 0;
  }
  return texts;
}

// UTF-8, the native layer's code page.
void AppendNarrow(Bytes& bytes, wchar_t c) {
  const auto code = static_cast<std::uint32_t>(c);
  const auto part = [&](std::uint32_t value) { bytes.push_back(static_cast<std::uint8_t>(value)); };
  if (code < 0x80) return part(code);
  if (code < 0x800) {
    part(0xC0 | code >> 6);
  } else {
    if (code < 0x10000) {
      part(0xE0 | code >> 12);
    } else {
      part(0xF0 | code >> 18);
      part(0x80 | (code >> 12 & 0x3F));
    }
    part(0x80 | (code >> 6 & 0x3F));
  }
  part(0x80 | (code & 0x3F));
}

void CheckArguments(const std::string& pattern, FuzzedDataProvider& input) {
  // Bytes beyond ASCII stand for characters of every length, none of them a surrogate.
  commandLine.clear();
  for (const char c : pattern) {
    const auto byte = static_cast<std::uint8_t>(c);
    const auto wide = static_cast<std::uint32_t>(byte) * byte * byte / 16;
    commandLine += static_cast<wchar_t>(byte < 0x80            ? byte
                                        : byte % 3 == 0        ? byte
                                        : (wide >> 11) == 0x1B ? 0xFFFF
                                                               : wide);
  }
  const std::vector<std::wstring> texts = Split(commandLine);
  std::uint32_t length = 0;
  Bytes expected;
  for (const std::wstring& text : texts) {
    length += static_cast<std::uint32_t>(text.size()) + 1;
    for (const wchar_t c : text) AppendNarrow(expected, c);
    expected.push_back(0);
  }

  char untouched = 0;
  char* block = &untouched;
  std::int32_t count = -1;
  const std::uint32_t capacity = fuzz::NumberNear(input, length);
  const ResultCode result = QX_CommandLineToArgvA(&block, capacity, &count);
  Require(count == static_cast<std::int32_t>(texts.size()), "the number of arguments");
  if (capacity < length) {
    Require(result == QX_BAD_ARGUMENT && block == &untouched, "arguments that are refused");
    return;
  }
  Require(result == QX_SUCCEEDED, "arguments that fit");
  Require(Bytes(block, block + expected.size()) == expected, "the arguments");
  LocalFree(block);
}

}  // namespace
}  // namespace launcher

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace launcher;
  FuzzedDataProvider input(data, size);
  const auto first = input.ConsumeIntegral<std::uint32_t>();
  const auto second = input.ConsumeIntegral<std::uint32_t>();
  const auto stretch = input.ConsumeIntegral<std::uint8_t>();
  const bool isAsked = input.ConsumeBool();
  const std::string text = fuzz::ConsumeText(input, 2100);
  const auto count = fuzz::NumberNear(input, static_cast<std::uint32_t>(text.size() / 2));
  const auto capacity = fuzz::NumberNear(input, count);

  CheckWordReaders(text, isAsked);
  CheckBinary(text, capacity, count);
  std::string path = text;
  if (stretch >= 0xF0) path.resize(kMaxClientPathLength - (stretch & 0xF), 'p');
  CheckWriter(path.substr(0, kMaxClientPathLength), first, second);
  CheckArguments(fuzz::ConsumeText(input, 300), input);
  return 0;
}
