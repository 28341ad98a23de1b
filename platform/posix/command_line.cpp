// The process's command line. Linux has only separate arguments, so this file joins them in a way
// that splitting by the Windows rules gives the same arguments again.

#include "platform/posix/command_line.h"

#include <codecvt>
#include <cstring>
#include <fstream>
#include <iterator>
#include <locale>

#include "platform/posix/faults.h"

namespace launcher::posix {
namespace {

// With two texts for its constructor it does not throw: they replace what cannot be converted.
using Utf8 = std::wstring_convert<std::codecvt_utf8<wchar_t>>;

// Quotes a text so that SplitCommandLine returns it unchanged: backslashes before a quote, and
// those at the end, which are before the closing quote, are doubled.
std::string Quoted(const std::string& text) {
  std::string quoted = "\"";
  std::size_t slashes = 0;
  for (const char c : text) {
    if (c == '"') quoted.append(slashes + 1, '\\');
    slashes = c == '\\' ? slashes + 1 : 0;
    quoted.push_back(c);
  }
  return quoted.append(slashes, '\\') + '"';
}

std::string CommandLine() {
  std::ifstream file("/proc/self/cmdline", std::ios::binary);
  const std::string raw{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
  std::string line;
  for (std::size_t at = 0; at < raw.size(); at += std::strlen(&raw[at]) + 1) {
    const std::string text(&raw[at]);
    if (at == 0) {
      line = '"' + text + '"';  // in the program's name a backslash has no special meaning
    } else {
      line += ' ';
      line += text.empty() || text.find_first_of(" \t\"") != text.npos ? Quoted(text) : text;
    }
  }
  return line;
}

// Made when the program starts, since the functions that return them cannot fail. The wide line
// needs the narrow one, so it comes second.
std::string narrowLine = CommandLine();
std::wstring wideLine = Utf8("?", L"\uFFFD").from_bytes(narrowLine);

// Returns the pointers and the texts in one block, which a single LocalFree frees. Null if memory
// runs out.
wchar_t** PackedTexts(const std::vector<std::wstring>& texts) {
  std::size_t size = (texts.size() + 1) * sizeof(wchar_t*);
  for (const std::wstring& text : texts) size += (text.size() + 1) * sizeof(wchar_t);
  const auto block = static_cast<wchar_t**>(LocalAlloc(LMEM_FIXED, size));
  if (block == nullptr) return nullptr;

  auto* at = reinterpret_cast<wchar_t*>(block + texts.size() + 1);
  for (std::size_t i = 0; i < texts.size(); ++i) {
    block[i] = at;
    std::memcpy(at, texts[i].c_str(), (texts[i].size() + 1) * sizeof(wchar_t));
    at += texts[i].size() + 1;
  }
  block[texts.size()] = nullptr;
  return block;
}

// Returns the size in bytes, terminator included. With a capacity of 0 nothing is written.
int ConvertToUtf8(const wchar_t* text, char* destination, int capacity) {
  const std::string bytes = Utf8("?", L"\uFFFD").to_bytes(text);
  const int size = static_cast<int>(bytes.size()) + 1;
  if (capacity == 0) return size;
  if (capacity < size) return Fail(kErrorInsufficientBuffer);
  std::memcpy(destination, bytes.c_str(), static_cast<std::size_t>(size));
  return size;
}

}  // namespace
}  // namespace launcher::posix

BOOL IsDBCSLeadByte(BYTE /*byte*/) { return FALSE; }

char* GetCommandLineA() { return launcher::posix::narrowLine.data(); }

wchar_t* GetCommandLineW() { return launcher::posix::wideLine.data(); }

wchar_t** CommandLineToArgvW(const wchar_t* commandLine, int* count) {
  using namespace launcher::posix;
  if (MustFail(__func__)) return nullptr;
  constexpr wchar_t** kNone = nullptr;
  return WithoutThrowing(kNone, [=] {
    const auto texts = SplitCommandLine(std::wstring(commandLine));
    wchar_t** const block = PackedTexts(texts);
    if (block != nullptr) *count = static_cast<int>(texts.size());
    return block;
  });
}

int WideCharToMultiByte(UINT codePage, DWORD flags, const wchar_t* text, int length,
                        char* destination, int capacity, const char* defaultCharacter,
                        BOOL* usedDefault) {
  using namespace launcher::posix;
  if (MustFail(__func__)) return 0;
  if (codePage != CP_ACP || flags != 0 || length != -1 || defaultCharacter != nullptr ||
      usedDefault != nullptr) {
    return Fail(kErrorInvalidParameter);
  }
  return WithoutThrowing(0, [=] { return ConvertToUtf8(text, destination, capacity); });
}
