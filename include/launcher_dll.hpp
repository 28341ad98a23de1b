// The C++ face of LauncherDll: launcher_dll.h with owners, spans, strings and one way to fail.
//
// C++17, header only, namespace launcher_dll. Link as for launcher_dll.h, whose texts tell what
// each function prints, reads and leaves behind.
//
// - A call that could not do its work throws Error, with the export's name and its result, whatever
//   that export calls a failure: below zero, 0, 1 or 7. A question is answered with a bool. A size
//   that does not fit the export's argument throws std::length_error, and no call is made.
// - Texts are 8-bit and count up to their first NUL. A buffer that is too small is the wrapper's
//   affair: it asks again with a larger one.
// - Exports that need no wrapper have none: QX_IsFailed and QX_IsSucceeded (see Error),
//   QX_GetLengthOfRString (LoadText tells an empty text from none), QX_GetEncodeDataSize and
//   QX_Encode (EncodeTo makes the same container within a larger range), and those of the header's
//   last section, which do nothing but answer.

#ifndef LAUNCHER_DLL_HPP_
#define LAUNCHER_DLL_HPP_

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
#include <type_traits>
#include <utility>
#include <vector>

#include "launcher_dll.h"

#if defined(_WIN32)
// As <windows.h> declares it, which this header does without: the arguments go back through it.
extern "C" __declspec(dllimport) void* __stdcall LocalFree(void*);
#endif

namespace launcher_dll {

// ---- Failure ---------------------------------------------------------------------------------

// An export could not do its work.
class Error : public std::runtime_error {
 public:
  // `exportName` is a literal; `reason` is for what the result does not tell.
  Error(const char* exportName, std::int32_t result, const char* reason = "")
      : std::runtime_error(Message(exportName, result, reason)),
        exportName_(exportName),
        result_(result) {}

  const char* ExportName() const noexcept { return exportName_; }
  std::int32_t Result() const noexcept { return result_; }

 private:
  static std::string Message(const char* exportName, std::int32_t result, std::string reason) {
    if (reason.empty()) reason = Meaning(result);
    std::string message = std::string(exportName) + " answered " + std::to_string(result);
    return reason.empty() ? message : message + ": " + reason;
  }

  static const char* Meaning(std::int32_t result) {
    switch (result) {
      case QX_FAILED:
        return "it failed";
      case QX_BAD_ARGUMENT:
        return "bad argument";
      case QX_NO_STEAM:
        return "no Steam";
      case QX_NOT_FOUND:
        return "not found";
      case QX_OUT_OF_MEMORY:
        return "out of memory";
      case QX_OPEN_FAILED:
        return "the file could not be opened";
      case QX_WRITE_FAILED:
        return "the file could not be written";
      case QX_READ_FAILED:
        return "the file could not be read, or is empty";
      case QX_SIZE_REFUSED:
        return "size refused";
      default:
        return "";
    }
  }

  const char* exportName_;
  std::int32_t result_;
};

// ---- Spans -----------------------------------------------------------------------------------

// Consecutive items that belong to somebody else.
template <class Item>
class Span {
 public:
  constexpr Span() noexcept = default;
  constexpr Span(Item* data, std::size_t size) noexcept : data_(data), size_(size) {}

  // Of a vector, an array or another span, of `Item` or, for a span of const, of what can be read
  // as such.
  template <class Container,
            class = std::enable_if_t<
                !std::is_same_v<std::remove_cv_t<Container>, Span> &&
                std::is_convertible_v<decltype(std::declval<Container&>().data()), Item*>>>
  constexpr Span(Container& items) noexcept : data_(items.data()), size_(items.size()) {}
  template <class Container,
            class = std::enable_if_t<
                std::is_convertible_v<decltype(std::declval<const Container&>().data()), Item*>>,
            class = std::enable_if_t<std::is_const_v<Item> && !std::is_same_v<Container, Span>>>
  constexpr Span(const Container& items) noexcept : data_(items.data()), size_(items.size()) {}

  constexpr Item* data() const noexcept { return data_; }
  constexpr std::size_t size() const noexcept { return size_; }
  constexpr bool empty() const noexcept { return size_ == 0; }
  constexpr Item* begin() const noexcept { return data_; }
  constexpr Item* end() const noexcept { return data_ + size_; }
  constexpr Item& operator[](std::size_t index) const noexcept { return data_[index]; }

  // The items from `offset` on, `size` of them. Both must lie within.
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

inline void Check(const char* exportName, std::int32_t result) {
  if (result != QX_SUCCEEDED) throw Error(exportName, result);
}

// A size as the export takes it.
template <class Number>
Number SizeAs(std::size_t size) {
  if (size > static_cast<std::size_t>((std::numeric_limits<Number>::max)())) {
    throw std::length_error("launcher_dll: the size does not fit the export's argument");
  }
  return static_cast<Number>(size);
}

// What a call left in a text's buffer.
struct TextAnswer {
  std::int32_t result;
  bool isWritten;
  std::string text;
};

constexpr std::size_t kFirstCapacity = 256;
constexpr std::size_t kLargestCapacity = 0x10000;

// Asks with larger and larger buffers as long as `isTooSmall(result, text)`, and gives the last
// answer. A buffer that was not written is told by the terminator that it lacks.
template <class Call, class IsTooSmall>
TextAnswer AskForText(Call call, IsTooSmall isTooSmall, std::size_t capacity = kFirstCapacity,
                      std::size_t largestCapacity = kLargestCapacity) {
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

// For exports that leave an empty text where one does not fit.
inline bool IsEmptySuccess(std::int32_t result, const std::string& text) {
  return result == QX_SUCCEEDED && text.empty();
}

}  // namespace detail

// ---- Memory ----------------------------------------------------------------------------------

// A block of the library's memory: QX_Allocate, and QX_Deallocate at the end.
class Block {
 public:
  // `size` zero bytes. Throws Error for a size of 0, and where memory ran out.
  explicit Block(std::size_t size) : size_(size) {
    void* block = nullptr;
    detail::Check("QX_Allocate", QX_Allocate(&block, detail::SizeAs<std::uint32_t>(size)));
    data_.reset(static_cast<std::uint8_t*>(block));
  }

  std::uint8_t* data() const noexcept { return data_.get(); }
  std::size_t size() const noexcept { return size_; }

  // Gives the block away: whoever takes it calls QX_Deallocate.
  std::uint8_t* Release() noexcept {
    size_ = 0;
    return data_.release();
  }

 private:
  struct Deallocate {
    void operator()(std::uint8_t* block) const noexcept { QX_Deallocate(block); }
  };
  std::unique_ptr<std::uint8_t, Deallocate> data_;
  std::size_t size_;
};

// ---- Settings and texts ----------------------------------------------------------------------

// A text of the string table in the library's memory: QX_LoadStringToMemory, and
// QX_UnloadStringFromMemory at the end.
class Text {
 public:
  // Throws Error for a label outside the table, settings that do not load, memory that ran out.
  explicit Text(StringLabel label) {
    char* text = nullptr;
    detail::Check("QX_LoadStringToMemory", QX_LoadStringToMemory(label, &text));
    text_.reset(text);
  }

  const char* CString() const noexcept { return text_.get(); }
  std::string_view View() const noexcept { return text_.get(); }

 private:
  struct Unload {
    void operator()(char* text) const noexcept { QX_UnloadStringFromMemory(&text); }
  };
  std::unique_ptr<char, Unload> text_;
};

// A text of the string table, as a string of the caller's. Throws as Text does.
inline std::string LoadText(StringLabel label) { return std::string(Text(label).View()); }

// QX_IsStaging: true if "config.json" loads; if not, the reason is on the standard error stream.
inline bool SettingsLoad() noexcept { return QX_IsStaging() != 0; }

// What the library is.
struct LibraryInformation {
  std::array<std::uint32_t, 4> numbers;
  std::string buildName;   // empty where its lookup failed
  std::string vendorName;  // likewise
};

// QX_GetSystemInformation. Throws nothing but std::bad_alloc.
inline LibraryInformation ReadLibraryInformation() {
  SystemInformation record = {};
  detail::Check("QX_GetSystemInformation", QX_GetSystemInformation(&record, sizeof record));
  const auto text = [](const char* field, std::size_t size) {
    const void* const end = std::memchr(field, 0, size);
    return std::string(
        field,
        end == nullptr ? size : static_cast<std::size_t>(static_cast<const char*>(end) - field));
  };
  return {{record.numbers[0], record.numbers[1], record.numbers[2], record.numbers[3]},
          text(record.buildName, sizeof record.buildName),
          text(record.vendorName, sizeof record.vendorName)};
}

// ---- The container ---------------------------------------------------------------------------

// Where an intact container's payload begins, marker included.
constexpr std::uint32_t kPayloadOffset = 40;

// The size of the container for a payload, in bytes. Throws Error for a payload of 2 GiB or more.
inline std::uint32_t ContainerSize(std::size_t payloadSize) {
  const std::uint32_t size =
      file_cipher_get_encode_size(detail::SizeAs<std::uint32_t>(payloadSize));
  if (size == 0) throw Error("file_cipher_get_encode_size", 0, "the payload is too large");
  return size;
}

// Makes a container with the built-in key at the front of `output`, and gives the part of `output`
// that it fills. `payload` may lie in `output`, 40 bytes from its start or further.
// Throws Error for an empty payload, an `output` that is too small, no digest to be had.
inline ByteSpan EncodeTo(ByteSpan output, ConstByteSpan payload) {
  const std::uint32_t size = ContainerSize(payload.size());
  // The export cannot test this.
  if (output.size() < size) {
    throw Error("file_cipher_encode", QX_CIPHER_FAILED, "the output is too small");
  }
  detail::Check("file_cipher_encode",
                file_cipher_encode(payload.data(), static_cast<std::uint32_t>(payload.size()),
                                   output.data()));
  return output.Part(0, size);
}

// Makes a container with the built-in key. Throws as EncodeTo does.
inline Bytes Encode(ConstByteSpan payload) {
  Bytes container(ContainerSize(payload.size()));
  EncodeTo(container, payload);
  return container;
}

// An intact container's payload.
struct Decoded {
  ByteSpan payload;      // within the block that was deciphered, without a marker that was skipped
  std::uint32_t offset;  // the payload's distance from the block's start
  bool hadMarker;        // whether a marker was asked for, found and skipped
};

enum class Marker { kKeep, kSkip };

// Deciphers a container in place with the key of the string table (QX_Decode) and gives its
// payload, or nothing for a block that is no intact container. Its bytes from offset 4 on are then
// changed if it looked like one. With Marker::kSkip the signature marker is taken off where there
// is one. Throws Error where a lookup fails, and for a block of 0, or more than 1,048,575 bytes.
inline std::optional<Decoded> DecodeInPlace(ByteSpan block, Marker marker = Marker::kKeep) {
  std::uint32_t size = 0;
  std::uint32_t offset = 0;
  // The export tests for null first, and an empty span may be null: this gives it the same result
  // as any other empty block.
  std::uint8_t nothing = 0;
  detail::Check("QX_Decode", QX_Decode(block.empty() ? &nothing : block.data(),
                                       detail::SizeAs<std::int32_t>(block.size()), &size, &offset,
                                       marker == Marker::kSkip ? 1 : 0));
  if (offset == 0) return std::nullopt;
  return Decoded{block.Part(offset, size), offset, offset != kPayloadOffset};
}

// Deciphers a container in place with a key of the caller's, 4 to 56 bytes (file_cipher_decode),
// and gives its payload, or nothing for a block that is no intact container under that key. It is
// made like the one above: a block may not be intact, and a payload that does not begin with
// `prefix` is given whole. Nothing is looked up, and a block may have any size. Throws Error for a
// key of another length.
inline std::optional<Decoded> DecodeInPlace(ByteSpan block, ConstByteSpan key,
                                            const char* prefix = nullptr) {
  if (key.size() < 4 || key.size() > 56) {
    throw Error("file_cipher_decode", QX_CIPHER_FAILED, "a key has 4 to 56 bytes");
  }
  std::uint32_t size = 0;
  std::uint32_t offset = 0;  // stays so unless the block is intact
  file_cipher_decode(block.data(), detail::SizeAs<std::uint32_t>(block.size()), key.data(),
                     static_cast<std::int32_t>(key.size()), &size, &offset, prefix);
  if (offset == 0) return std::nullopt;
  return Decoded{block.Part(offset, size), offset, offset != kPayloadOffset};
}

namespace detail {

// The payload in the vector that held the container.
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
// does, and Error for a block that is no intact container.
inline Bytes Decode(Bytes container, Marker marker = Marker::kKeep) {
  const std::optional<Decoded> decoded = DecodeInPlace(container, marker);
  return detail::PayloadOf("QX_Decode", QX_SUCCEEDED, std::move(container), decoded);
}

// The payload of a container, deciphered with a key of the caller's. Throws as DecodeInPlace does,
// and Error for a block that is no intact container under that key.
inline Bytes Decode(Bytes container, ConstByteSpan key, const char* prefix = nullptr) {
  const std::optional<Decoded> decoded = DecodeInPlace(container, key, prefix);
  return detail::PayloadOf("file_cipher_decode", QX_CIPHER_FAILED, std::move(container), decoded);
}

// The data behind the signature marker, ready for Encode. Throws std::length_error alone.
inline Bytes Sign(ConstByteSpan data) {
  Bytes payload(QX_GetSignatureSize() + data.size());
  const std::uint8_t nothing = 0;  // the export refuses null, which empty data may be
  if (QX_SignSignature(payload.data(), detail::SizeAs<std::uint32_t>(payload.size()),
                       data.empty() ? &nothing : data.data(),
                       static_cast<std::uint32_t>(data.size())) == 0) {
    throw Error("QX_SignSignature", 0, "refused");
  }
  return payload;
}

// ---- Starting the client ---------------------------------------------------------------------

// QX_CreateProcess: starts the client, leaves the data for it, and waits until it has ended.
// Throws Error where it could not be started.
inline void RunClient(const std::string& clientPath, ConstByteSpan data = {}) {
  detail::Check("QX_CreateProcess", QX_CreateProcess(clientPath.c_str(), data.data(),
                                                     detail::SizeAs<std::uint32_t>(data.size())));
}

// QX_RightDWORD: takes the number in the last 8 characters off the text.
// Throws Error for a shorter text.
inline std::uint32_t TakeRightNumber(std::string& text) {
  std::uint32_t number = 0;
  detail::Check("QX_RightDWORD", QX_RightDWORD(&number, text.data()));
  text.resize(std::strlen(text.c_str()));
  return number;
}

// QX_RightBinary: the bytes in the last 2 * `count` characters. Throws Error for a shorter text.
inline Bytes RightBytes(const std::string& text, std::size_t count) {
  Bytes bytes(count);
  std::uint8_t nothing = 0;
  const auto size = detail::SizeAs<std::uint32_t>(count);
  detail::Check("QX_RightBinary",
                QX_RightBinary(bytes.empty() ? &nothing : bytes.data(), size, text.c_str(), size));
  return bytes;
}

// QX_RightAddress: the address in the last 8 characters. Throws Error for a shorter text.
inline std::uint32_t RightAddress(const std::string& text) {
  std::uint32_t address = 0;
  detail::Check("QX_RightAddress", QX_RightAddress(&address, text.c_str()));
  return address;
}

// What the client's command line tells.
struct LaunchLine {
  std::string program;        // what stands ahead of the numbers, as it stands there
  std::uint32_t processId;    // of the process that called RunClient
  std::uint32_t dataAddress;  // of the data in that process; 0 for none
};

// Reads a command line that RunClient made. Throws Error for one that is too short.
inline LaunchLine ReadLaunchLine(std::string line) {
  const std::uint32_t address = RightAddress(line);
  TakeRightNumber(line);
  const std::uint32_t processId = TakeRightNumber(line);
  return {std::move(line), processId, address};
}

#if defined(_WIN32)
// QX_CommandLineToArgvA: this process's arguments in the ANSI code page, the program first.
// Throws Error where the system could not split or convert them, or memory ran out.
inline std::vector<std::string> Arguments() {
  struct Free {
    void operator()(char* block) const noexcept { LocalFree(block); }
  };
  char* block = nullptr;
  std::int32_t count = 0;
  detail::Check("QX_CommandLineToArgvA", QX_CommandLineToArgvA(&block, 0xFFFFFFFF, &count));
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

// QX_SteamAPI_Init, and QX_SteamAPI_Shutdown at the end if that succeeded.
class Session {
 public:
  Session() noexcept : isUp_(QX_SteamAPI_Init() != 0) {}
  Session(const Session&) = delete;
  Session& operator=(const Session&) = delete;
  ~Session() {
    if (isUp_) QX_SteamAPI_Shutdown();
  }

  // Whether Steam came up and knows the game.
  bool IsUp() const noexcept { return isUp_; }

 private:
  bool isUp_;
};

// Whether the Steam client runs.
inline bool IsRunning() noexcept { return QX_SteamAPI_IsSteamRunning() != 0; }

// Whether Steam starts the game anew, so that the caller should end: the export's 0.
inline bool RestartsApp(std::uint32_t appId) noexcept {
  return QX_SteamAPI_RestartAppIfNecessary(appId) == QX_SUCCEEDED;
}

// Whether the user is logged on; false too without Steam.
inline bool IsLoggedOn() noexcept { return QX_SteamAPI_IsLoggedOn() != 0; }

// The account's identifier; none without Steam.
inline std::optional<std::uint64_t> UserId() noexcept {
  const std::uint64_t id = QX_SteamAPI_GetSteamIDConvertToUint64();
  return id == 0 ? std::nullopt : std::optional<std::uint64_t>(id);
}

// The user's name. Throws Error without Steam, which the export answers with success and no name.
inline std::string PersonaName() {
  detail::TextAnswer answer = detail::AskForText(
      QX_SteamAPI_GetPersonaName,
      [](std::int32_t result, const std::string&) { return result == QX_BAD_ARGUMENT; });
  detail::Check("QX_SteamAPI_GetPersonaName", answer.result);
  if (!answer.isWritten) throw Error("QX_SteamAPI_GetPersonaName", answer.result, "no Steam");
  return std::move(answer.text);
}

// A new ticket by which a server can tell the user, in upper-case hexadecimal digits.
// Throws Error without Steam, and where Steam gives none.
inline std::string AuthTicket() {
  // One call with room for the longest: each takes a ticket.
  std::string ticket(2049, '\0');
  const std::int32_t length =
      QX_SteamAPI_GetSteamAuthTicket(ticket.data(), static_cast<std::uint32_t>(ticket.size()));
  if (length < 0) throw Error("QX_SteamAPI_GetSteamAuthTicket", length);
  ticket.resize(static_cast<std::size_t>(length));
  return ticket;
}

// The list of the languages that the game has. Throws Error before a Session is up.
inline std::string AvailableLanguages() {
  detail::TextAnswer answer =
      detail::AskForText(QX_SteamAPI_GetAvailableGameLanguages, detail::IsEmptySuccess);
  detail::Check("QX_SteamAPI_GetAvailableGameLanguages", answer.result);
  return std::move(answer.text);
}

// The language that the game runs in; empty where Steam tells none, which the export calls not
// found. Throws Error before a Session is up.
inline std::string CurrentLanguage() {
  detail::TextAnswer answer = detail::AskForText(
      QX_SteamAPI_GetCurrentGameLanguage,
      [](std::int32_t result, const std::string&) { return result == QX_OUT_OF_MEMORY; });
  if (answer.result == QX_NOT_FOUND) return {};
  detail::Check("QX_SteamAPI_GetCurrentGameLanguage", answer.result);
  return std::move(answer.text);
}

// ---- The user's files on this machine

// The path of the user's folder. Throws Error without Steam, and where it refuses.
inline std::string UserFolder() {
  detail::TextAnswer answer = detail::AskForText(
      [](char* destination, std::uint32_t capacity) {
        return QX_SteamAPI_GetUserDataFolder(destination, static_cast<std::int32_t>(capacity));
      },
      [](std::int32_t result, const std::string&) { return result == 0; });
  // Here 1 is success, and 0 none.
  if (answer.result != 1 || !answer.isWritten) {
    throw Error("QX_SteamAPI_GetUserDataFolder", answer.result);
  }
  return std::move(answer.text);
}

// The path of a file in the user's folder, whether there is one or not. Throws Error without Steam,
// where it gives no folder, and for a path of more than 259 characters.
inline std::string UserFilePath(const std::string& fileName) {
  char path[260];
  detail::Check("QX_SteamAPI_CatUserFilePath",
                QX_SteamAPI_CatUserFilePath(path, sizeof path, fileName.c_str()));
  return path;
}

// Whether there is a file, or a folder, of that name in the user's folder; false too without Steam.
inline bool UserFileExists(const std::string& fileName) noexcept {
  return QX_SteamAPI_IsFileExist(fileName.c_str()) != 0;
}

// A whole file of the user's folder, of `largestSize` bytes at most. Throws Error for every result
// of QX_SteamAPI_ReadFile but 0; an empty file is one that could not be read.
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

    // The result does not tell the size: read again over other bytes, and the file ends where the
    // two buffers begin to differ. The file may have changed meanwhile, which differs earlier.
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

// Writes a file of the user's folder anew. Throws Error for every result of QX_SteamAPI_WriteFile
// but 0; empty data are a bad argument.
inline void WriteUserFile(const std::string& fileName, ConstByteSpan data) {
  detail::Check("QX_SteamAPI_WriteFile",
                QX_SteamAPI_WriteFile(fileName.c_str(), data.data(),
                                      detail::SizeAs<std::uint32_t>(data.size())));
}

// ---- The user's files in the cloud

// The exports differ in how they tell a refusal and a missing Steam: here what changes or reads
// something throws Error for both, and what is asked answers false.

// Writes a file; empty data are a bad argument.
inline void WriteCloudFile(const std::string& name, ConstByteSpan data) {
  detail::Check("QX_SteamAPI_RemoteStorageFileWrite",
                QX_SteamAPI_RemoteStorageFileWrite(name.c_str(), data.data(),
                                                   detail::SizeAs<std::int32_t>(data.size())));
}

// Whether there is such a file; false too without Steam.
inline bool CloudFileExists(const std::string& name) noexcept {
  return QX_SteamAPI_RemoteStorageFileExist(name.c_str()) != 0;
}

// A file's size in bytes; 0 where Steam knows no such file, and without Steam.
inline std::size_t CloudFileSize(const std::string& name) noexcept {
  const std::int32_t size = QX_SteamAPI_RemoteStorageGetFileSize(name.c_str());
  return size < 0 ? 0 : static_cast<std::size_t>(size);
}

// A whole file: as many bytes as Steam read of the size that it tells. Throws Error without Steam,
// and for a file that is not there.
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
  if (static_cast<std::size_t>(size) < content.size()) {
    content.resize(static_cast<std::size_t>(size));
  }
  return content;
}

// Deletes a file, here and in the cloud.
inline void DeleteCloudFile(const std::string& name) {
  detail::Check("QX_SteamAPI_RemoteStorageFileDelete",
                QX_SteamAPI_RemoteStorageFileDelete(name.c_str()));
}

// Takes a file out of the cloud and keeps it on this machine.
inline void ForgetCloudFile(const std::string& name) {
  const std::int32_t result = QX_SteamAPI_RemoteStorageFileForget(name.c_str());
  if (result != 1) throw Error("QX_SteamAPI_RemoteStorageFileForget", result);
}

// The number of files.
inline std::int32_t CloudFileCount() {
  const std::int32_t count = QX_SteamAPI_RemoteStorageGetFileCount();
  if (count < 0) throw Error("QX_SteamAPI_RemoteStorageGetFileCount", count);
  return count;
}

// The name of the file with that index, from 0 on; empty where Steam knows none.
inline std::string CloudFileName(std::int32_t index) {
  detail::TextAnswer answer = detail::AskForText(
      [index](char* destination, std::uint32_t capacity) {
        return QX_SteamAPI_RemoteStorageGetFileName(index, destination, capacity);
      },
      detail::IsEmptySuccess);
  detail::Check("QX_SteamAPI_RemoteStorageGetFileName", answer.result);
  return std::move(answer.text);
}

// The names of all files.
inline std::vector<std::string> CloudFileNames() {
  std::vector<std::string> names;
  const std::int32_t count = CloudFileCount();
  names.reserve(static_cast<std::size_t>(count));
  for (std::int32_t index = 0; index < count; ++index) names.push_back(CloudFileName(index));
  return names;
}

// Whether the user has the cloud switched on; false too without Steam.
inline bool IsCloudEnabledForAccount() noexcept {
  return QX_SteamAPI_RemoteStorageIsCloudEnabledForAccount() != 0;
}

// Whether the cloud is switched on for the game; false too without Steam.
inline bool IsCloudEnabledForApp() noexcept {
  return QX_SteamAPI_RemoteStorageIsCloudEnabledForApp() != 0;
}

// Switches the cloud on or off for the game.
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

// Sends a request and prints the response's body to the standard output. An HTTP error status is a
// response like any other. Throws Error without Steam, and where Steam could not do it.
inline void RequestHttp(const std::string& url, HttpMethod method = HttpMethod::kGet,
                        const std::string& contentType = {}, ConstByteSpan body = {}) {
  detail::Check("QX_SteamAPI_HTTPRequest",
                QX_SteamAPI_HTTPRequest(url.c_str(), static_cast<std::int32_t>(method),
                                        contentType.empty() ? nullptr : contentType.c_str(),
                                        body.data(), detail::SizeAs<std::uint32_t>(body.size())));
}

}  // namespace steam

// ---- The host --------------------------------------------------------------------------------

// QX_EnumDisplayMode: an adapter's display modes as JSON text; empty without Direct3D 9, and for an
// adapter without modes. Throws Error for a text of more than 16 MiB.
inline std::string DisplayModes(std::uint32_t adapter = 0) {
  detail::TextAnswer answer = detail::AskForText(
      [adapter](char* buffer, std::uint32_t capacity) {
        return static_cast<std::int32_t>(QX_EnumDisplayMode(adapter, 0, buffer, capacity));
      },
      // Where nothing is written there is nothing to tell; else the beginning of a text was.
      [](std::int32_t length, const std::string& text) { return length == 0 && !text.empty(); },
      0x1000, 0x1000000);
  if (answer.result == 0 && answer.isWritten) {
    throw Error("QX_EnumDisplayMode", answer.result, "the text does not fit");
  }
  return std::move(answer.text);
}

// QX_CheckDisplayMode: whether the adapter has exactly this mode; false too without Direct3D 9, and
// for sizes above 32,767, of which the export would read the low 16 bits.
inline bool HasDisplayMode(std::uint32_t width, std::uint32_t height, std::uint32_t refreshRate,
                           std::uint32_t adapter = 0) noexcept {
  return width <= 0x7FFF && height <= 0x7FFF &&
         QX_CheckDisplayMode(adapter, 0, static_cast<std::int32_t>(width),
                             static_cast<std::int32_t>(height), refreshRate) == QX_SUCCEEDED;
}

// QX_CheckCert: whether a server is one of the game's own, by the name in its certificate and the
// name under which it was reached.
inline bool IsOwnServer(const std::string& certificateName, const std::string& hostName) noexcept {
  return QX_CheckCert(certificateName.c_str(), hostName.c_str()) != 0;
}

// Removes a file; of a link, the link. Throws Error where the system refuses.
inline void RemoveFile(const std::string& path) {
  detail::Check("QX_RemoveFile", QX_RemoveFile(path.c_str()));
}

// QX_RemoveDirectory: removes a folder with all that is in it. Throws Error if it is still there
// afterwards, or was not there.
inline void RemoveFolder(const std::string& path) {
  detail::Check("QX_RemoveDirectory", QX_RemoveDirectory(path.c_str(), 0));
}

// QX_RemoveDirectory: removes what is in a folder and keeps the folder. What cannot be removed
// stays, and nothing tells of it.
inline void EmptyFolder(const std::string& path) noexcept { QX_RemoveDirectory(path.c_str(), 1); }

}  // namespace launcher_dll

#endif  // LAUNCHER_DLL_HPP_
