// The C++ wrapper of LauncherDll: launcher_dll.h with owners, spans, strings and exceptions.
//
// C++17, header only, namespace launcher_dll. A program that uses it links the same library as one
// that uses launcher_dll.h. The comments there also apply here: what each function prints and
// reads, and which outputs it leaves unwritten.
//
// - A function throws Error if its export fails, whichever value that export returns for a failure.
//   A function that asks a question returns a bool. A size that does not fit the export's argument
//   throws std::length_error before any call.
// - Texts are 8-bit and end at their first NUL. If a text does not fit a buffer, the wrapper calls
//   the export again with a larger one.
// - These exports have no wrapper: QX_IsFailed and QX_IsSucceeded (see Error),
//   QX_GetLengthOfRString (LoadText distinguishes an empty text from a failure),
//   QX_GetEncodeDataSize and QX_Encode (EncodeTo makes the same container, with a larger limit),
//   and the last section of launcher_dll.h, whose functions return constants.

#ifndef LAUNCHER_DLL_HPP_
#define LAUNCHER_DLL_HPP_

// Microsoft's compiler leaves __cplusplus at the value of C++98.
#if __cplusplus < 201703L && (!defined(_MSVC_LANG) || _MSVC_LANG < 201703L)
#error "launcher_dll.hpp needs C++17: compile with -std=c++17 or /std:c++17"
#else

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <limits>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <system_error>
#include <type_traits>
#include <utility>
#include <vector>

#include "launcher_dll.h"

#if defined(_WIN32)
// Declared as in <windows.h>, which this header does not include.
extern "C" {
__declspec(dllimport) unsigned long __stdcall GetLastError();
__declspec(dllimport) void __stdcall SetLastError(unsigned long);
__declspec(dllimport) void* __stdcall LocalFree(void*);
__declspec(dllimport) void* __stdcall OpenProcess(unsigned long, int, unsigned long);
__declspec(dllimport) int __stdcall ReadProcessMemory(void*, const void*, void*, unsigned long,
                                                      unsigned long*);
__declspec(dllimport) int __stdcall CloseHandle(void*);
}
#else
#include <sys/uio.h>

#include <cerrno>
#endif

namespace launcher_dll {

// ---- Failure ---------------------------------------------------------------------------------

// An export failed. what() is, for example, "file_cipher_encode failed: the payload is empty".
class Error : public std::runtime_error {
 public:
  // `exportName` is a literal. Without a `reason` the message explains the result. `systemCode` is
  // GetLastError() on Windows, errno elsewhere, or 0.
  Error(const char* exportName, std::int32_t result, const std::string& reason = {},
        int systemCode = 0)
      : std::runtime_error(Message(exportName, result, reason, systemCode)),
        exportName_(exportName),
        result_(result),
        systemCode_(systemCode) {}

  // The name of the export; "ReadClientData" if that function itself refused the data.
  const char* ExportName() const noexcept { return exportName_; }

  // What the export returned.
  std::int32_t Result() const noexcept { return result_; }

  // The system's error code if a system call failed in RunClient, ReadClientData, RemoveFile,
  // RemoveFolder or Arguments; else 0.
  int SystemCode() const noexcept { return systemCode_; }

 private:
  static std::string Message(const char* exportName, std::int32_t result, std::string reason,
                             int systemCode) {
    if (systemCode != 0) {
      if (!reason.empty()) reason += ": ";
      reason += std::system_category().message(systemCode) + " (system error " +
                std::to_string(systemCode) + ')';
    }
    if (reason.empty()) reason = Meaning(result);
    return std::string(exportName) + " failed: " + reason;
  }

  static std::string Meaning(std::int32_t result) {
    constexpr std::pair<std::int32_t, const char*> kMeanings[] = {
        {QX_BAD_ARGUMENT, "an argument is not valid, or a buffer is too small"},
        {QX_NO_STEAM, "Steam is not available, or refused the request"},
        {QX_NOT_FOUND, "not found"},
        {QX_OUT_OF_MEMORY, "out of memory"},
        {QX_OPEN_FAILED, "the file could not be opened"},
        {QX_WRITE_FAILED, "the file could not be written"},
        {QX_READ_FAILED, "the file could not be read, or is empty"},
        {QX_SIZE_REFUSED, "the size is not 1 to 1,048,575 bytes"}};
    for (const auto& [value, text] : kMeanings) {
      if (value == result) return text;
    }
    return "it returned " + std::to_string(result);
  }

  const char* exportName_;
  std::int32_t result_;
  int systemCode_;
};

// ---- Spans -----------------------------------------------------------------------------------

// Consecutive items that the span does not own.
template <class Item>
class Span {
 public:
  constexpr Span() noexcept = default;
  constexpr Span(Item* data, std::size_t size) noexcept : data_(data), size_(size) {}

  // From a vector, an array or a span of other items. A temporary gives only constant items.
  template <class Container,
            class = std::enable_if_t<!std::is_same_v<std::decay_t<Container>, Span> >,
            class = std::enable_if_t<std::is_const_v<Item> || std::is_reference_v<Container> >,
            class = std::enable_if_t<
                std::is_convertible_v<decltype(std::declval<Container&>().data()), Item*> > >
  constexpr Span(Container&& items) noexcept : data_(items.data()), size_(items.size()) {}

  constexpr Item* data() const noexcept { return data_; }
  constexpr std::size_t size() const noexcept { return size_; }
  constexpr bool empty() const noexcept { return size_ == 0; }
  constexpr Item* begin() const noexcept { return data_; }
  constexpr Item* end() const noexcept { return data_ + size_; }

  // `size` items from `offset` on. Not checked against the span's own size.
  constexpr Span Part(std::size_t offset, std::size_t size) const noexcept {
    return Span(data_ + offset, size);
  }

 private:
  Item* data_ = nullptr;
  std::size_t size_ = 0;
};

using Bytes = std::vector<std::uint8_t>;
using ByteSpan = Span<std::uint8_t>;
using ConstByteSpan = Span<const std::uint8_t>;

// The bytes of a text, without its terminator.
inline ConstByteSpan BytesOf(std::string_view text) noexcept {
  return {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()};
}

namespace detail {

// `reason` explains QX_FAILED and QX_CIPHER_FAILED, which have no meaning of their own.
inline void Check(const char* exportName, std::int32_t result, const char* reason = "") {
  if (result == QX_SUCCEEDED) return;
  const bool isUnexplained = result == QX_FAILED || result == QX_CIPHER_FAILED;
  throw Error(exportName, result, isUnexplained ? reason : "");
}

#if defined(_WIN32)
inline int SystemCode() noexcept { return static_cast<int>(GetLastError()); }
inline void ClearSystemCode() noexcept { SetLastError(0); }
#else
inline int SystemCode() noexcept { return errno; }
inline void ClearSystemCode() noexcept { errno = 0; }
#endif

// Checks an export that leaves a system error code if it fails. `reason` explains a failure without
// such a code.
template <class Call>
void CheckSystem(const char* exportName, Call call, const char* reason = "") {
  ClearSystemCode();
  const std::int32_t result = call();
  const int code = SystemCode();
  if (result != QX_SUCCEEDED) throw Error(exportName, result, code == 0 ? reason : "", code);
}

// Converts a size to the type of the export's argument.
template <class Number>
Number SizeAs(std::size_t size) {
  if (size > static_cast<std::size_t>((std::numeric_limits<Number>::max)())) {
    throw std::length_error("launcher_dll: the size does not fit the export's argument");
  }
  return static_cast<Number>(size);
}

// What an export returned and the text in its buffer.
struct TextResult {
  std::int32_t result;
  bool isWritten;
  std::string text;
};

// Doubles the buffer until `isTooSmall(result, text)` is false. A buffer without a terminator
// counts as not written.
template <class Call, class IsTooSmall>
TextResult ReadText(Call call, IsTooSmall isTooSmall, std::size_t capacity = 256,
                    std::size_t largestCapacity = 0x10000) {
  for (;; capacity *= 2) {
    std::string buffer(capacity, '\xFF');
    const std::int32_t result = call(buffer.data(), static_cast<std::uint32_t>(capacity));
    const std::size_t end = buffer.find('\0');
    const bool isWritten = end != std::string::npos;
    buffer.resize(isWritten ? end : 0);
    if (capacity >= largestCapacity || !isTooSmall(result, buffer)) {
      return {result, isWritten, std::move(buffer)};
    }
  }
}

// For exports that return success and an empty text if the text does not fit.
inline bool IsEmptySuccess(std::int32_t result, const std::string& text) {
  return result == QX_SUCCEEDED && text.empty();
}

}  // namespace detail

// ---- Memory ----------------------------------------------------------------------------------

// Owns a block of the library's memory: QX_Allocate, QX_Deallocate.
class Block {
 public:
  // `size` zero bytes. Throws Error if `size` is 0 or memory runs out.
  explicit Block(std::size_t size) : size_(size) {
    void* block = nullptr;
    detail::Check("QX_Allocate", QX_Allocate(&block, detail::SizeAs<std::uint32_t>(size)));
    data_.reset(static_cast<std::uint8_t*>(block));
  }

  std::uint8_t* data() const noexcept { return data_.get(); }
  std::size_t size() const noexcept { return data_ ? size_ : 0; }

  // Gives up the block: the caller must call QX_Deallocate.
  std::uint8_t* Release() noexcept { return data_.release(); }

 private:
  struct Deallocate {
    void operator()(std::uint8_t* block) const noexcept { QX_Deallocate(block); }
  };
  std::unique_ptr<std::uint8_t, Deallocate> data_;
  std::size_t size_;
};

// ---- Settings and texts ----------------------------------------------------------------------

// The labels of the string table. Each converts to StringLabel, and a number works in its place.
// Settings come from config.json.
struct Label {
  enum : StringLabel {
    kVendorName = 0,
    kBuildName = 10,
    kHttpMethod = 1000,
    kApiServer = 1001,  // a setting, like the servers and URLs below
    kContentType = 1011,
    kIdentifierHeader = 1012,
    kAuthorizationHeader = 1014,
    kSaveDataCreateRequest = 1100,
    kSaveDataRestartRequest = 1101,
    kUserExistenceRequest = 1102,
    kOrvaneServer = 1200,
    kPurchaseServer = 1210,
    kTelemetryServer = 1220,
    kDownloadUrl = 1240,
    // Messages, numbered where several are alike.
    kProcedureNotFound = 2000,
    kForbidden = 2001,
    kFolderNotFound = 2002,
    kFileNotFound1 = 2003,
    kFileNotFound2 = 2004,
    kFileNotRead1 = 2005,
    kFileNotRead2 = 2006,
    kFileInvalid1 = 2007,
    kFileConditions = 2008,
    kFileInvalid2 = 2009,
    kFileNotRecognized = 2010,
    kCanceled = 2011,
    kOutOfMemory = 2012,
    kInvalidJson = 2013,
    kInvalidAddress = 2014,
    kFileNotFound3 = 2015,
    kFileNotFound4 = 2016,
    kFileNotFound5 = 2017,
    kEnd = 2018,
    kOrvaneQaApiUrl = 5000,
    kOrvaneCiApiUrl = 5001,
    kGameUrl = 5100,
    kSignInToSteam = 10023,
    kAlreadyRunning = 10194,
    kStartSteam = 10196,
    kSystemNotSupported = 10239,
    kCipherKey = 11000,
    kSignatureMarker = 11001
  };
};

// A text of the string table: QX_LoadStringToMemory.
// Throws Error if the label is unknown, config.json does not load, or memory runs out.
inline std::string LoadText(StringLabel label) {
  struct Unload {
    void operator()(char* text) const noexcept { QX_UnloadStringFromMemory(&text); }
  };
  char* text = nullptr;
  detail::Check("QX_LoadStringToMemory", QX_LoadStringToMemory(label, &text),
                "config.json does not load");
  const std::unique_ptr<char, Unload> owner(text);
  return text;
}

// QX_IsStaging: true if config.json loads; if not, prints the reason to the standard error stream.
inline bool SettingsLoad() noexcept { return QX_IsStaging() != 0; }

// The library's own description.
struct LibraryInformation {
  std::array<std::uint32_t, 4> numbers;
  std::string buildName;   // empty if its lookup failed
  std::string vendorName;  // likewise
};

// QX_GetSystemInformation. Throws nothing but std::bad_alloc.
inline LibraryInformation ReadLibraryInformation() {
  SystemInformation record = {};
  detail::Check("QX_GetSystemInformation", QX_GetSystemInformation(&record, sizeof record));
  const auto text = [](const char* field, std::size_t size) {
    return std::string(field, std::find(field, field + size, '\0'));
  };
  return {{record.numbers[0], record.numbers[1], record.numbers[2], record.numbers[3]},
          text(record.buildName, sizeof record.buildName),
          text(record.vendorName, sizeof record.vendorName)};
}

// ---- The container ---------------------------------------------------------------------------

// The payload's offset in a container, before a marker is skipped.
constexpr std::uint32_t kPayloadOffset = 40;

// The size in bytes of the container for a payload. Throws Error for a payload of 2 GiB or more.
inline std::uint32_t ContainerSize(std::size_t payloadSize) {
  const std::uint32_t size =
      file_cipher_get_encode_size(detail::SizeAs<std::uint32_t>(payloadSize));
  if (size == 0) throw Error("file_cipher_get_encode_size", 0, "the payload is too large");
  return size;
}

// Makes a container with the built-in key at the start of `output` and returns the part that it
// fills. `payload` may be in `output`, 40 bytes from its start or further.
// Throws Error if `payload` is empty, `output` is too small, or the system computes no digest.
inline ByteSpan EncodeTo(ByteSpan output, ConstByteSpan payload) {
  const std::uint32_t size = ContainerSize(payload.size());
  constexpr const char* kExport = "file_cipher_encode";
  if (payload.empty()) throw Error(kExport, QX_CIPHER_FAILED, "the payload is empty");
  // The export cannot check this.
  if (output.size() < size) throw Error(kExport, QX_CIPHER_FAILED, "the output is too small");
  detail::Check(
      kExport,
      file_cipher_encode(payload.data(), static_cast<std::uint32_t>(payload.size()), output.data()),
      "the system computes no SHA-256 digest");
  return output.Part(0, size);
}

// Makes a container with the built-in key. Throws as EncodeTo does.
inline Bytes Encode(ConstByteSpan payload) {
  Bytes container(ContainerSize(payload.size()));
  EncodeTo(container, payload);
  return container;
}

// The payload of an intact container.
struct Decoded {
  ByteSpan payload;      // in the deciphered block, without a skipped marker
  std::uint32_t offset;  // the payload's distance from the start of the block
  bool hadMarker;        // true if a marker was found and skipped
};

enum class Marker { kKeep, kSkip };

// Deciphers a container in place with the key of the string table (QX_Decode). Returns its payload,
// or nothing if the block is no intact container. The block may be changed from offset 4 on in both
// cases. Marker::kSkip skips the signature marker if the payload begins with it.
// Throws Error if a lookup fails or the block does not have 1 to 1,048,575 bytes.
inline std::optional<Decoded> DecodeInPlace(ByteSpan block, Marker marker = Marker::kKeep) {
  std::uint32_t size = 0;
  std::uint32_t offset = 0;
  // An empty span may be null, for which the export returns another result than for a size of 0.
  std::uint8_t nothing = 0;
  detail::Check(
      "QX_Decode",
      QX_Decode(block.empty() ? &nothing : block.data(), detail::SizeAs<std::int32_t>(block.size()),
                &size, &offset, marker == Marker::kSkip ? 1 : 0),
      "config.json does not load");
  if (offset == 0) return std::nullopt;
  return Decoded{block.Part(offset, size), offset, offset != kPayloadOffset};
}

// Deciphers a container in place with the caller's key of 4 to 56 bytes (file_cipher_decode),
// without lookups and for blocks of any size. Returns and changes the same as the function above;
// `prefix` is skipped if the payload begins with it. Throws Error for a key of another length.
inline std::optional<Decoded> DecodeInPlace(ByteSpan block, ConstByteSpan key,
                                            const char* prefix = nullptr) {
  if (key.size() < 4 || key.size() > 56) {
    throw Error("file_cipher_decode", QX_CIPHER_FAILED, "a key has 4 to 56 bytes");
  }
  std::uint32_t size = 0;
  std::uint32_t offset = 0;  // not written unless the block is intact
  file_cipher_decode(block.data(), detail::SizeAs<std::uint32_t>(block.size()), key.data(),
                     static_cast<std::int32_t>(key.size()), &size, &offset, prefix);
  if (offset == 0) return std::nullopt;
  return Decoded{block.Part(offset, size), offset, offset != kPayloadOffset};
}

namespace detail {

// Turns the container's vector into the payload's.
inline Bytes PayloadOf(const char* exportName, std::int32_t result, Bytes container,
                       const std::optional<Decoded>& decoded) {
  if (!decoded) throw Error(exportName, result, "no intact container");
  const std::size_t size = decoded->payload.size();
  container.erase(container.begin(),
                  container.begin() + static_cast<std::ptrdiff_t>(decoded->offset));
  container.resize(size);
  return container;
}

}  // namespace detail

// The payload of a container, deciphered with the key of the string table. Throws as DecodeInPlace
// does, and Error if the block is no intact container.
inline Bytes Decode(Bytes container, Marker marker = Marker::kKeep) {
  const std::optional<Decoded> decoded = DecodeInPlace(container, marker);
  return detail::PayloadOf("QX_Decode", QX_SUCCEEDED, std::move(container), decoded);
}

// The same with the caller's key.
inline Bytes Decode(Bytes container, ConstByteSpan key, const char* prefix = nullptr) {
  const std::optional<Decoded> decoded = DecodeInPlace(container, key, prefix);
  return detail::PayloadOf("file_cipher_decode", QX_CIPHER_FAILED, std::move(container), decoded);
}

// The signature marker and then the data: a payload for Encode. Throws only std::length_error.
inline Bytes Sign(ConstByteSpan data) {
  Bytes payload(QX_GetSignatureSize() + data.size());
  const std::uint8_t nothing = 0;  // an empty span may be null, which the export refuses
  if (QX_SignSignature(payload.data(), detail::SizeAs<std::uint32_t>(payload.size()),
                       data.empty() ? &nothing : data.data(),
                       static_cast<std::uint32_t>(data.size())) == 0) {
    throw Error("QX_SignSignature", 0, "it refused the data");
  }
  return payload;
}

// ---- Starting the client ---------------------------------------------------------------------

// The most bytes that RunClient can put into a container that QX_Decode accepts.
constexpr std::size_t kLargestClientData = 1048510;

enum class DataForm {
  kContainer,  // for ReadClientData: the container's size in 4 bytes, then the container
  kRaw         // the bytes as they are: the client must know their size
};

// QX_CreateProcess: starts the client, keeps the data for it, and waits until it has ended.
// DataForm::kContainer signs and enciphers the data, but makes no container of empty data.
// Throws Error if the client does not start, std::length_error for more than kLargestClientData.
inline void RunClient(const std::string& clientPath, ConstByteSpan data = {},
                      DataForm form = DataForm::kContainer) {
  Bytes block;
  if (form == DataForm::kContainer && !data.empty()) {
    if (data.size() > kLargestClientData) {
      throw std::length_error("launcher_dll: more data than ReadClientData accepts");
    }
    const Bytes container = Encode(Sign(data));
    const auto size = static_cast<std::uint32_t>(container.size());
    block.resize(sizeof size);
    std::memcpy(block.data(), &size, sizeof size);
    block.insert(block.end(), container.begin(), container.end());
    data = block;
  }
  const auto size = detail::SizeAs<std::uint32_t>(data.size());
  detail::CheckSystem(
      "QX_CreateProcess", [&] { return QX_CreateProcess(clientPath.c_str(), data.data(), size); },
      "the client's path is too long");
}

// QX_RightDWORD: removes the last 8 characters from the text and returns their number.
// Throws Error for a shorter text.
inline std::uint32_t TakeRightNumber(std::string& text) {
  std::uint32_t number = 0;
  detail::Check("QX_RightDWORD", QX_RightDWORD(&number, text.data()), "the text is too short");
  text.resize(std::strlen(text.c_str()));
  return number;
}

// QX_RightBinary: the bytes in the last 2 * `count` characters. Throws Error for a shorter text.
inline Bytes RightBytes(const std::string& text, std::size_t count) {
  Bytes bytes(count);
  std::uint8_t nothing = 0;
  const auto size = detail::SizeAs<std::uint32_t>(count);
  detail::Check("QX_RightBinary",
                QX_RightBinary(bytes.empty() ? &nothing : bytes.data(), size, text.c_str(), size),
                "the text is too short");
  return bytes;
}

// QX_RightAddress: the address in the last 8 characters. Throws Error for a shorter text.
inline std::uint32_t RightAddress(const std::string& text) {
  std::uint32_t address = 0;
  detail::Check("QX_RightAddress", QX_RightAddress(&address, text.c_str()),
                "the text is too short");
  return address;
}

// The parts of the client's command line.
struct LaunchLine {
  std::string program;        // everything before the numbers, unchanged
  std::uint32_t processId;    // of the process that called RunClient
  std::uint32_t dataAddress;  // of the data in that process; 0 if there are none
};

// Reads a command line that RunClient made. Throws Error if it is too short.
inline LaunchLine ReadLaunchLine(std::string line) {
  const std::uint32_t address = RightAddress(line);
  TakeRightNumber(line);
  const std::uint32_t processId = TakeRightNumber(line);
  return {std::move(line), processId, address};
}

namespace detail {

// Copies `size` bytes from `address` of the process that called RunClient. Throws Error.
inline void ReadLauncher(std::uint32_t processId, std::uint32_t address, void* buffer,
                         std::size_t size) {
  void* const remote = reinterpret_cast<void*>(std::uintptr_t{address});
  ClearSystemCode();  // a read of only the first bytes sets none on Linux
#if defined(_WIN32)
  struct Close {
    void operator()(void* handle) const noexcept { CloseHandle(handle); }
  };
  constexpr unsigned long kReadMemory = 0x0010;  // PROCESS_VM_READ
  const std::unique_ptr<void, Close> launcher(OpenProcess(kReadMemory, 0, processId));
  const bool isRead = launcher && ReadProcessMemory(launcher.get(), remote, buffer,
                                                    static_cast<unsigned long>(size), nullptr) != 0;
#else
  const iovec to = {buffer, size};
  const iovec from = {remote, size};
  const bool isRead = process_vm_readv(static_cast<int>(processId), &to, 1, &from, 1, 0) ==
                      static_cast<std::ptrdiff_t>(size);
#endif
  if (!isRead) {
    throw Error("ReadClientData", QX_FAILED, "the launcher's memory cannot be read", SystemCode());
  }
}

}  // namespace detail

// In the client: the data that the launcher gave to RunClient, empty if it gave none. `line` is the
// command line or its last argument, main's arguments[1]; null counts as an empty line.
// Looks up the texts that QX_Decode needs. Throws Error if the line is too short, the launcher's
// memory cannot be read, or it does not contain what RunClient makes.
inline Bytes ReadClientData(const char* line) {
  const LaunchLine launch = ReadLaunchLine(line == nullptr ? "" : line);
  if (launch.dataAddress == 0) return {};
  std::uint32_t size = 0;
  detail::ReadLauncher(launch.processId, launch.dataAddress, &size, sizeof size);
  if (size > ContainerSize(QX_GetSignatureSize() + kLargestClientData)) {
    throw Error("ReadClientData", QX_SIZE_REFUSED);
  }
  Bytes container(size);
  detail::ReadLauncher(launch.processId, launch.dataAddress + std::uint32_t{sizeof size},
                       container.data(), size);
  const std::optional<Decoded> decoded = DecodeInPlace(container, Marker::kSkip);
  if (decoded && !decoded->hadMarker) {
    throw Error("ReadClientData", QX_FAILED, "the data are not signed");
  }
  return detail::PayloadOf("QX_Decode", QX_SUCCEEDED, std::move(container), decoded);
}

#if defined(_WIN32)
// QX_CommandLineToArgvA: this process's arguments in the ANSI code page, the program first.
// Throws Error if the system cannot split or convert them, or memory runs out.
inline std::vector<std::string> Arguments() {
  struct Free {
    void operator()(char* block) const noexcept { LocalFree(block); }
  };
  char* block = nullptr;
  std::int32_t count = 0;
  detail::CheckSystem("QX_CommandLineToArgvA",
                      [&] { return QX_CommandLineToArgvA(&block, 0xFFFFFFFF, &count); });
  const std::unique_ptr<char, Free> owner(block);
  std::vector<std::string> arguments;
  for (const char* argument = block; count > 0; --count) {
    argument += arguments.emplace_back(argument).size() + 1;
  }
  return arguments;
}
#endif

// ---- Steam -----------------------------------------------------------------------------------

namespace steam {

// ---- Session and identity

// Owns the session with Steam: QX_SteamAPI_Init and, if that succeeds, QX_SteamAPI_Shutdown.
class Session {
 public:
  Session() noexcept : isUp_(QX_SteamAPI_Init() != 0) {}
  Session(const Session&) = delete;
  Session& operator=(const Session&) = delete;
  ~Session() {
    if (isUp_) QX_SteamAPI_Shutdown();
  }

  // True if Steam started and knows the game.
  bool IsUp() const noexcept { return isUp_; }

 private:
  bool isUp_;
};

// True if the Steam client runs.
inline bool IsRunning() noexcept { return QX_SteamAPI_IsSteamRunning() != 0; }

// True if Steam restarts the game (the export returns 0). Then the caller should end.
inline bool RestartsApp(std::uint32_t appId) noexcept {
  return QX_SteamAPI_RestartAppIfNecessary(appId) == QX_SUCCEEDED;
}

// True if the user is logged on; false without Steam.
inline bool IsLoggedOn() noexcept { return QX_SteamAPI_IsLoggedOn() != 0; }

// The account's identifier; nothing without Steam.
inline std::optional<std::uint64_t> UserId() noexcept {
  const std::uint64_t id = QX_SteamAPI_GetSteamIDConvertToUint64();
  return id == 0 ? std::nullopt : std::optional<std::uint64_t>(id);
}

// The user's name. Throws Error without Steam, for which the export returns success and no name.
inline std::string PersonaName() {
  detail::TextResult read = detail::ReadText(
      QX_SteamAPI_GetPersonaName,
      [](std::int32_t result, const std::string&) { return result == QX_BAD_ARGUMENT; });
  detail::Check("QX_SteamAPI_GetPersonaName", read.result);
  if (!read.isWritten) throw Error("QX_SteamAPI_GetPersonaName", read.result, "no Steam");
  return std::move(read.text);
}

// A new ticket with which a server can identify the user, in upper-case hexadecimal digits.
// Throws Error if Steam is missing or gives no ticket.
inline std::string AuthTicket() {
  // One call with room for the longest ticket, since each call requests a new one.
  std::string ticket(2049, '\0');
  const std::int32_t length =
      QX_SteamAPI_GetSteamAuthTicket(ticket.data(), static_cast<std::uint32_t>(ticket.size()));
  if (length < 0) throw Error("QX_SteamAPI_GetSteamAuthTicket", length);
  ticket.resize(static_cast<std::size_t>(length));
  return ticket;
}

// The list of the game's languages. Throws Error before a Session is up.
inline std::string AvailableLanguages() {
  detail::TextResult read =
      detail::ReadText(QX_SteamAPI_GetAvailableGameLanguages, detail::IsEmptySuccess);
  detail::Check("QX_SteamAPI_GetAvailableGameLanguages", read.result);
  return std::move(read.text);
}

// The game's current language; empty if Steam knows none, for which the export returns
// QX_NOT_FOUND. Throws Error before a Session is up.
inline std::string CurrentLanguage() {
  detail::TextResult read = detail::ReadText(
      QX_SteamAPI_GetCurrentGameLanguage,
      [](std::int32_t result, const std::string&) { return result == QX_OUT_OF_MEMORY; });
  if (read.result == QX_NOT_FOUND) return {};
  detail::Check("QX_SteamAPI_GetCurrentGameLanguage", read.result);
  return std::move(read.text);
}

// ---- The user's files on this machine

// The path of the user's folder. Throws Error if Steam is missing or refuses.
inline std::string UserFolder() {
  detail::TextResult read = detail::ReadText(
      [](char* destination, std::uint32_t capacity) {
        return QX_SteamAPI_GetUserDataFolder(destination, static_cast<std::int32_t>(capacity));
      },
      [](std::int32_t result, const std::string&) { return result == 0; });
  // This export returns 1 for success and 0 if Steam refuses.
  if (read.result != 1 || !read.isWritten) {
    throw Error("QX_SteamAPI_GetUserDataFolder", read.result,
                read.result < 0 ? "" : "Steam gives no folder");
  }
  return std::move(read.text);
}

// The path of a file in the user's folder; the file need not exist. Throws Error if Steam is
// missing or gives no folder, or the path has more than 259 characters.
inline std::string UserFilePath(const std::string& fileName) {
  char path[260];
  detail::Check("QX_SteamAPI_CatUserFilePath",
                QX_SteamAPI_CatUserFilePath(path, sizeof path, fileName.c_str()));
  return path;
}

// True if the user's folder has a file or folder of that name; false without Steam.
inline bool UserFileExists(const std::string& fileName) noexcept {
  return QX_SteamAPI_IsFileExist(fileName.c_str()) != 0;
}

// The content of a file in the user's folder, at most `largestSize` bytes. Throws Error for every
// result of QX_SteamAPI_ReadFile except 0; an empty file counts as unreadable.
inline Bytes ReadUserFile(const std::string& fileName, std::size_t largestSize = 0x4000000) {
  const auto read = [&fileName](Bytes& buffer) {
    return QX_SteamAPI_ReadFile(fileName.c_str(), buffer.data(),
                                detail::SizeAs<std::uint32_t>(buffer.size()));
  };
  constexpr const char* kExport = "QX_SteamAPI_ReadFile";
  for (std::size_t capacity = 0x10000;; capacity *= 2) {
    Bytes first(capacity < largestSize ? capacity : largestSize, 0x00);
    const ResultCode result = read(first);
    if (result == QX_BAD_ARGUMENT && capacity < largestSize) continue;
    detail::Check(kExport, result);

    // The export does not return the size. A second read into a buffer filled with other bytes
    // finds it: the file ends at the first byte that differs. If the file changed between the
    // reads, a byte differs earlier.
    Bytes second(first.size(), 0xFF);
    detail::Check(kExport, read(second));
    std::size_t size = 0;
    while (size < first.size() && first[size] == second[size]) ++size;
    for (std::size_t i = size; i < first.size(); ++i) {
      if (first[i] != 0x00 || second[i] != 0xFF) {
        throw Error(kExport, result, "the file changed while it was read");
      }
    }
    first.resize(size);
    return first;
  }
}

// Creates or replaces a file in the user's folder. Throws Error for every result of
// QX_SteamAPI_WriteFile except 0, also for empty data.
inline void WriteUserFile(const std::string& fileName, ConstByteSpan data) {
  detail::Check("QX_SteamAPI_WriteFile",
                QX_SteamAPI_WriteFile(fileName.c_str(), data.data(),
                                      detail::SizeAs<std::uint32_t>(data.size())));
}

// ---- The user's files in the cloud

// If Steam is missing or refuses, the functions that read or change something throw Error,
// whichever value the export returns.

// Writes a file. Throws Error for empty data too.
inline void WriteCloudFile(const std::string& name, ConstByteSpan data) {
  detail::Check("QX_SteamAPI_RemoteStorageFileWrite",
                QX_SteamAPI_RemoteStorageFileWrite(name.c_str(), data.data(),
                                                   detail::SizeAs<std::int32_t>(data.size())));
}

// True if the file exists; false without Steam.
inline bool CloudFileExists(const std::string& name) noexcept {
  return QX_SteamAPI_RemoteStorageFileExist(name.c_str()) != 0;
}

// A file's size in bytes; 0 if Steam is missing or knows no such file.
inline std::size_t CloudFileSize(const std::string& name) noexcept {
  const std::int32_t size = QX_SteamAPI_RemoteStorageGetFileSize(name.c_str());
  return size < 0 ? 0 : static_cast<std::size_t>(size);
}

// The bytes of a file that Steam read. Throws Error if Steam is missing or knows no such
// file.
inline Bytes ReadCloudFile(const std::string& name) {
  Bytes content(CloudFileSize(name));
  std::uint8_t nothing = 0;
  const std::int32_t size =
      QX_SteamAPI_RemoteStorageFileRead(name.c_str(), content.empty() ? &nothing : content.data(),
                                        static_cast<std::int32_t>(content.size()));
  if (size < 0) throw Error("QX_SteamAPI_RemoteStorageFileRead", size);
  if (size == 0 && !CloudFileExists(name)) {
    throw Error("QX_SteamAPI_RemoteStorageFileRead", size, "no such file");
  }
  content.resize((std::min)(content.size(), static_cast<std::size_t>(size)));
  return content;
}

// Deletes a file on this machine and in the cloud.
inline void DeleteCloudFile(const std::string& name) {
  detail::Check("QX_SteamAPI_RemoteStorageFileDelete",
                QX_SteamAPI_RemoteStorageFileDelete(name.c_str()));
}

// Removes a file from the cloud and keeps it on this machine.
inline void ForgetCloudFile(const std::string& name) {
  const std::int32_t result = QX_SteamAPI_RemoteStorageFileForget(name.c_str());
  if (result != 1) throw Error("QX_SteamAPI_RemoteStorageFileForget", result);
}

// The names of all files; a name is empty if Steam does not know it.
inline std::vector<std::string> CloudFileNames() {
  const std::int32_t count = QX_SteamAPI_RemoteStorageGetFileCount();
  if (count < 0) throw Error("QX_SteamAPI_RemoteStorageGetFileCount", count);
  std::vector<std::string> names;
  for (std::int32_t index = 0; index < count; ++index) {
    detail::TextResult read = detail::ReadText(
        [index](char* destination, std::uint32_t capacity) {
          return QX_SteamAPI_RemoteStorageGetFileName(index, destination, capacity);
        },
        detail::IsEmptySuccess);
    detail::Check("QX_SteamAPI_RemoteStorageGetFileName", read.result);
    names.push_back(std::move(read.text));
  }
  return names;
}

// True if the user has enabled the cloud; false without Steam.
inline bool IsCloudEnabledForAccount() noexcept {
  return QX_SteamAPI_RemoteStorageIsCloudEnabledForAccount() != 0;
}

// True if the cloud is enabled for the game; false without Steam.
inline bool IsCloudEnabledForApp() noexcept {
  return QX_SteamAPI_RemoteStorageIsCloudEnabledForApp() != 0;
}

// Enables or disables the cloud for the game.
inline void SetCloudEnabledForApp(bool isEnabled) {
  const std::int32_t result = QX_SteamAPI_RemoteStorageSetCloudEnabledForApp(isEnabled ? 1 : 0);
  if (result != 0) {
    throw Error("QX_SteamAPI_RemoteStorageSetCloudEnabledForApp", result, "no Steam");
  }
}

// ---- HTTP

enum class HttpMethod : std::int32_t {
  kGet = 1,
  kHead = 2,
  kPost = 3,
  kPut = 4,
  kDelete = 5,
  kOptions = 6,
  kPatch = 7
};

// Sends a request and prints the response's body to the standard output, also for an HTTP error
// status. Throws Error if Steam is missing or the request fails.
inline void RequestHttp(const std::string& url, HttpMethod method = HttpMethod::kGet,
                        const std::string& contentType = {}, ConstByteSpan body = {}) {
  detail::Check("QX_SteamAPI_HTTPRequest",
                QX_SteamAPI_HTTPRequest(url.c_str(), static_cast<std::int32_t>(method),
                                        contentType.empty() ? nullptr : contentType.c_str(),
                                        body.data(), detail::SizeAs<std::uint32_t>(body.size())));
}

}  // namespace steam

// ---- The host --------------------------------------------------------------------------------

// QX_EnumDisplayMode: an adapter's display modes as JSON text; empty if Direct3D 9 is missing or
// the adapter has no modes. Throws Error for a text of more than 16 MiB.
inline std::string DisplayModes(std::uint32_t adapter = 0) {
  detail::TextResult read = detail::ReadText(
      [adapter](char* buffer, std::uint32_t capacity) {
        return static_cast<std::int32_t>(QX_EnumDisplayMode(adapter, 0, buffer, capacity));
      },
      // If the text does not fit, the export returns 0 and leaves the beginning of it.
      [](std::int32_t length, const std::string& text) { return length == 0 && !text.empty(); },
      0x1000, 0x1000000);
  if (read.result == 0 && read.isWritten) {
    throw Error("QX_EnumDisplayMode", read.result, "the text does not fit");
  }
  return std::move(read.text);
}

// QX_CheckDisplayMode: true if the adapter has exactly this mode; false without Direct3D 9, and for
// sizes above 32,767, of which the export would read only the low 16 bits.
inline bool HasDisplayMode(std::uint32_t width, std::uint32_t height, std::uint32_t refreshRate,
                           std::uint32_t adapter = 0) noexcept {
  return width <= 0x7FFF && height <= 0x7FFF &&
         QX_CheckDisplayMode(adapter, 0, static_cast<std::int32_t>(width),
                             static_cast<std::int32_t>(height), refreshRate) == QX_SUCCEEDED;
}

// QX_CheckCert: true if a server is one of the game's own, by the name in its certificate and its
// host name.
inline bool IsOwnServer(const std::string& certificateName, const std::string& hostName) noexcept {
  return QX_CheckCert(certificateName.c_str(), hostName.c_str()) != 0;
}

// Removes a file; removes a link, not its target. Throws Error if the system refuses.
inline void RemoveFile(const std::string& path) {
  detail::CheckSystem("QX_RemoveFile", [&] { return QX_RemoveFile(path.c_str()); });
}

// QX_RemoveDirectory: removes a folder and its content. Throws Error if the folder did not exist or
// still exists.
inline void RemoveFolder(const std::string& path) {
  detail::CheckSystem(
      "QX_RemoveDirectory", [&] { return QX_RemoveDirectory(path.c_str(), 0); },
      "the path names no folder");
}

// QX_RemoveDirectory: removes the content of a folder and keeps the folder. What cannot be removed
// stays, without an error.
inline void EmptyFolder(const std::string& path) noexcept { QX_RemoveDirectory(path.c_str(), 1); }

}  // namespace launcher_dll

#endif  // C++17
#endif  // LAUNCHER_DLL_HPP_
