/* Starting the client, and what the client reads from its command line. */

#include "each.h"

/* [QX_CreateProcess] */
static Outcome StartClient(void) {
  /* What example_client expects: the size of a container, then the container with signed data. */
  uint8_t text[22 + 7], data[4 + 76];
  const uint32_t size = QX_GetEncodeDataSize(sizeof text);
  if (size > sizeof data - 4) return kFailed;
  if (!QX_SignSignature(text, sizeof text, (const uint8_t*)"level=7", 7)) return kFailed;
  memcpy(data, &size, 4);
  if (QX_Encode(data + 4, text, sizeof text) != QX_SUCCEEDED) return kFailed;
  /* Returns when the client has ended. */
  return QX_CreateProcess(clientPath, data, sizeof data) == QX_SUCCEEDED ? kDone : kFailed;
}
/* [QX_CreateProcess] */

/* [QX_RightAddress] */
static Outcome ReadAddress(void) {
  const char line[] = "\"client.exe\" 0000123400ABCDEF"; /* the process, then the address */
  uint32_t address = 0;
  if (QX_RightAddress(&address, line) != QX_SUCCEEDED) return kFailed;
  return address == 0x00ABCDEF ? kDone : kFailed;
}
/* [QX_RightAddress] */

/* [QX_RightDWORD] */
static Outcome ReadProcess(void) {
  char line[] = "\"client.exe\" 0000123400ABCDEF";
  uint32_t process = 0;
  if (QX_RightDWORD(NULL, line) != QX_SUCCEEDED) return kFailed; /* cuts the address off */
  if (QX_RightDWORD(&process, line) != QX_SUCCEEDED) return kFailed;
  return process == 0x1234 && strcmp(line, "\"client.exe\" ") == 0 ? kDone : kFailed;
}
/* [QX_RightDWORD] */

/* [QX_RightBinary] */
static Outcome ReadBytes(void) {
  uint8_t bytes[4];
  if (QX_RightBinary(bytes, sizeof bytes, "id=0A1B2C3D", 4) != QX_SUCCEEDED) return kFailed;
  return bytes[0] == 0x0A && bytes[3] == 0x3D ? kDone : kFailed;
}
/* [QX_RightBinary] */

/* [QX_CommandLineToArgvA] */
static Outcome ListArguments(void) {
  static char* arguments; /* kept until the process ends; LocalFree would free it */
  int32_t count = 0;
  if (QX_CommandLineToArgvA(&arguments, 4096, &count) != QX_SUCCEEDED) return kFailed;
  const char* argument = arguments;
  for (int32_t i = 0; i < count; ++i) {
    printf("argument %ld: %s\n", (long)i, argument);
    argument += strlen(argument) + 1; /* the next one follows directly */
  }
  return count > 0 ? kDone : kFailed;
}
/* [QX_CommandLineToArgvA] */

void RunLaunch(void) {
  Run("QX_CreateProcess", StartClient);
  Run("QX_RightAddress", ReadAddress);
  Run("QX_RightDWORD", ReadProcess);
  Run("QX_RightBinary", ReadBytes);
  Run("QX_CommandLineToArgvA", ListArguments);
}
