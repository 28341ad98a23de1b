// Calls of the library whose results are known.

#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

#include "doctor/built_in.h"
#include "doctor/export_list.h"
#include "doctor/library_child.h"
#include "launcher_dll.h"

namespace launcher::doctor {
namespace {

using Bytes = std::vector<std::uint8_t>;

// The bytes of hexadecimal digits; none for null.
Bytes FromHex(const Json& text) {
  Bytes bytes;
  const std::string digits = text.is_null() ? "" : text.get<std::string>();
  for (std::size_t i = 0; i + 1 < digits.size(); i += 2) {
    bytes.push_back(static_cast<std::uint8_t>(std::stoi(digits.substr(i, 2), nullptr, 16)));
  }
  return bytes;
}

bool EncodesRight(const LoadedLibrary& library, const Bytes& payload, const Bytes& container) {
  Bytes made(container.size());
  const auto size = static_cast<std::int32_t>(payload.size());
  return QX_IN(library, QX_Encode)(made.data(), payload.data(), size) == QX_SUCCEEDED &&
         made == container;
}

// With a vector of docs/container-vectors.json.
bool DecodesRight(const LoadedLibrary& library, const Json& vector, const Bytes& payload) {
  constexpr std::uint32_t kUnwritten = 0xCDCDCDCD;
  const Bytes key = FromHex(vector.at("key"));
  Bytes block = FromHex(vector.at("container"));
  const auto blockSize = static_cast<std::uint32_t>(block.size());
  block.reserve(1);  // so that data() of an empty block is not null
  std::uint32_t size = kUnwritten;
  std::uint32_t offset = kUnwritten;
  const CipherCode result = QX_IN(library, file_cipher_decode)(
      block.data(), blockSize, key.data(), static_cast<std::int32_t>(key.size()), &size, &offset,
      vector.at("prefix").get<std::string>().c_str());
  const Json& expected = vector.at("file_cipher_decode");
  if (result != expected.at("result") || size != expected.value("payloadSize", kUnwritten) ||
      offset != expected.value("payloadOffset", kUnwritten)) {
    return false;
  }
  // Compares the end, which is the same for a payload with its prefix and without.
  return payload.empty() || std::memcmp(block.data() + offset + size - payload.size(),
                                        payload.data(), payload.size()) == 0;
}

}  // namespace

void CheckKnownResults(const LoadedLibrary& library, Report& report) {
  std::size_t count = 0;
  std::vector<std::string> wrong;
  const auto expect = [&](const std::string& name, bool isRight) {
    ++count;
    if (!isRight && (wrong.empty() || wrong.back() != name)) wrong.push_back(name);
  };
  const Json vectors = Json::parse(kContainerVectors).at("vectors");
  for (const Json& vector : vectors) {
    const Bytes payload = FromHex(vector.at("payload"));
    expect("file_cipher_decode", DecodesRight(library, vector, payload));
    if (vector.at("encoded") && vector.at("prefix").get<std::string>().empty()) {
      expect("QX_Encode", EncodesRight(library, payload, FromHex(vector.at("container"))));
    }
  }
  if (wrong.empty()) {
    report.Add("calls.right", {std::to_string(count)});
  } else {
    report.Add("calls.wrong", {Listed(wrong)});
  }
}

}  // namespace launcher::doctor
