/* Steam's session, and who plays. */

#include "each.h"

/* [QX_SteamAPI_RestartAppIfNecessary] */
static Outcome LetSteamStartTheGame(void) {
  const ResultCode result = QX_SteamAPI_RestartAppIfNecessary(480); /* the game's number */
  if (result == QX_SUCCEEDED) {
    printf("Steam starts the game anew: end here\n");
    return kFailed; /* not expected where this example runs */
  }
  return kDone; /* go on: Steam started this process, or there is no Steam */
}
/* [QX_SteamAPI_RestartAppIfNecessary] */

/* [QX_SteamAPI_IsSteamRunning] */
static Outcome LookForSteam(void) {
  if (QX_SteamAPI_IsSteamRunning() == 1) return kDone;
  printf("start Steam to play with friends\n");
  return kNoSteam;
}
/* [QX_SteamAPI_IsSteamRunning] */

/* [QX_SteamAPI_Init] */
static Outcome StartSteam(void) {
  if (QX_SteamAPI_Init() == 1) return kDone;
  printf("no Steam: the game goes on without\n");
  return kNoSteam;
}
/* [QX_SteamAPI_Init] */

/* [QX_SteamAPI_IsLoggedOn] */
static Outcome AskForLogin(void) {
  if ((uint8_t)QX_SteamAPI_IsLoggedOn() == 1) return kDone;
  printf("log on to Steam first\n");
  return kNoSteam;
}
/* [QX_SteamAPI_IsLoggedOn] */

/* [QX_SteamAPI_GetSteamIDConvertToUint64] */
static Outcome ShowAccount(void) {
  const uint64_t account = QX_SteamAPI_GetSteamIDConvertToUint64();
  if (account == 0) return kNoSteam; /* no account has this number */
  printf("account %lu%09lu\n", (unsigned long)(account / 1000000000),
         (unsigned long)(account % 1000000000)); /* the older runtime cannot print 64 bits */
  return kDone;
}
/* [QX_SteamAPI_GetSteamIDConvertToUint64] */

/* [QX_SteamAPI_GetPersonaName] */
static Outcome GreetUser(void) {
  char name[128] = ""; /* stays empty without Steam; the result is 0 then too */
  if (QX_SteamAPI_GetPersonaName(name, sizeof name) != QX_SUCCEEDED) return kFailed;
  if (name[0] == '\0') return kNoSteam;
  printf("hello %s\n", name);
  return kDone;
}
/* [QX_SteamAPI_GetPersonaName] */

/* [QX_SteamAPI_GetSteamAuthTicket] */
static Outcome TakeTicket(void) {
  char ticket[2 * 1024 + 1]; /* the most that a ticket can take */
  const int32_t length = QX_SteamAPI_GetSteamAuthTicket(ticket, sizeof ticket);
  if (length <= 0) return kNoSteam;
  printf("a ticket of %ld characters for the server\n", (long)length);
  return strlen(ticket) == (size_t)length ? kDone : kFailed;
}
/* [QX_SteamAPI_GetSteamAuthTicket] */

/* [QX_SteamAPI_GetAvailableGameLanguages] */
static Outcome ListLanguages(void) {
  char languages[256] = "";
  const ResultCode result = QX_SteamAPI_GetAvailableGameLanguages(languages, sizeof languages);
  if (result == QX_NO_STEAM) return kNoSteam;
  if (result == QX_SUCCEEDED) printf("the game speaks %s\n", languages);
  return result == QX_SUCCEEDED && languages[0] != '\0' ? kDone : kFailed;
}
/* [QX_SteamAPI_GetAvailableGameLanguages] */

/* [QX_SteamAPI_GetCurrentGameLanguage] */
static Outcome ChooseLanguage(void) {
  char language[64] = "";
  const ResultCode result = QX_SteamAPI_GetCurrentGameLanguage(language, sizeof language);
  if (result == QX_NO_STEAM) return kNoSteam;
  printf("play in %s\n", result == QX_SUCCEEDED ? language : "english");
  return result == QX_SUCCEEDED || result == QX_NOT_FOUND ? kDone : kFailed;
}
/* [QX_SteamAPI_GetCurrentGameLanguage] */

/* [QX_SteamAPI_HTTPRequest] */
static Outcome SendRequest(void) {
  const int32_t kGet = 1;
  /* Prints the response. The result does not depend on its HTTP status. */
  const ResultCode result = QX_SteamAPI_HTTPRequest(serverUrl, kGet, NULL, NULL, 0);
  if (result == QX_NO_STEAM) return kNoSteam; /* or no network, or no such server */
  return result == QX_SUCCEEDED ? kDone : kFailed;
}
/* [QX_SteamAPI_HTTPRequest] */

/* [QX_SteamAPI_Shutdown] */
static Outcome EndSteam(void) {
  QX_SteamAPI_Shutdown();
  if (QX_SteamAPI_Init() != 1) return kNoSteam; /* another session may follow */
  QX_SteamAPI_Shutdown();
  return kDone;
}
/* [QX_SteamAPI_Shutdown] */

void RunSteamSession(void) {
  Run("QX_SteamAPI_RestartAppIfNecessary", LetSteamStartTheGame);
  Run("QX_SteamAPI_IsSteamRunning", LookForSteam);
  Run("QX_SteamAPI_Init", StartSteam);
  Run("QX_SteamAPI_IsLoggedOn", AskForLogin);
  Run("QX_SteamAPI_GetSteamIDConvertToUint64", ShowAccount);
  Run("QX_SteamAPI_GetPersonaName", GreetUser);
  Run("QX_SteamAPI_GetSteamAuthTicket", TakeTicket);
  Run("QX_SteamAPI_GetAvailableGameLanguages", ListLanguages);
  Run("QX_SteamAPI_GetCurrentGameLanguage", ChooseLanguage);
  Run("QX_SteamAPI_HTTPRequest", SendRequest);
}

void RunSteamEnd(void) { Run("QX_SteamAPI_Shutdown", EndSteam); }
