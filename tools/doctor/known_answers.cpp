#include "doctor/known_answers.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

#include "doctor/library_calls.h"
#include "support/quiet_library.h"

namespace launcher::doctor {
namespace {

using Bytes = std::vector<std::uint8_t>;

// Made with the openssl program by scripts/make_containers.py.
struct Container {
  const char* payload;
  const char* container;
};
constexpr Container kContainers[] = {
    {"fbaf11b7e6",
     "42464252d7d2518eca179dbe1581056fcad84f7a421661726bf000d7a046e4be31678300ae710713246111e701"
     "8a71a4ae8fd94e"},
    {"fbaf11b7e6b4b8bf6cbc21aa",
     "42464252342924aa5e9ab8187a86737a0d989796d4d16f7e8ddaafe6a74e2c75f0736f5f45482e85d3cb0cbc38"
     "d8c4231bc0a084"},
    {"fbaf11b7e6b4b8bf6cbc21aa164582e1a83f6a5eb0cf1363ff1010710e69665d8286ead36463538956a6acd6",
     "424642523015129ccc84f2c72666bc0ca248bc545eb248139daf5c3aa0f821d30961a5415cb684c9ce85c90438"
     "d8c4231bc0a0840b460653f16a0366d971ce52247ae7bd3e3cef2e138a85efc1cbbd737c65f99b"},
};
// The marker alone, enciphered.
constexpr const char* kMarkerContainer =
    "4246425262a1680624e2d23261d06194e4eeec9cd479f9ff50ad26b91234897b1fb4579d04b7848b8c1d1d8189f021"
    "d4ebf6212ebb87189ade7f73584c269cf09aea7dcc";

constexpr std::uint32_t kPayloadOffset = 40;
constexpr std::uint32_t kMarkerSize = 22;
constexpr StringLabel kKeyLabel = 11000;

Bytes FromHex(const std::string& digits) {
  Bytes bytes;
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

void AskCipher(const LoadedLibrary& library, Group& group) {
  char key[64] = "";
  group.Expect(QX_IN(library, QX_LoadString)(kKeyLabel, key, sizeof key) == QX_SUCCEEDED,
               "QX_LoadString");
  const auto keyLength = static_cast<std::int32_t>(std::strlen(key));
  const auto* const keyBytes = reinterpret_cast<const std::uint8_t*>(key);
  const auto decode = QX_IN(library, file_cipher_decode);
  for (const Container& known : kContainers) {
    const Bytes payload = FromHex(known.payload);
    const Bytes container = FromHex(known.container);
    const auto size = static_cast<std::uint32_t>(payload.size());
    const auto blockSize = static_cast<std::uint32_t>(container.size());
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

    std::uint32_t payloadSize = 0;
    std::uint32_t offset = 0;
    const auto isPayload = [&](const Bytes& block) {
      return payloadSize == size && offset == kPayloadOffset &&
             std::equal(payload.begin(), payload.end(), block.begin() + kPayloadOffset);
    };
    Bytes block = container;
    group.Expect(decode(block.data(), blockSize, keyBytes, keyLength, &payloadSize, &offset,
                        nullptr) == QX_CIPHER_SUCCEEDED &&
                     isPayload(block),
                 "file_cipher_decode");
    block = container;
    payloadSize = offset = 0;
    group.Expect(QX_IN(library, QX_Decode)(block.data(), static_cast<std::int32_t>(blockSize),
                                           &payloadSize, &offset, 0) == QX_SUCCEEDED &&
                     isPayload(block),
                 "QX_Decode");
    block = container;
    block.back() ^= 1;
    group.Expect(decode(block.data(), blockSize, keyBytes, keyLength, &payloadSize, &offset,
                        nullptr) == QX_CIPHER_FAILED,
                 "file_cipher_decode");
  }

  Bytes block = FromHex(kMarkerContainer);
  std::uint32_t payloadSize = 1;
  std::uint32_t offset = 0;
  group.Expect(QX_IN(library, QX_Decode)(block.data(), static_cast<std::int32_t>(block.size()),
                                         &payloadSize, &offset, 1) == QX_SUCCEEDED &&
                   payloadSize == 0 && offset == kPayloadOffset + kMarkerSize,
               "QX_Decode");
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
  Group cipher;
  Group readers;
  Group frame;
  Group information;
  // Lookups of texts among them: the settings of the user play no part.
  const SystemError error = RunQuietly([&] {
    AskCipher(library, cipher);
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
