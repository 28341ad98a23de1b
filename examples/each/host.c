/* The machine. */

#include "each.h"

/* [QX_EnumDisplayMode] */
static Outcome ListDisplayModes(void) {
  static char modes[65536]; /* 65 bytes a mode and 23 more: about a thousand */
  const uint32_t length = QX_EnumDisplayMode(0, 0, modes, sizeof modes);
  if (length == 0) {
    printf("no display modes: no Direct3D 9, or no adapter\n");
    return kDone;
  }
  return strstr(modes, "\"DisplayMode\"") != NULL ? kDone : kFailed;
}
/* [QX_EnumDisplayMode] */

/* [QX_CheckDisplayMode] */
static Outcome CheckWantedMode(void) {
  const ResultCode wanted = QX_CheckDisplayMode(0, 0, 1280, 1024, 60);
  printf("1280 x 1024 at 60 Hz: %s\n", wanted == QX_SUCCEEDED ? "there" : "not there");
  /* No adapter has a mode of 1 x 1. */
  return QX_CheckDisplayMode(0, 0, 1, 1, 60) == QX_BAD_ARGUMENT ? kDone : kFailed;
}
/* [QX_CheckDisplayMode] */

/* [QX_CheckCert] */
static Outcome TrustServer(void) {
  char host[256];
  if (QX_LoadString(5000, host, sizeof host) != QX_SUCCEEDED) return kFailed; /* a server's name */
  if (!QX_CheckCert("any", host)) return kFailed;
  return QX_CheckCert("any", "elsewhere.example") ? kFailed : kDone;
}
/* [QX_CheckCert] */

/* [QX_RemoveFile] */
static Outcome RemoveOldPart(void) {
  FILE* const file = fopen("old.part", "w");
  if (file == NULL || fclose(file) != 0) return kFailed;
  if (QX_RemoveFile("old.part") != QX_SUCCEEDED) return kFailed;
  return QX_RemoveFile("old.part") == QX_FAILED ? kDone : kFailed; /* gone already */
}
/* [QX_RemoveFile] */

/* [QX_RemoveDirectory] */
static Outcome RemoveDownloads(void) {
  /* First only the content: returns 0 even if a file in use stays. Then the directory too. */
  if (QX_RemoveDirectory("downloads", 1) != QX_SUCCEEDED) return kFailed;
  if (QX_RemoveDirectory("downloads", 0) != QX_SUCCEEDED) return kFailed;
  return QX_RemoveDirectory("downloads", 0) == QX_FAILED ? kDone : kFailed; /* gone already */
}
/* [QX_RemoveDirectory] */

void RunHost(void) {
  Run("QX_EnumDisplayMode", ListDisplayModes);
  Run("QX_CheckDisplayMode", CheckWantedMode);
  Run("QX_CheckCert", TrustServer);
  Run("QX_RemoveFile", RemoveOldPart);
  Run("QX_RemoveDirectory", RemoveDownloads);
}
