/* The user's files, on this machine and in the cloud. */

#include "each.h"

/* [QX_SteamAPI_GetUserDataFolder] */
static Outcome ShowFolder(void) {
  char folder[260];
  const ResultCode result = QX_SteamAPI_GetUserDataFolder(folder, sizeof folder);
  if (result == QX_NO_STEAM) return kNoSteam;
  if (result != 1) return kFailed; /* here 1 is success and 0 is a failure */
  printf("the user's files are in %s\n", folder);
  return kDone;
}
/* [QX_SteamAPI_GetUserDataFolder] */

/* [QX_SteamAPI_CatUserFilePath] */
static Outcome ShowPath(void) {
  char path[260];
  const ResultCode result = QX_SteamAPI_CatUserFilePath(path, sizeof path, "save.txt");
  if (result == QX_NO_STEAM) return kNoSteam;
  if (result != QX_SUCCEEDED) return kFailed;
  printf("the game is kept in %s\n", path);
  return kDone;
}
/* [QX_SteamAPI_CatUserFilePath] */

/* [QX_SteamAPI_WriteFile] */
static Outcome SaveGame(void) {
  const char game[] = "level=7;coins=120";
  const ResultCode result = QX_SteamAPI_WriteFile("save.txt", game, sizeof game);
  if (result == QX_NO_STEAM) return kNoSteam;
  if (result == QX_WRITE_FAILED) fprintf(stderr, "is the disk full?\n");
  return result == QX_SUCCEEDED ? kDone : kFailed;
}
/* [QX_SteamAPI_WriteFile] */

/* [QX_SteamAPI_IsFileExist] */
static Outcome LookForGame(void) {
  if (QX_SteamAPI_IsFileExist("save.txt") != 1) return kNoSteam; /* or a new player */
  return QX_SteamAPI_IsFileExist("no such file") == 0 ? kDone : kFailed;
}
/* [QX_SteamAPI_IsFileExist] */

/* [QX_SteamAPI_ReadFile] */
static Outcome LoadGame(void) {
  char game[256] = ""; /* the file's size is not returned: the zero bytes show where it ends */
  const ResultCode result = QX_SteamAPI_ReadFile("save.txt", game, sizeof game - 1);
  if (result == QX_NO_STEAM) return kNoSteam;
  if (result != QX_SUCCEEDED) return kFailed; /* QX_NOT_FOUND: a new player */
  return strcmp(game, "level=7;coins=120") == 0 ? kDone : kFailed;
}
/* [QX_SteamAPI_ReadFile] */

/* [QX_SteamAPI_RemoteStorageIsCloudEnabledForAccount] */
static Outcome AskForCloudOfAccount(void) {
  if (QX_SteamAPI_RemoteStorageIsCloudEnabledForAccount() == 1) return kDone;
  printf("files stay on this machine: the cloud is off in Steam\n");
  return kNoSteam;
}
/* [QX_SteamAPI_RemoteStorageIsCloudEnabledForAccount] */

/* [QX_SteamAPI_RemoteStorageIsCloudEnabledForApp] */
static Outcome AskForCloudOfGame(void) {
  if (QX_SteamAPI_RemoteStorageIsCloudEnabledForApp() == 1) return kDone;
  printf("files stay on this machine: the cloud is off for the game\n");
  return kNoSteam;
}
/* [QX_SteamAPI_RemoteStorageIsCloudEnabledForApp] */

/* [QX_SteamAPI_RemoteStorageSetCloudEnabledForApp] */
static Outcome SwitchCloudOn(void) {
  /* Inverted result: 0 is success, and 1 means that there is no Steam. */
  if ((uint8_t)QX_SteamAPI_RemoteStorageSetCloudEnabledForApp(1) != 0) return kNoSteam;
  return QX_SteamAPI_RemoteStorageIsCloudEnabledForApp() == 1 ? kDone : kFailed;
}
/* [QX_SteamAPI_RemoteStorageSetCloudEnabledForApp] */

/* [QX_SteamAPI_RemoteStorageFileWrite] */
static Outcome SaveToCloud(void) {
  const ResultCode result = QX_SteamAPI_RemoteStorageFileWrite("each.txt", "level=7", 7);
  if (result == QX_NO_STEAM) return kNoSteam;
  if (result == QX_FAILED) fprintf(stderr, "is the user's cloud full?\n");
  return result == QX_SUCCEEDED ? kDone : kFailed;
}
/* [QX_SteamAPI_RemoteStorageFileWrite] */

/* [QX_SteamAPI_RemoteStorageFileExist] */
static Outcome LookInCloud(void) {
  if (QX_SteamAPI_RemoteStorageFileExist("each.txt") != 1) return kNoSteam; /* or no such file */
  return QX_SteamAPI_RemoteStorageFileExist("no such file") == 0 ? kDone : kFailed;
}
/* [QX_SteamAPI_RemoteStorageFileExist] */

/* [QX_SteamAPI_RemoteStorageGetFileSize] */
static Outcome MeasureCloudFile(void) {
  const int32_t size = QX_SteamAPI_RemoteStorageGetFileSize("each.txt");
  if (size == 0) return kNoSteam; /* or no such file, or an empty one */
  return size == 7 ? kDone : kFailed;
}
/* [QX_SteamAPI_RemoteStorageGetFileSize] */

/* [QX_SteamAPI_RemoteStorageFileRead] */
static Outcome LoadFromCloud(void) {
  char game[64];
  const int32_t size = QX_SteamAPI_RemoteStorageFileRead("each.txt", game, sizeof game);
  if (size == QX_NO_STEAM) return kNoSteam;
  return size == 7 && memcmp(game, "level=7", 7) == 0 ? kDone : kFailed;
}
/* [QX_SteamAPI_RemoteStorageFileRead] */

/* [QX_SteamAPI_RemoteStorageGetFileCount] */
static Outcome CountCloudFiles(void) {
  const int32_t count = QX_SteamAPI_RemoteStorageGetFileCount();
  if (count == QX_FAILED) return kNoSteam;
  printf("%ld files in the cloud\n", (long)count);
  return count >= 1 ? kDone : kFailed;
}
/* [QX_SteamAPI_RemoteStorageGetFileCount] */

/* [QX_SteamAPI_RemoteStorageGetFileName] */
static Outcome ListCloudFiles(void) {
  const int32_t count = QX_SteamAPI_RemoteStorageGetFileCount();
  char name[260] = "";
  for (int32_t i = 0; i < count; ++i) {
    if (QX_SteamAPI_RemoteStorageGetFileName(i, name, sizeof name) != QX_SUCCEEDED) return kFailed;
    printf("file %ld: %s\n", (long)i, name); /* empty: the name did not fit */
  }
  return name[0] != '\0' ? kDone : kNoSteam;
}
/* [QX_SteamAPI_RemoteStorageGetFileName] */

/* [QX_SteamAPI_RemoteStorageFileForget] */
static Outcome TakeOutOfCloud(void) {
  if (QX_SteamAPI_RemoteStorageFileForget("each.txt") != 1) return kNoSteam; /* or no such file */
  return QX_SteamAPI_RemoteStorageFileExist("each.txt") == 1 ? kDone : kFailed; /* still here */
}
/* [QX_SteamAPI_RemoteStorageFileForget] */

/* [QX_SteamAPI_RemoteStorageFileDelete] */
static Outcome DeleteFromCloud(void) {
  if (QX_SteamAPI_RemoteStorageFileDelete("each.txt") != QX_SUCCEEDED) return kNoSteam;
  return QX_SteamAPI_RemoteStorageFileExist("each.txt") == 0 ? kDone : kFailed;
}
/* [QX_SteamAPI_RemoteStorageFileDelete] */

void RunSteamFiles(void) {
  Run("QX_SteamAPI_GetUserDataFolder", ShowFolder);
  Run("QX_SteamAPI_CatUserFilePath", ShowPath);
  Run("QX_SteamAPI_WriteFile", SaveGame);
  Run("QX_SteamAPI_IsFileExist", LookForGame);
  Run("QX_SteamAPI_ReadFile", LoadGame);
  Run("QX_SteamAPI_RemoteStorageIsCloudEnabledForAccount", AskForCloudOfAccount);
  Run("QX_SteamAPI_RemoteStorageIsCloudEnabledForApp", AskForCloudOfGame);
  Run("QX_SteamAPI_RemoteStorageSetCloudEnabledForApp", SwitchCloudOn);
  Run("QX_SteamAPI_RemoteStorageFileWrite", SaveToCloud);
  Run("QX_SteamAPI_RemoteStorageFileExist", LookInCloud);
  Run("QX_SteamAPI_RemoteStorageGetFileSize", MeasureCloudFile);
  Run("QX_SteamAPI_RemoteStorageFileRead", LoadFromCloud);
  Run("QX_SteamAPI_RemoteStorageGetFileCount", CountCloudFiles);
  Run("QX_SteamAPI_RemoteStorageGetFileName", ListCloudFiles);
  Run("QX_SteamAPI_RemoteStorageFileForget", TakeOutOfCloud);
  Run("QX_SteamAPI_RemoteStorageFileDelete", DeleteFromCloud);
}
