/* Results, memory, settings and texts, and functions with fixed results. */

#include "each.h"

/* [QX_IsFailed] */
static Outcome ReportFailure(void) {
  char text[64];
  const ResultCode result = QX_LoadString(99999, text, sizeof text); /* there is no such label */
  if (!QX_IsFailed(result)) return kFailed;
  printf("no text 99999: result %ld\n", (long)result);
  return kDone;
}
/* [QX_IsFailed] */

/* [QX_IsSucceeded] */
static Outcome UseOnSuccess(void) {
  char vendor[128];
  if (!QX_IsSucceeded(QX_LoadString(0, vendor, sizeof vendor))) return kFailed;
  printf("made by %s\n", vendor);
  return kDone;
}
/* [QX_IsSucceeded] */

/* [QX_Allocate] */
static Outcome TakeMemory(void) {
  void* block = NULL;
  if (QX_Allocate(&block, 4096) != QX_SUCCEEDED) return kFailed;
  const uint8_t* const bytes = block;
  const int isZero = bytes[0] == 0 && bytes[4095] == 0; /* the library sets all bytes to 0 */
  QX_Deallocate(block);
  return isZero ? kDone : kFailed;
}
/* [QX_Allocate] */

/* [QX_Deallocate] */
static Outcome GiveMemoryBack(void) {
  void* block = NULL;
  const ResultCode taken = QX_Allocate(&block, 16);
  /* Null is allowed, so a failure needs no branch of its own. */
  if (QX_Deallocate(block) != QX_SUCCEEDED) return kFailed;
  return taken == QX_SUCCEEDED ? kDone : kFailed;
}
/* [QX_Deallocate] */

/* [QX_LoadString] */
static Outcome CopySetting(void) {
  char server[256];
  const ResultCode result = QX_LoadString(1001, server, sizeof server); /* Api_server */
  if (result == QX_FAILED) fprintf(stderr, "config.json does not load\n");
  if (result != QX_SUCCEEDED) return kFailed;
  printf("the game's server is %s\n", server);
  return kDone;
}
/* [QX_LoadString] */

/* [QX_LoadStringToMemory] */
static Outcome CopySettingOfAnyLength(void) {
  char* url = NULL;
  if (QX_LoadStringToMemory(1240, &url) != QX_SUCCEEDED) return kFailed; /* Download_url */
  printf("downloads come from %s\n", url);
  QX_UnloadStringFromMemory(&url);
  return kDone;
}
/* [QX_LoadStringToMemory] */

/* [QX_UnloadStringFromMemory] */
static Outcome FreeText(void) {
  char* text = NULL;
  if (QX_LoadStringToMemory(10, &text) != QX_SUCCEEDED) return kFailed;
  if (QX_UnloadStringFromMemory(&text) != QX_SUCCEEDED) return kFailed;
  return text == NULL ? kDone : kFailed; /* so that a second call does no harm */
}
/* [QX_UnloadStringFromMemory] */

/* [QX_GetLengthOfRString] */
static Outcome MeasureText(void) {
  const uint32_t capacity = QX_GetLengthOfRString(5100) + 1; /* Game_url, and its terminator */
  char* const url = malloc(capacity);
  if (url == NULL) return kFailed;
  const ResultCode result = QX_LoadString(5100, url, capacity);
  free(url);
  return result == QX_SUCCEEDED ? kDone : kFailed;
}
/* [QX_GetLengthOfRString] */

/* [QX_GetSystemInformation] */
static Outcome ShowLibrary(void) {
  SystemInformation library;
  if (QX_GetSystemInformation(&library, sizeof library) != QX_SUCCEEDED) return kFailed;
  /* The fields are filled up with zero bytes, but a full one has no terminator. */
  printf("%.32s by %.128s\n", library.buildName, library.vendorName);
  return library.numbers[1] == 2 ? kDone : kFailed;
}
/* [QX_GetSystemInformation] */

/* [QX_IsStaging] */
static Outcome TestSettings(void) {
  if (QX_IsStaging() == 1) return kDone;
  /* QX_IsStaging has printed the reason to the standard error stream. */
  fprintf(stderr, "config.json does not load: correct it, or delete it for the defaults\n");
  return kFailed;
}
/* [QX_IsStaging] */

/* [QX_ExistClient] */
static Outcome AskForClient(void) {
  /* Always 1. Only the low 8 bits of the result are defined, hence the cast. */
  return (uint8_t)QX_ExistClient() == 1 ? kDone : kFailed;
}
/* [QX_ExistClient] */

/* [QX_Unzip] */
static Outcome UnpackNothing(void) {
  /* Nothing is unpacked: only the last three arguments are tested against 0. */
  if (QX_Unzip(0, 1, 1, 1) != QX_SUCCEEDED) return kFailed;
  return QX_Unzip(1, 0, 1, 1) == QX_BAD_ARGUMENT ? kDone : kFailed;
}
/* [QX_Unzip] */

/* [QX_SteamAPI_GetMirvelURL] */
static Outcome AskForUrl(void) {
  /* Always 0, with Steam and without. The arguments are not read. */
  return QX_SteamAPI_GetMirvelURL(0, 0, 0) == 0 ? kDone : kFailed;
}
/* [QX_SteamAPI_GetMirvelURL] */

/* [QX_ResetIllegalValue] */
static Outcome DrawNumber(void) {
  const int32_t drawn = QX_ResetIllegalValue();
  printf("drew %ld\n", (long)drawn);
  return drawn >= 0 ? kDone : kFailed;
}
/* [QX_ResetIllegalValue] */

/* [QX_GetIllegalValue] */
static Outcome KeepNumber(void) {
  const int32_t drawn = QX_ResetIllegalValue();
  return QX_GetIllegalValue() == drawn ? kDone : kFailed; /* the one that was drawn last */
}
/* [QX_GetIllegalValue] */

void RunTextsAndMemory(void) {
  Run("QX_IsFailed", ReportFailure);
  Run("QX_IsSucceeded", UseOnSuccess);
  Run("QX_Allocate", TakeMemory);
  Run("QX_Deallocate", GiveMemoryBack);
  Run("QX_LoadString", CopySetting);
  Run("QX_LoadStringToMemory", CopySettingOfAnyLength);
  Run("QX_UnloadStringFromMemory", FreeText);
  Run("QX_GetLengthOfRString", MeasureText);
  Run("QX_GetSystemInformation", ShowLibrary);
  Run("QX_IsStaging", TestSettings);
  Run("QX_ExistClient", AskForClient);
  Run("QX_Unzip", UnpackNothing);
  Run("QX_SteamAPI_GetMirvelURL", AskForUrl);
  Run("QX_ResetIllegalValue", DrawNumber);
  Run("QX_GetIllegalValue", KeepNumber);
}
