// Calls of all 60 functions, as the reference shows them: each snippet follows a line with the
// names of the functions that it is for.
//
//   example_each CLIENT
//
// CLIENT is started once; files and folders of its own are made in the current directory and
// removed again. Steam may be there or not. Exit status: 0, or 2 for a wrong call.

#include <windows.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <vector>

#include "launcher_dll.h"

namespace {

// [QX_Allocate] [QX_Deallocate] [QX_IsFailed]
void TakeAndGiveBackMemory() {
  void* block = nullptr;
  const ResultCode result = QX_Allocate(&block, 1024);
  if (QX_IsFailed(result) != 0) {
    std::printf("no memory: %d\n", static_cast<int>(result));
    return;
  }
  std::memcpy(block, "all other bytes are zero", 24);
  QX_Deallocate(block);
}

// [QX_LoadString] [QX_IsSucceeded]
void CopyAText() {
  char server[256];
  if (QX_IsSucceeded(QX_LoadString(1001, server, sizeof server)) != 0) {
    std::printf("the game's server is %s\n", server);
  }
}

// [QX_LoadStringToMemory] [QX_UnloadStringFromMemory] [QX_GetLengthOfRString]
void BorrowAText() {
  char* text = nullptr;
  if (QX_LoadStringToMemory(10196, &text) != QX_SUCCEEDED) return;
  const std::uint32_t length = QX_GetLengthOfRString(10196);
  std::printf("%s (%u characters)\n", text, static_cast<unsigned>(length));
  QX_UnloadStringFromMemory(&text);  // text is null now
}

// [QX_GetSystemInformation]
void TellTheLibrary() {
  SystemInformation record;
  if (QX_GetSystemInformation(&record, sizeof record) == QX_SUCCEEDED) {
    std::printf("%s by %s\n", record.buildName, record.vendorName);
  }
}

// [QX_IsStaging]
void TestTheSettings() {
  if (QX_IsStaging() == 0) std::printf("config.json does not load: see the error output\n");
}

// [file_cipher_get_encode_size] [file_cipher_encode] [file_cipher_decode]
void EncipherAndDecipher() {
  const std::uint8_t payload[] = {'H', 'i', '!'};
  std::vector<std::uint8_t> container(file_cipher_get_encode_size(sizeof payload));
  // 0 is success and 7 is failure: QX_IsFailed does not know these results.
  if (file_cipher_encode(payload, sizeof payload, container.data()) != QX_CIPHER_SUCCEEDED) return;

  const std::uint8_t key[] = {'7', 'E', '3', 'A', '9', '0', 'C', '2',
                              'D', '1', 'F', '8', '6', 'B', '4', '5'};
  std::uint32_t size = 0;
  std::uint32_t offset = 0;
  if (file_cipher_decode(container.data(), static_cast<std::uint32_t>(container.size()), key,
                         sizeof key, &size, &offset, nullptr) == QX_CIPHER_SUCCEEDED) {
    std::printf("%u bytes at offset %u\n", static_cast<unsigned>(size),
                static_cast<unsigned>(offset));
  }
}

// [QX_GetSignatureSize] [QX_SignSignature] [QX_GetEncodeDataSize] [QX_Encode] [QX_Decode]
void SignEncodeAndDecode() {
  const std::uint8_t data[] = {1, 2, 3};
  std::vector<std::uint8_t> payload(QX_GetSignatureSize() + sizeof data);
  const auto payloadSize = static_cast<std::uint32_t>(payload.size());
  if (QX_SignSignature(payload.data(), payloadSize, data, sizeof data) == 0) return;

  std::vector<std::uint8_t> container(QX_GetEncodeDataSize(payloadSize));
  if (QX_Encode(container.data(), payload.data(), static_cast<std::int32_t>(payloadSize)) !=
      QX_SUCCEEDED) {
    return;
  }

  std::uint32_t size = 0;
  std::uint32_t offset = 0;
  const ResultCode result =
      QX_Decode(container.data(), static_cast<std::int32_t>(container.size()), &size, &offset, 1);
  // The result tells only whether the call could be carried out: an offset of 0 is a bad container.
  if (result == QX_SUCCEEDED && offset != 0) {
    std::printf("%u bytes behind the marker, at offset %u\n", static_cast<unsigned>(size),
                static_cast<unsigned>(offset));
  }
}

// [QX_CreateProcess]
void StartTheClient(const char* client) {
  const char data[] = "what the client is to know";
  if (QX_CreateProcess(client, data, sizeof data) != QX_SUCCEEDED) {
    std::printf("%s could not be started\n", client);
  }
}

// [QX_RightAddress] [QX_RightDWORD]
void ReadALaunchLine() {
  char line[] = "\"client.exe\" 0000012c00a40000";
  std::uint32_t address = 0;
  std::uint32_t processId = 0;
  // The address stands last; cut it off, and the process id does.
  if (QX_RightAddress(&address, line) == QX_SUCCEEDED &&
      QX_RightDWORD(nullptr, line) == QX_SUCCEEDED &&
      QX_RightDWORD(&processId, line) == QX_SUCCEEDED) {
    std::printf("process %u, address %u\n", static_cast<unsigned>(processId),
                static_cast<unsigned>(address));
  }
}

// [QX_RightBinary]
void ReadBytes() {
  std::uint8_t bytes[4];
  if (QX_RightBinary(bytes, sizeof bytes, "token=0badcafe", 4) == QX_SUCCEEDED) {
    std::printf("the first byte is %u\n", static_cast<unsigned>(bytes[0]));
  }
}

// [QX_CommandLineToArgvA]
void ListArguments() {
  char* block = nullptr;
  std::int32_t count = 0;
  if (QX_CommandLineToArgvA(&block, 32767, &count) != QX_SUCCEEDED) return;
  const char* argument = block;
  for (std::int32_t i = 0; i < count; ++i, argument += std::strlen(argument) + 1) {
    std::printf("argument %d: %s\n", static_cast<int>(i), argument);
  }
  LocalFree(block);
}

// [QX_SteamAPI_RestartAppIfNecessary] [QX_SteamAPI_IsSteamRunning] [QX_SteamAPI_Init]
bool JoinSteam(std::uint32_t appId) {
  // 0 says that Steam starts the game anew; this process then ends.
  if (QX_SteamAPI_RestartAppIfNecessary(appId) == QX_SUCCEEDED) return false;
  if (QX_SteamAPI_IsSteamRunning() == 0) std::printf("please start Steam\n");
  return QX_SteamAPI_Init() != 0;
}

// [QX_SteamAPI_IsLoggedOn] [QX_SteamAPI_GetSteamIDConvertToUint64] [QX_SteamAPI_GetPersonaName]
void TellWhoPlays() {
  if (QX_SteamAPI_IsLoggedOn() == 0) std::printf("nobody is logged on\n");
  if (QX_SteamAPI_GetSteamIDConvertToUint64() == 0) return;  // no Steam
  char name[128] = "";
  if (QX_SteamAPI_GetPersonaName(name, sizeof name) == QX_SUCCEEDED) std::printf("%s\n", name);
}

// [QX_SteamAPI_GetSteamAuthTicket]
void TakeATicket() {
  char ticket[2 * 1024 + 1];
  const std::int32_t length = QX_SteamAPI_GetSteamAuthTicket(ticket, sizeof ticket);
  if (length > 0) std::printf("a ticket of %d digits for the server\n", static_cast<int>(length));
}

// [QX_SteamAPI_GetCurrentGameLanguage] [QX_SteamAPI_GetAvailableGameLanguages]
void TellLanguages() {
  char language[64];
  char all[1024];
  if (QX_SteamAPI_GetCurrentGameLanguage(language, sizeof language) == QX_SUCCEEDED &&
      QX_SteamAPI_GetAvailableGameLanguages(all, sizeof all) == QX_SUCCEEDED) {
    std::printf("%s, one of %s\n", language, all);
  }
}

// [QX_SteamAPI_GetUserDataFolder] [QX_SteamAPI_CatUserFilePath]
void TellThePaths() {
  char path[260];
  // 1 is success here, not 0.
  if (QX_SteamAPI_GetUserDataFolder(path, sizeof path) == 1) std::printf("folder %s\n", path);
  if (QX_SteamAPI_CatUserFilePath(path, sizeof path, "each.bin") == QX_SUCCEEDED) {
    std::printf("file %s\n", path);
  }
}

// [QX_SteamAPI_WriteFile] [QX_SteamAPI_IsFileExist] [QX_SteamAPI_ReadFile]
void KeepAFile() {
  const std::uint8_t data[] = {1, 2, 3};
  if (QX_SteamAPI_WriteFile("each.bin", data, sizeof data) != QX_SUCCEEDED) return;
  std::uint8_t buffer[256];
  if (QX_SteamAPI_IsFileExist("each.bin") != 0 &&
      QX_SteamAPI_ReadFile("each.bin", buffer, sizeof buffer) == QX_SUCCEEDED) {
    std::printf("the file begins with %u\n", static_cast<unsigned>(buffer[0]));
  }
}

// [QX_SteamAPI_RemoteStorageIsCloudEnabledForAccount]
// [QX_SteamAPI_RemoteStorageIsCloudEnabledForApp]
// [QX_SteamAPI_RemoteStorageSetCloudEnabledForApp]
void SwitchTheCloudOn() {
  if (QX_SteamAPI_RemoteStorageIsCloudEnabledForAccount() == 0) return;  // the user's choice
  if (QX_SteamAPI_RemoteStorageIsCloudEnabledForApp() == 0 &&
      QX_SteamAPI_RemoteStorageSetCloudEnabledForApp(1) == 1) {
    std::printf("1 says that nothing was done: no Steam\n");
  }
}

// [QX_SteamAPI_RemoteStorageFileWrite] [QX_SteamAPI_RemoteStorageFileExist]
// [QX_SteamAPI_RemoteStorageGetFileSize] [QX_SteamAPI_RemoteStorageFileRead]
void KeepAFileInTheCloud() {
  const char* const name = "each.sav";
  if (QX_SteamAPI_RemoteStorageFileWrite(name, "saved", 5) != QX_SUCCEEDED) return;
  if (QX_SteamAPI_RemoteStorageFileExist(name) == 0) return;
  const std::int32_t size = QX_SteamAPI_RemoteStorageGetFileSize(name);
  if (size <= 0) return;
  std::vector<char> buffer(static_cast<std::size_t>(size));
  if (QX_SteamAPI_RemoteStorageFileRead(name, buffer.data(), size) == size) {
    std::printf("%.*s\n", static_cast<int>(size), buffer.data());
  }
}

// [QX_SteamAPI_RemoteStorageGetFileCount] [QX_SteamAPI_RemoteStorageGetFileName]
void ListTheCloud() {
  const std::int32_t count = QX_SteamAPI_RemoteStorageGetFileCount();  // -1 without Steam
  for (std::int32_t i = 0; i < count; ++i) {
    char name[260];
    if (QX_SteamAPI_RemoteStorageGetFileName(i, name, sizeof name) == QX_SUCCEEDED) {
      std::printf("%s\n", name);
    }
  }
}

// [QX_SteamAPI_RemoteStorageFileForget] [QX_SteamAPI_RemoteStorageFileDelete]
void DropAFileFromTheCloud() {
  // Forgetting keeps the file on this machine and answers 1; deleting answers 0.
  if (QX_SteamAPI_RemoteStorageFileForget("each.sav") == 1 &&
      QX_SteamAPI_RemoteStorageFileDelete("each.sav") == QX_SUCCEEDED) {
    std::printf("gone here and there\n");
  }
}

// [QX_SteamAPI_HTTPRequest]
void Ask(const char* url) {
  const ResultCode result = QX_SteamAPI_HTTPRequest(url, 1, nullptr, nullptr, 0);  // 1 is GET
  if (result != QX_SUCCEEDED) std::printf("no response: %d\n", static_cast<int>(result));
}

// [QX_SteamAPI_Shutdown]
void LeaveSteam() { QX_SteamAPI_Shutdown(); }

// [QX_EnumDisplayMode] [QX_CheckDisplayMode]
void TellDisplayModes() {
  std::vector<char> json(64 << 10);
  if (QX_EnumDisplayMode(0, 0, json.data(), static_cast<std::uint32_t>(json.size())) == 0) {
    std::printf("no Direct3D here\n");
  }
  if (QX_CheckDisplayMode(0, 0, 1280, 720, 60) != QX_SUCCEEDED) std::printf("no 1280 x 720\n");
}

// [QX_CheckCert]
void TrustAServer(const char* certificateName, const char* hostName) {
  // After the certificate's chain has been checked: this compares names only.
  if (QX_CheckCert(certificateName, hostName) == 0) std::printf("%s is not ours\n", hostName);
}

// [QX_RemoveFile] [QX_RemoveDirectory]
void ClearDownloads(const char* folder, const char* file) {
  if (QX_RemoveFile(file) != QX_SUCCEEDED) std::printf("%s stays\n", file);
  if (QX_RemoveDirectory(folder, 0) != QX_SUCCEEDED) std::printf("%s stays\n", folder);
}

// [QX_ExistClient] [QX_Unzip] [QX_SteamAPI_GetMirvelURL] [QX_GetIllegalValue]
// [QX_ResetIllegalValue]
void CallWhatOlderLaunchersCall() {
  if (QX_ExistClient() == 0 || QX_SteamAPI_GetMirvelURL(0, 0, 0) != 0) return;
  if (QX_Unzip(0, 1, 1, 1) != QX_SUCCEEDED) return;  // it unpacks nothing
  const std::int32_t drawn = QX_ResetIllegalValue();
  if (QX_GetIllegalValue() == drawn) std::printf("the same number until the next reset\n");
}

void UseSteam() {
  if (!JoinSteam(480)) std::printf("no Steam here\n");
  TellWhoPlays();
  TakeATicket();
  TellLanguages();
  TellThePaths();
  KeepAFile();
  SwitchTheCloudOn();
  KeepAFileInTheCloud();
  ListTheCloud();
  DropAFileFromTheCloud();
  Ask("http://127.0.0.1:9/");  // where nobody listens
  LeaveSteam();
}

}  // namespace

int main(int argumentCount, char** arguments) {
  if (argumentCount != 2) {
    std::fprintf(stderr, "usage: example_each CLIENT\n");
    return 2;
  }
  TakeAndGiveBackMemory();
  CopyAText();
  BorrowAText();
  TellTheLibrary();
  TestTheSettings();
  EncipherAndDecipher();
  SignEncodeAndDecode();
  StartTheClient(arguments[1]);
  ReadALaunchLine();
  ReadBytes();
  ListArguments();
  UseSteam();
  TellDisplayModes();
  TrustAServer("*.elsewhere.example", "elsewhere.example");
  std::filesystem::create_directory("each.folder");
  ClearDownloads("each.folder", "each.tmp");
  CallWhatOlderLaunchersCall();
  return 0;
}
