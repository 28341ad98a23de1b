#include "doctor/known_answers.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "doctor/embedded_files.h"
#include "doctor/library_calls.h"
#include "support/quiet_library.h"

namespace launcher::doctor {
namespace {

using Bytes = std::vector<std::uint8_t>;
using Json = nlohmann::json;

constexpr std::uint32_t kMarkerSize = 22;
constexpr StringLabel kKeyLabel = 11000;

// The bytes of hexadecimal digits; none of a null.
Bytes FromHex(const Json& text) {
  Bytes bytes;
  const std::string digits = text.is_null() ? "" : text.get<std::string>();
  for (std::size_t i = 0; i + 1 < digits.size(); i += 2) {
    bytes.push_back(static_cast<std::uint8_t>(std::stoi(digits.substr(i, 2), nullptr, 16)));
  }
  return bytes;
}

// A group of calls: how many, and which of them answered otherwise.
class Group {
 public:
  void Expect(bool isRight, const std::string& what) {
    ++count_;
    if (!isRight && std::find(wrong_.begin(), wrong_.end(), what) == wrong_.end()) {
      wrong_.push_back(what);
    }
  }

  Finding Tell(const std::string& id, const std::string& cause) const {
    Finding finding;
    finding.id = id;
    if (wrong_.empty()) {
      finding.text = Counted(count_, "known answer") + " came out right";
      return finding;
    }
    finding.status = Status::broken;
    finding.text = "wrong answers of ";
    for (const std::string& name : wrong_) {
      finding.text += (&name == &wrong_.front() ? "" : ", ") + name;
    }
    finding.cause = cause;
    finding.next = "take the library from the package anew";
    return finding;
  }

 private:
  std::size_t count_ = 0;
  std::vector<std::string> wrong_;
};

// Encodes and decodes a vector of docs/container-vectors.json.
void AskVector(const LoadedLibrary& library, const Json& vector, Group& group) {
  const Bytes key = FromHex(vector.at("key"));
  const Bytes container = FromHex(vector.at("container"));
  const Bytes payload = FromHex(vector.at("payload"));
  const auto prefix = vector.at("prefix").get<std::string>();
  const auto blockSize = static_cast<std::uint32_t>(container.size());
  const auto size = static_cast<std::uint32_t>(payload.size());

  if (vector.at("encoded") && prefix.empty()) {
    group.Expect(QX_IN(library, file_cipher_get_encode_size)(size) == blockSize,
                 "file_cipher_get_encode_size");
    group.Expect(QX_IN(library, QX_GetEncodeDataSize)(size) == blockSize, "QX_GetEncodeDataSize");
    Bytes made(container.size());
    group.Expect(QX_IN(library, file_cipher_encode)(payload.data(), size, made.data()) ==
                         QX_CIPHER_SUCCEEDED &&
                     made == container,
                 "file_cipher_encode");
    std::fill(made.begin(), made.end(), std::uint8_t{0});
    group.Expect(QX_IN(library, QX_Encode)(made.data(), payload.data(),
                                           static_cast<std::int32_t>(size)) == QX_SUCCEEDED &&
                     made == container,
                 "QX_Encode");
  }

  const auto expectDecoding = [&](const char* name, const Json& expected, const auto& decode) {
    constexpr std::uint32_t kUnwritten = 0xCDCDCDCD;
    Bytes block = container;
    block.reserve(1);  // so that an empty block has an address
    std::uint32_t foundSize = kUnwritten;
    std::uint32_t offset = kUnwritten;
    const std::int32_t result = decode(block.data(), &foundSize, &offset);
    // The payload has the same end with its prefix and without.
    group.Expect(result == expected.at("result") &&
                     foundSize == expected.value("payloadSize", kUnwritten) &&
                     offset == expected.value("payloadOffset", kUnwritten) &&
                     (payload.empty() || std::memcmp(block.data() + offset + foundSize - size,
                                                     payload.data(), payload.size()) == 0),
                 name);
  };
  expectDecoding("file_cipher_decode", vector.at("file_cipher_decode"),
                 [&](std::uint8_t* block, std::uint32_t* foundSize, std::uint32_t* offset) {
                   return QX_IN(library, file_cipher_decode)(block, blockSize, key.data(),
                                                             static_cast<std::int32_t>(key.size()),
                                                             foundSize, offset, prefix.c_str());
                 });
  for (const std::uint32_t checkMarker : {0U, 1U}) {
    const auto expected = vector.find("QX_Decode, checkMarker " + std::to_string(checkMarker));
    if (expected == vector.end()) continue;  // not the built-in key
    expectDecoding("QX_Decode", *expected,
                   [&](std::uint8_t* block, std::uint32_t* foundSize, std::uint32_t* offset) {
                     return QX_IN(library, QX_Decode)(block, static_cast<std::int32_t>(blockSize),
                                                      foundSize, offset, checkMarker);
                   });
  }
}

void AskCipher(const LoadedLibrary& library, const Json& vectors, Group& group) {
  for (const Json& vector : vectors) AskVector(library, vector, group);

  char key[64] = "";
  const Bytes builtIn = FromHex(vectors.at(0).at("key"));
  group.Expect(QX_IN(library, QX_LoadString)(kKeyLabel, key, sizeof key) == QX_SUCCEEDED &&
                   std::string(key) == std::string(builtIn.begin(), builtIn.end()),
               "QX_LoadString");
  std::uint8_t marked[kMarkerSize + 1] = {};
  const std::uint8_t data = 7;
  group.Expect(QX_IN(library, QX_GetSignatureSize)() == kMarkerSize, "QX_GetSignatureSize");
  group.Expect(QX_IN(library, QX_SignSignature)(marked, sizeof marked, &data, 1) == 1 &&
                   marked[kMarkerSize] == data && std::memcmp(marked, "/* ", 3) == 0,
               "QX_SignSignature");
}

void AskReaders(const LoadedLibrary& library, Group& group) {
  constexpr std::uint32_t kValue = 0x00ABCDEF;
  std::uint32_t value = 0;
  group.Expect(
      QX_IN(library, QX_RightAddress)(&value, "xx00ABCDEF") == QX_SUCCEEDED && value == kValue,
      "QX_RightAddress");
  group.Expect(QX_IN(library, QX_RightAddress)(&value, "0ABCDEF") == QX_FAILED, "QX_RightAddress");
  char line[] = "xx00abcdef";
  value = 0;
  group.Expect(QX_IN(library, QX_RightDWORD)(&value, line) == QX_SUCCEEDED && value == kValue &&
                   std::strcmp(line, "xx") == 0,
               "QX_RightDWORD");
  std::uint8_t bytes[4] = {9, 9, 9, 9};
  group.Expect(QX_IN(library, QX_RightBinary)(bytes, sizeof bytes, "zz01fF", 2) == QX_SUCCEEDED &&
                   bytes[0] == 0x01 && bytes[1] == 0xFF && bytes[2] == 0,
               "QX_RightBinary");
  group.Expect(QX_IN(library, QX_RightBinary)(bytes, sizeof bytes, "1", 1) == QX_FAILED,
               "QX_RightBinary");
}

void AskFrame(const LoadedLibrary& library, Group& group) {
  group.Expect(QX_IN(library, QX_IsFailed)(-1005) == 1 && QX_IN(library, QX_IsFailed)(7) == 0,
               "QX_IsFailed");
  group.Expect(QX_IN(library, QX_IsSucceeded)(0) == 1 && QX_IN(library, QX_IsSucceeded)(-1) == 0,
               "QX_IsSucceeded");
  constexpr std::uint32_t kSize = 16;
  void* block = nullptr;
  const bool isThere =
      QX_IN(library, QX_Allocate)(&block, kSize) == QX_SUCCEEDED && block != nullptr;
  const char zeros[kSize] = {};
  group.Expect(isThere && std::memcmp(block, zeros, kSize) == 0, "QX_Allocate");
  group.Expect(QX_IN(library, QX_Deallocate)(block) == QX_SUCCEEDED, "QX_Deallocate");
}

void AskSystemInformation(const LoadedLibrary& library, Group& group) {
  SystemInformation record = {};
  const std::uint32_t numbers[] = {0, 2, 5, 0};
  group.Expect(QX_IN(library, QX_GetSystemInformation)(&record, sizeof record) == QX_SUCCEEDED &&
                   std::memcmp(record.numbers, numbers, sizeof numbers) == 0 &&
                   record.buildName[0] != '\0' && record.vendorName[0] != '\0',
               "QX_GetSystemInformation");
  constexpr StringLabel kVendorLabel = 0;
  group.Expect(
      QX_IN(library, QX_GetLengthOfRString)(kVendorLabel) == std::strlen(record.vendorName),
      "QX_GetLengthOfRString");
}

}  // namespace

void CheckKnownAnswers(const LoadedLibrary& library, Report& report) {
  const Json vectors = Json::parse(kContainerVectors).at("vectors");
  Group cipher;
  Group readers;
  Group frame;
  Group information;
  // Lookups of texts among them: the settings of the user play no part.
  const SystemError error = RunQuietly([&] {
    AskCipher(library, vectors, cipher);
    AskReaders(library, readers);
    AskFrame(library, frame);
    AskSystemInformation(library, information);
  });
  if (error != 0) {
    Finding finding;
    finding.id = "answers";
    finding.status = Status::warning;
    finding.text = "no known answer was asked for: " + SystemErrorText(error);
    finding.cause = "the folder for temporary files cannot be written to, or the disk is full";
    finding.next = "make room, or let the user write there";
    report.Add(finding);
    return;
  }
  const std::string damaged = "the library's file is damaged, or another library of the same name";
  report.Add(cipher.Tell("cipher", damaged + "; or the system has no SHA-256 for it"));
  report.Add(readers.Tell("readers", damaged));
  report.Add(frame.Tell("memory", damaged));
  report.Add(information.Tell("system-information", damaged));
}

}  // namespace launcher::doctor
