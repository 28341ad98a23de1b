// Every export that asks Steam, with a Steam that answers anything.

#include <cstring>
#include <filesystem>

#include "fuzz/fuzzing.h"
#include "launcher_dll.h"
#include "steam/scripted_steam.h"
#include "support/data_file.h"
#include "support/scripted_library.h"

namespace launcher {
namespace {

using fuzz::Bytes;
using fuzz::Require;
using test::SteamScript;

SteamScript& Script() {
  static auto& script = test::LoadScript<SteamScript>(SCRIPTED_STEAM, "GetSteamScript");
  return script;
}

// A random script and what it points to.
struct Answers {
  explicit Answers(FuzzedDataProvider& input) {
    script = SteamScript();
    for (bool* const flag :
         {&script.hasUser, &script.hasFriends, &script.hasApps, &script.hasStorage, &script.hasHttp,
          &script.terminatesFolder, &script.sends, &script.hasContentLength, &script.hasBody}) {
      *flag = input.ConsumeIntegral<std::uint8_t>() % 8 != 7;
    }
    script.answer = input.ConsumeBool();
    script.steamId = input.ConsumeIntegral<std::uint64_t>();
    script.ticketHandle = input.ConsumeIntegral<std::uint8_t>();
    script.request = input.ConsumeIntegral<std::uint8_t>();
    script.number = input.ConsumeIntegral<std::int32_t>();
    const auto ticketSize = input.ConsumeIntegralInRange<std::size_t>(0, 1100);
    script.ticket = test::Pattern(std::min<std::size_t>(ticketSize, 1024));
    const char** const texts[] = {&script.personaName, &script.language, &script.languages,
                                  &script.fileName};
    for (std::size_t i = 0; i < 4; ++i) {
      texts_[i] = fuzz::ConsumeText(input, 40);
      *texts[i] = input.ConsumeIntegral<std::uint8_t>() % 16 != 15 ? texts_[i].c_str() : nullptr;
    }
    script.body = test::BytesOf(input.ConsumeRandomLengthString(200));
    script.contentLength = static_cast<std::uint32_t>(script.body.size());
    if (input.ConsumeIntegral<std::uint8_t>() == 0xFF) script.contentLength = 0xFFFFFFFF;
    // Up to the longest path, and never out of the folder that the fuzzer works in.
    for (int i = input.ConsumeIntegral<std::uint8_t>(); i > 128; --i) folder_ += "\\.";
    const bool hasFolder = input.ConsumeIntegral<std::uint8_t>() % 8 != 7;
    script.folder = hasFolder ? folder_.c_str() : nullptr;
  }

  SteamScript& script = Script();

 private:
  std::string texts_[4];
  std::string folder_ = "user";
};

std::string OrEmpty(const char* text) { return text != nullptr ? text : ""; }

// A capacity that is often just enough, or not, for a text of `length` characters.
std::uint32_t CapacityFor(FuzzedDataProvider& input, std::size_t length) {
  return fuzz::NumberNear(input, static_cast<std::uint32_t>(length + 1)) % 4096;
}

// What an export that copies a text is to do with `text`, which Steam gives. One that does not fit
// leaves an empty one.
template <class Export>
void CheckCopy(Export copy, const char* text, std::uint32_t capacity, ResultCode noRoom) {
  Bytes buffer(capacity, fuzz::kFill);
  const ResultCode result = copy(fuzz::TextAt(buffer), capacity);
  if (capacity == 0) return Require(result == QX_BAD_ARGUMENT, "no capacity");
  const bool fits = text != nullptr && std::strlen(text) < capacity;
  Require(result == (fits ? QX_SUCCEEDED : noRoom), "the result of a copy");
  Require(fuzz::HoldsText(buffer, fits ? text : ""), "the text that is copied");
}

// The same where there is nothing to copy.
template <class Export>
void CheckNoCopy(Export copy, std::uint32_t capacity, ResultCode expected) {
  Bytes buffer(capacity, fuzz::kFill);
  const ResultCode result = copy(fuzz::TextAt(buffer), capacity);
  Require(result == (capacity != 0 ? expected : QX_BAD_ARGUMENT), "the result without a text");
  Require(fuzz::IsUntouched(buffer), "nothing copied");
}

void CheckTicket(const SteamScript& script, std::uint32_t capacity) {
  Bytes buffer(capacity, fuzz::kFill);
  const std::int32_t result = QX_SteamAPI_GetSteamAuthTicket(fuzz::TextAt(buffer), capacity);
  if (!script.hasUser || script.ticketHandle == 0 || capacity <= 2 * script.ticket.size()) {
    Require(result == QX_FAILED && fuzz::IsUntouched(buffer), "no ticket");
    return;
  }
  std::string text;
  for (const std::uint8_t byte : script.ticket) {
    text += "0123456789ABCDEF"[byte >> 4];
    text += "0123456789ABCDEF"[byte & 15];
  }
  Require(result == static_cast<std::int32_t>(text.size()) && fuzz::HoldsText(buffer, text),
          "the ticket's digits");
}

void CheckSession(SteamScript& script, FuzzedDataProvider& input) {
  // What is stored is what the last QX_SteamAPI_Init that got through found.
  SteamScript earlier;
  earlier.hasApps = input.ConsumeBool();
  std::swap(script, earlier);
  QX_SteamAPI_Init();
  std::swap(script, earlier);
  const bool hasApps = script.answer ? script.hasApps : earlier.hasApps;
  const bool isUp = script.answer && script.hasApps;
  Require(QX_SteamAPI_Init() == (isUp ? 1 : 0), "whether Steam is up");
  Require(QX_SteamAPI_IsSteamRunning() == (script.answer ? 1 : 0), "whether it runs");
  Require(QX_SteamAPI_RestartAppIfNecessary(480) == (script.answer ? 0 : QX_FAILED), "a restart");
  Require(QX_SteamAPI_IsLoggedOn() == (script.hasUser && script.answer ? 1 : 0), "logged on");
  Require(QX_SteamAPI_GetSteamIDConvertToUint64() == (script.hasUser ? script.steamId : 0), "id");
  CheckTicket(script, CapacityFor(input, 2 * script.ticket.size()));

  const auto near = [&](const char* text) { return CapacityFor(input, OrEmpty(text).size()); };
  if (script.hasFriends) {
    CheckCopy(QX_SteamAPI_GetPersonaName, script.personaName, near(script.personaName),
              QX_BAD_ARGUMENT);
  } else {
    CheckNoCopy(QX_SteamAPI_GetPersonaName, near(script.personaName), QX_SUCCEEDED);
  }
  if (hasApps) {
    CheckCopy(QX_SteamAPI_GetAvailableGameLanguages, script.languages, near(script.languages),
              QX_SUCCEEDED);
  } else {
    CheckNoCopy(QX_SteamAPI_GetAvailableGameLanguages, near(script.languages), QX_NO_STEAM);
  }
  const auto current = QX_SteamAPI_GetCurrentGameLanguage;
  if (hasApps && !OrEmpty(script.language).empty()) {
    CheckCopy(current, script.language, near(script.language), QX_OUT_OF_MEMORY);
  } else {
    CheckNoCopy(current, near(script.language), hasApps ? QX_NOT_FOUND : QX_NO_STEAM);
  }
  QX_SteamAPI_Shutdown();
  Require(QX_SteamAPI_GetMirvelURL(1, 2, 3) == 0, "a fixed answer");
}

void CheckCloud(const SteamScript& script, FuzzedDataProvider& input) {
  const bool has = script.hasStorage;
  const std::int32_t yes = has && script.answer ? 1 : 0;
  const std::string text = fuzz::ConsumeText(input, 20);
  const char* const name = input.ConsumeIntegral<std::uint8_t>() % 8 != 7 ? text.c_str() : nullptr;
  const std::int32_t named = name != nullptr ? yes : 0;
  const auto size = input.ConsumeIntegral<std::int8_t>();
  Bytes data(128, 'd');
  data.back() = 0;
  const bool isBad = name == nullptr || size <= 0;
  Require(QX_SteamAPI_RemoteStorageFileWrite(name, data.data(), size) == (isBad  ? QX_BAD_ARGUMENT
                                                                          : !has ? QX_NO_STEAM
                                                                                 : yes - 1),
          "writing to the cloud");
  const auto room = static_cast<std::int32_t>(input.ConsumeIntegral<std::uint8_t>() % 128);
  Require(QX_SteamAPI_RemoteStorageFileRead(name, data.data(), room) == (name == nullptr
                                                                             ? QX_BAD_ARGUMENT
                                                                         : has ? script.number
                                                                               : QX_NO_STEAM),
          "reading from the cloud");
  Require(
      QX_SteamAPI_RemoteStorageFileDelete(name) == (name == nullptr ? QX_BAD_ARGUMENT : yes - 1),
      "deleting in the cloud");
  Require(QX_SteamAPI_RemoteStorageFileExist(name) == named, "a file that exists");
  Require(QX_SteamAPI_RemoteStorageFileForget(name) == named, "a file to forget");
  Require(
      QX_SteamAPI_RemoteStorageGetFileSize(name) == (has && name != nullptr ? script.number : 0),
      "a file's size");
  Require(QX_SteamAPI_RemoteStorageGetFileCount() == (has ? script.number : QX_FAILED), "count");
  Require(QX_SteamAPI_RemoteStorageIsCloudEnabledForAccount() == yes, "on for the account");
  Require(QX_SteamAPI_RemoteStorageIsCloudEnabledForApp() == yes, "on for the game");
  Require(QX_SteamAPI_RemoteStorageSetCloudEnabledForApp(size) == (has ? 0 : 1), "switching");

  const auto copyName = [&](char* destination, std::uint32_t offered) {
    return QX_SteamAPI_RemoteStorageGetFileName(size, destination, offered);
  };
  const std::uint32_t capacity = CapacityFor(input, OrEmpty(script.fileName).size());
  if (has) {
    CheckCopy(copyName, script.fileName, capacity, QX_SUCCEEDED);
  } else {
    CheckNoCopy(copyName, capacity, QX_FAILED);
  }
}

// The path that the folder and a name make within `capacity`; empty where they make none.
std::string PathOf(const SteamScript& script, const std::string& name, std::size_t capacity) {
  if (script.folder == nullptr || !script.terminatesFolder) return "";
  const std::string folder = script.folder;
  const std::string path = folder + '\\' + name;
  return path.size() < capacity ? path : "";
}

void CheckFiles(const SteamScript& script, FuzzedDataProvider& input) {
  namespace fs = std::filesystem;
  fs::remove_all("user");
  fs::create_directories("user/folder");
  test::WriteFile("user/empty", "");
  const char* const names[] = {"file", "empty", "folder", "folder\\file", "none\\file", ".", "a b"};
  const auto choice = input.ConsumeIntegral<std::uint8_t>();
  std::string name = names[choice % 7];
  if (choice >= 0xE0) name = std::string(choice, 'n');
  const Bytes data = test::Pattern(input.ConsumeIntegralInRange<std::size_t>(0, 100));
  const bool isFile = choice < 0xE0 && (choice % 7 < 2 || choice % 7 == 3 || choice % 7 == 6);

  // The path itself.
  const auto capacity = static_cast<std::int32_t>(
      CapacityFor(input, OrEmpty(script.folder).size() + 1 + name.size()));
  Bytes buffer(static_cast<std::size_t>(capacity), fuzz::kFill);
  const std::string path = PathOf(script, name, buffer.size());
  const ResultCode result =
      QX_SteamAPI_CatUserFilePath(fuzz::TextAt(buffer), capacity, name.c_str());
  if (capacity == 0) {
    Require(result == QX_BAD_ARGUMENT, "a path without capacity");
  } else if (!script.hasUser) {
    Require(result == QX_NO_STEAM && fuzz::IsUntouched(buffer), "a path without Steam");
  } else {
    Require(result == (path.empty() ? QX_FAILED : QX_SUCCEEDED), "whether there is a path");
    if (!path.empty()) Require(std::strcmp(fuzz::TextAt(buffer), path.c_str()) == 0, "the path");
    if (path.empty() && script.folder != nullptr)
      Require(buffer[0] == 0, "no path is an empty one");
  }
  Bytes folder(buffer.size(), fuzz::kFill);
  const ResultCode given = QX_SteamAPI_GetUserDataFolder(fuzz::TextAt(folder), capacity);
  Require(given == (capacity == 0              ? QX_BAD_ARGUMENT
                    : !script.hasUser          ? QX_NO_STEAM
                    : script.folder == nullptr ? 0
                                               : 1),
          "the folder");

  // A file there: written, found and read.
  const std::string whole = PathOf(script, name, 260);
  const bool hasPath = script.hasUser && !whole.empty();
  const ResultCode noPath = !script.hasUser ? QX_NO_STEAM : QX_FAILED;
  const auto size = static_cast<std::uint32_t>(data.size());
  const std::uint8_t none = 0;
  const ResultCode wrote =
      QX_SteamAPI_WriteFile(name.c_str(), data.empty() ? &none : data.data(), size);
  const bool isWritten = size != 0 && hasPath && (isFile || choice >= 0xE0);
  Require(wrote == (size == 0   ? QX_BAD_ARGUMENT
                    : !hasPath  ? noPath
                    : isWritten ? QX_SUCCEEDED
                                : QX_OPEN_FAILED),
          "writing a file");
  std::string native = whole;
  std::replace(native.begin(), native.end(), '\\', '/');
  const bool exists = hasPath && fs::exists(native);
  Require(!isWritten || test::BytesOf(test::ReadFile(native)) == data, "what is written");
  Require(QX_SteamAPI_IsFileExist(name.c_str()) == (exists ? 1 : 0), "whether there is a file");

  Bytes read(CapacityFor(input, data.size()) % 200, fuzz::kFill);
  const ResultCode got =
      QX_SteamAPI_ReadFile(name.c_str(), read.data(), static_cast<std::uint32_t>(read.size()));
  if (read.empty()) return Require(got == QX_BAD_ARGUMENT, "reading nothing");
  if (!hasPath || !exists) {
    Require(got == (hasPath ? QX_NOT_FOUND : noPath), "reading what is not there");
  } else if (fs::is_regular_file(native)) {
    const std::string content = test::ReadFile(native);
    Require(got == (content.empty()                ? QX_READ_FAILED
                    : content.size() > read.size() ? QX_BAD_ARGUMENT
                                                   : QX_SUCCEEDED),
            "reading a file");
    if (got == QX_SUCCEEDED) {
      Require(std::equal(
                  content.begin(), content.end(), read.begin(),
                  [](char c, std::uint8_t byte) { return static_cast<std::uint8_t>(c) == byte; }) &&
                  fuzz::IsUntouched(read, content.size()),
              "read(write(x)) == x");
      return;
    }
  } else {
    Require(got < 0, "a folder is no file");
  }
  Require(fuzz::IsUntouched(read), "nothing read on failure");
}

void CheckHttp(const SteamScript& script, FuzzedDataProvider& input) {
  const std::string url = fuzz::ConsumeText(input, 20);
  const auto choice = input.ConsumeIntegral<std::uint8_t>();
  const std::int32_t method = choice % 9;
  const char* const type = choice % 2 == 0 ? "text/plain" : nullptr;
  const Bytes body = test::BytesOf(fuzz::ConsumeText(input, 20));
  const bool hasUrl = choice < 0xF0;
  Script().calls.clear();
  ResultCode result = 1;
  const std::string printed = fuzz::PrintedTo(stdout, [&] {
    result = QX_SteamAPI_HTTPRequest(hasUrl ? url.c_str() : nullptr, method, type, body.data(),
                                     static_cast<std::uint32_t>(body.size()));
  });
  const bool isWhole = script.request != 0 && script.sends && script.hasContentLength;
  const bool isTooLarge = script.contentLength == 0xFFFFFFFF;
  const ResultCode expected = !script.hasHttp  ? QX_NO_STEAM
                              : !hasUrl        ? QX_BAD_ARGUMENT
                              : !isWhole       ? QX_NO_STEAM
                              : isTooLarge     ? QX_OUT_OF_MEMORY
                              : script.hasBody ? QX_SUCCEEDED
                                               : QX_NO_STEAM;
  Require(result == expected, "the result of a request");
  const std::string text(script.body.begin(), script.body.end());
  Require(
      printed == (result == QX_SUCCEEDED ? "Response: " + std::string(text.c_str()) + "\n" : ""),
      "what a request prints");
  const auto& calls = script.calls;
  const auto count = [&](const std::string& start) {
    return std::count_if(calls.begin(), calls.end(), [&](const std::string& call) {
      return call.compare(0, start.size(), start) == 0;
    });
  };
  const bool isMade = script.hasHttp && hasUrl;
  const bool isOpen = isMade && script.request != 0;
  Require(count("Create ") == (isMade ? 1 : 0), "one request");
  Require(count("Release ") == (isOpen ? 1 : 0), "which is released");
  Require(!isOpen || calls.back().compare(0, 8, "Release ") == 0, "at the end");
  Require(count("SetBody ") == (isOpen && method == 3 && type != nullptr && !body.empty() ? 1 : 0),
          "whether a body is sent");
}

}  // namespace
}  // namespace launcher

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace launcher;
  FuzzedDataProvider input(data, size);
  const auto which = input.ConsumeIntegral<std::uint8_t>();
  const Answers answers(input);
  if (which % 4 == 0) CheckSession(answers.script, input);
  if (which % 4 == 1) CheckCloud(answers.script, input);
  if (which % 4 == 2) CheckHttp(answers.script, input);
  if (which % 4 == 3) CheckFiles(answers.script, input);
  return 0;
}
