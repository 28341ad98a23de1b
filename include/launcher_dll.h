/* LauncherDll: the support library of the game's launcher and of the client that it starts.
 *
 * For C and C++. Link with the import library. Without it, load LauncherDll.dll and look up the
 * decorated names. A decorated name is an underscore, the name, an at sign, and the size of the
 * arguments in bytes, 4 for each argument: `_QX_Allocate@8`.
 *
 * On Windows all functions use the stdcall calling convention. They throw no exceptions. The
 * library starts no thread and keeps no pointer of the caller. Text is NUL-terminated, and its
 * bytes are passed on unchanged. A `size` counts bytes that exist, a `capacity` available bytes,
 * including the terminator. Pointers must be valid for what is read or written through them. They
 * must not be null unless the function's comment mentions null.
 *
 * Most functions return a ResultCode, the file_cipher_ functions a CipherCode, and some a truth
 * value or a count. Similar functions can return different results: read the comment of each. */

#ifndef LAUNCHER_DLL_H_
#define LAUNCHER_DLL_H_

#include <stdint.h>

#if defined(_WIN32)
#define QX_CALL __stdcall
#define QX_API
#elif defined(__GNUC__)
#define QX_CALL
#define QX_API __attribute__((visibility("default")))
#else
#define QX_CALL
#define QX_API
#endif

/* The version of this header and of its library, as in the properties of the DLL. */
#define QX_VERSION "1.0.0"

#ifdef __cplusplus
extern "C" {
#endif

/* Zero is success, a negative value a failure. */
typedef int32_t ResultCode;

#define QX_SUCCEEDED 0          /* the call succeeded */
#define QX_FAILED (-1)          /* a system call or a lookup failed, or a text is too short */
#define QX_BAD_ARGUMENT (-2)    /* a null pointer, a zero size, a destination too small */
#define QX_NO_STEAM (-3)        /* a Steam interface is missing, or a Steam request failed */
#define QX_NOT_FOUND (-4)       /* no such string label, no such file */
#define QX_OUT_OF_MEMORY (-5)   /* memory ran out, or a copy to the caller failed */
#define QX_OPEN_FAILED (-1000)  /* a local file could not be opened */
#define QX_WRITE_FAILED (-1001) /* a local file could not be written */
#define QX_READ_FAILED (-1002)  /* a local file could not be read, or is empty */
#define QX_SIZE_REFUSED (-1005) /* a data size outside the range that QX_Decode accepts */

/* 0 is success, 7 is every failure. Compare results with 0: QX_IsFailed does not recognise 7. */
typedef int32_t CipherCode;

#define QX_CIPHER_SUCCEEDED 0 /* the call succeeded */
#define QX_CIPHER_FAILED 7    /* every failure */

/* The number of a text in the string table. The labels are listed below. */
typedef int32_t StringLabel;

/* ---- Results and memory -------------------------------------------------------------------- */

/* Returns 1 if value is negative, else 0. */
QX_API int32_t QX_CALL QX_IsFailed(int32_t value);

/* Returns 1 if value is zero or positive, else 0. */
QX_API int32_t QX_CALL QX_IsSucceeded(int32_t value);

/* Allocates a block of memory, filled with zero bytes.
 *
 * block  receives the block's address, or null if memory ran out; not checked, must not be null
 * size   the block's size in bytes
 *
 * Returns 0; QX_BAD_ARGUMENT if size is 0, and does not write *block; QX_OUT_OF_MEMORY. The caller
 * owns the block and must free it with QX_Deallocate. */
QX_API ResultCode QX_CALL QX_Allocate(void** block, uint32_t size);

/* Frees memory from QX_Allocate or QX_LoadStringToMemory. block may be null. Always returns 0. */
QX_API ResultCode QX_CALL QX_Deallocate(void* block);

/* ---- Settings and texts -------------------------------------------------------------------- */

/* Every lookup of a text first prints a line to the standard output, without flushing it, even if
 * the lookup then fails:
 *
 *     QX_LoadStringToMemory called with label: LABEL
 *
 * Then it loads "config.json" from the current directory:
 *
 * - If the file does not exist, it is created with the defaults, completely or not at all, and the
 *   line "Created default config: config.json" is printed and flushed.
 * - If the file exists but cannot be opened, it is not changed. The defaults are used, and the same
 *   line is printed.
 * - If the file exists, it must contain all twelve settings. Each is a JSON string, "true" and
 *   "false" too. The object "Orvane" has the eight settings that are listed below, the object
 *   "Settings" has game_version, ssl_check, Is_Staging and Is_Shipping. If a setting is missing or
 *   wrong, every lookup fails, even that of a fixed text. The file is not changed. QX_IsStaging
 *   prints the reason.
 *
 * Nothing is cached: a change of the file takes effect at the next lookup.
 *
 * Labels of settings: 1001 Api_server, 1200 Orvane_server, 1210 Purchase_server,
 * 1220 Telemetry_server, 1240 Download_url, 5000 Orvane_qa_api_url, 5001 Orvane_ci_api_url,
 * 5100 Game_url.
 *
 * Labels of fixed texts: 0 vendor, 10 build, 1000 HTTP method, 1011 content type, 1012 and 1014
 * header names, 1100 to 1102 request templates, 2000 to 2018, 10023, 10194, 10196 and 10239
 * messages, 11000 cipher key, 11001 signature marker. */

/* Copies a text into the caller's buffer.
 *
 * label        the text's number
 * destination  receives the text with its terminator; the bytes after that are not changed
 * capacity     the bytes at destination
 *
 * Returns 0; QX_BAD_ARGUMENT if destination is null or capacity is 0, and then prints and loads
 * nothing; QX_BAD_ARGUMENT also if the text does not fit: if it is longer than capacity,
 * destination is not changed; if it has exactly capacity characters, destination becomes an empty
 * text. Otherwise returns what QX_LoadStringToMemory returns. */
QX_API ResultCode QX_CALL QX_LoadString(StringLabel label, char* destination, uint32_t capacity);

/* Makes a copy of a text.
 *
 * label  the text's number
 * text   receives the copy's address, only on success; its previous value is not freed
 *
 * Returns 0; QX_BAD_ARGUMENT if text is null, and then prints the line but loads nothing; QX_FAILED
 * if the settings do not load; QX_NOT_FOUND if label is not in the table; QX_OUT_OF_MEMORY. The
 * caller owns the copy and must free it with QX_UnloadStringFromMemory. If a setting contains a NUL
 * character, the text ends there. An empty setting is a valid text. */
QX_API ResultCode QX_CALL QX_LoadStringToMemory(StringLabel label, char** text);

/* Frees a copy from QX_LoadStringToMemory.
 *
 * text  the address of the pointer to the copy; the pointer may be null, and is set to null
 *
 * Returns 0; QX_BAD_ARGUMENT if text is null. */
QX_API ResultCode QX_CALL QX_UnloadStringFromMemory(char** text);

/* Returns the length of a text in characters, without the terminator; 0 for an empty text, and also
 * if the lookup fails. */
QX_API uint32_t QX_CALL QX_GetLengthOfRString(StringLabel label);

/* A description of the library, 176 bytes. */
typedef struct SystemInformation {
  uint32_t numbers[4];  /* 0, 2, 5, 0 */
  char buildName[32];   /* the text of label 10, then zero bytes */
  char vendorName[128]; /* the text of label 0, then zero bytes */
} SystemInformation;

/* Writes the library's build and vendor to a record. Looks up label 10, then label 0.
 *
 * record  receives 176 bytes
 * size    the bytes at record, 176 or more
 *
 * Returns 0, even if a lookup fails; its field is then empty. Returns QX_BAD_ARGUMENT if record is
 * null or size is below 176, and then writes, prints and loads nothing. */
QX_API ResultCode QX_CALL QX_GetSystemInformation(SystemInformation* record, uint32_t size);

/* Checks whether "config.json" loads. Does not read the setting Is_Staging. Creates a missing file
 * as a lookup does, with the line "Created default config: config.json". Prints nothing else to the
 * standard output.
 *
 * Returns 1 if the file loads, was created, or could be neither opened nor created. Returns 0 if it
 * does not load or memory runs out, and then prints "Error: ", the reason and a line end to the
 * standard error stream and flushes it. */
QX_API int32_t QX_CALL QX_IsStaging(void);

/* ---- The container ------------------------------------------------------------------------- */

/* A container for a payload of n bytes:
 *
 *     offset  size in bytes  content
 *     0       4              the magic "BFBR"
 *     4       4              n, little-endian
 *     8       32             SHA-256 digest of the payload
 *     40      n              the payload
 *     40 + n  0 to 7         zero bytes up to the end of the last block
 *
 * Everything from offset 4 on is enciphered by Blowfish in blocks of 8 bytes. */

/* Returns the size in bytes of the container for a payload of size bytes: size + 36, rounded up to
 * a multiple of 8, plus 4. Returns 0 if size is 0x80000000 or more. */
QX_API uint32_t QX_CALL file_cipher_get_encode_size(uint32_t size);

/* Makes a container with the built-in key, the text of label 11000.
 *
 * payload  size bytes
 * size     1 to 0x7FFFFFFF
 * output   receives file_cipher_get_encode_size(size) bytes, which the library cannot check. output
 *          may overlap payload if payload is at output + 40 or above; the container then overwrites
 *          the part of the payload that it overlaps
 *
 * Returns 0. Returns 7, and does not write output, if an argument is null, if size is out of range,
 * or if the system cannot compute the digest. Nothing is allocated, kept or printed. */
QX_API CipherCode QX_CALL file_cipher_encode(const uint8_t* payload, uint32_t size,
                                             uint8_t* output);

/* Deciphers a container in place and reports where its payload is.
 *
 * block          blockSize bytes; if the size, the magic and the key's length are valid, everything
 *                from offset 4 on is deciphered in place, even if the call then fails
 * blockSize      the container's size in bytes
 * key            keyLength bytes, taken as they are
 * keyLength      4 to 56
 * payloadSize    receives the payload's size in bytes, without the prefix
 * payloadOffset  receives the distance in bytes from block to the payload after the prefix
 * prefix         text that the payload must begin with; null or empty for none
 *
 * Returns 0, or 7 for every failure: a null argument, a wrong size or magic, a key length out of
 * range, a wrong key, damaged data, a missing prefix, or if the system cannot compute the digest.
 * The outputs are written if the digest matches; if only the prefix is missing, they describe the
 * whole payload. Nothing is allocated, kept or printed. */
QX_API CipherCode QX_CALL file_cipher_decode(uint8_t* block, uint32_t blockSize, const uint8_t* key,
                                             int32_t keyLength, uint32_t* payloadSize,
                                             uint32_t* payloadOffset, const char* prefix);

/* Returns the size in bytes of the container for a payload of size bytes, as
 * file_cipher_get_encode_size does, but without an upper limit: the 32-bit sum can wrap around. */
QX_API uint32_t QX_CALL QX_GetEncodeDataSize(uint32_t size);

/* Makes a container with the built-in key. Note that output is the first argument here.
 *
 * output   receives QX_GetEncodeDataSize(size) bytes; overlap as in file_cipher_encode
 * payload  size bytes
 * size     1 or more
 *
 * Returns 0. Returns QX_FAILED, and does not write output, if an argument is null, if size is 0 or
 * below, or if the system cannot compute the digest. QX_Decode refuses a container of more than
 * 1,048,575 bytes. */
QX_API ResultCode QX_CALL QX_Encode(uint8_t* output, const uint8_t* payload, int32_t size);

/* Deciphers a container in place with the key of the string table and reports where its payload is.
 *
 * block          blockSize bytes; deciphered in place from offset 4 on if the size and the magic
 *                are those of a container
 * blockSize      1 to 1,048,575
 * payloadSize    receives the payload's size in bytes, without a skipped marker
 * payloadOffset  receives the distance in bytes from block to the payload; 0 if the block is not an
 *                intact container
 * checkMarker    not 0: skip the signature marker if the payload begins with it; only the low 8
 *                bits are read
 *
 * Looks up label 11000, then 11001 if checkMarker is not 0, then 11000 again.
 *
 * Returns QX_FAILED if an argument is null or a lookup fails, QX_SIZE_REFUSED if blockSize is out
 * of range, and then writes nothing. Otherwise returns 0, and the outputs describe the data:
 *
 *     block                              payloadSize  payloadOffset  bytes from offset 4 on
 *     wrong size or magic                0            0              unchanged
 *     wrong length or digest inside      0            0              deciphered
 *     intact, no marker skipped          n            40             deciphered
 *     intact, marker skipped             n - 22       62             deciphered */
QX_API ResultCode QX_CALL QX_Decode(uint8_t* block, int32_t blockSize, uint32_t* payloadSize,
                                    uint32_t* payloadOffset, uint32_t checkMarker);

/* Returns 22, the length of the signature marker in bytes. */
QX_API uint32_t QX_CALL QX_GetSignatureSize(void);

/* Writes the signature marker and then the data, without a terminator.
 *
 * destination  receives dataSize + 22 bytes; destination may overlap data if data is at
 *              destination + 22 or above
 * capacity     the bytes at destination
 * data         dataSize bytes
 * dataSize     0 or more
 *
 * Returns 1. Returns 0, and writes nothing, if an argument is null or capacity is too small. Only
 * the low 8 bits of the result are defined. */
QX_API uint8_t QX_CALL QX_SignSignature(uint8_t* destination, uint32_t capacity,
                                        const uint8_t* data, uint32_t dataSize);

/* ---- Starting the client -------------------------------------------------------------------- */

/* Starts the client with a launch line and waits until it has ended. The call takes at least half a
 * second and has no time limit.
 *
 * clientPath  the program, at most 2028 characters
 * data        dataSize bytes that the client can read from this process while it runs; or null
 * dataSize    0 for no data
 *
 * The client's command line is its path in double quotes, a space, the id of this process and the
 * address of a copy of the data. The id and the address are eight lower-case hexadecimal digits
 * each. Without data the address is eight zeros. The command line does not contain dataSize; if the
 * client needs it, put it at the beginning of the data. The client gets a new console and the
 * caller's environment and current directory.
 *
 * Returns 0 after the client has ended, for every exit code; QX_FAILED if clientPath is null or too
 * long, or if the client could not be started. */
QX_API ResultCode QX_CALL QX_CreateProcess(const char* clientPath, const void* data,
                                           uint32_t dataSize);

/* Reads the last 8 characters of a text as a hexadecimal number and removes them from the text.
 *
 * value  receives the number; or null. strtoul reads the 8 characters: they may begin with spaces,
 *        a sign and "0x", and the number ends at the first character that is not a digit
 * text   is shortened by its last 8 characters
 *
 * Returns 0; QX_BAD_ARGUMENT if text is null; QX_FAILED if text has fewer than 8 characters, and
 * then writes nothing. */
QX_API ResultCode QX_CALL QX_RightDWORD(uint32_t* value, char* text);

/* Reads bytes from the end of a text. Each byte has two hexadecimal digits, in reading order.
 *
 * destination  receives count bytes and zero bytes up to capacity; null to check only the text
 * capacity     the bytes at destination, count or more
 * text         not changed
 * count        the number of bytes to read
 *
 * A character that is not a hexadecimal digit counts as the digit 0.
 *
 * Returns 0; QX_BAD_ARGUMENT if text is null; QX_FAILED if text has fewer than 2 * count characters
 * or capacity is below count, and then writes nothing. */
QX_API ResultCode QX_CALL QX_RightBinary(uint8_t* destination, uint32_t capacity, const char* text,
                                         uint32_t count);

/* Reads the last 8 characters of a text as a hexadecimal address.
 *
 * address  receives the address; or null
 * text     not changed
 *
 * A character that is not a hexadecimal digit counts as the digit 0.
 *
 * Returns 0; QX_BAD_ARGUMENT if text is null; QX_FAILED if text has fewer than 8 characters. */
QX_API ResultCode QX_CALL QX_RightAddress(uint32_t* address, const char* text);

/* Returns this process's arguments, split by the system's rules, in the ANSI code page.
 *
 * block     receives the address of the arguments, each NUL-terminated, one directly after the
 *           other; written only on success; the caller must free it with LocalFree
 * capacity  the limit for the total number of characters, terminators included
 * count     receives the number of arguments; written even if a later step fails
 *
 * block and count are not checked for null.
 *
 * Returns 0; QX_BAD_ARGUMENT if the arguments have more than capacity characters; QX_FAILED if the
 * system cannot split or convert them, or if memory runs out. */
QX_API ResultCode QX_CALL QX_CommandLineToArgvA(char** block, uint32_t capacity, int32_t* count);

/* ---- Steam: session and identity ------------------------------------------------------------ */

/* The first call of a Steam function loads the Steam client library, steam_api.dll. The search
 * order is the program's folder, the folder of LauncherDll.dll, then the system's folder. If the
 * library is missing, every function returns the same as without a running Steam client. Call
 * QX_SteamAPI_Init before the two language functions. The other functions do not need it. If a text
 * does not fit, the destination becomes an empty text. */

/* Starts the connection to the Steam client.
 *
 * Returns 1 if Steam is running and knows the game. Returns 0 if the connection fails; an interface
 * from an earlier call then stays in use. Returns 0 also if Steam has no interface for games. */
QX_API int32_t QX_CALL QX_SteamAPI_Init(void);

/* Ends the connection to the Steam client. Do not call a language function until QX_SteamAPI_Init
 * has succeeded again. */
QX_API void QX_CALL QX_SteamAPI_Shutdown(void);

/* Returns 1 if the Steam client is running, else 0. Does not need QX_SteamAPI_Init. */
QX_API int32_t QX_CALL QX_SteamAPI_IsSteamRunning(void);

/* Asks Steam to restart the game if Steam did not start it. Does not need QX_SteamAPI_Init.
 *
 * appId  the game's Steam application id
 *
 * Returns 0 if Steam restarts the game; the program should then end. Returns QX_FAILED if no
 * restart is needed, or without Steam. */
QX_API ResultCode QX_CALL QX_SteamAPI_RestartAppIfNecessary(uint32_t appId);

/* Returns 1 if the user is logged on to Steam, else 0; 0 also without Steam. Only the low 8 bits of
 * the result are defined. */
QX_API uint8_t QX_CALL QX_SteamAPI_IsLoggedOn(void);

/* Returns the account's 64-bit identifier; 0 without Steam. */
QX_API uint64_t QX_CALL QX_SteamAPI_GetSteamIDConvertToUint64(void);

/* Copies the user's name.
 *
 * destination  receives the name with its terminator
 * capacity     the bytes at destination
 *
 * Returns 0. Without Steam it returns 0 too, but does not write destination. Returns
 * QX_BAD_ARGUMENT if destination is null, capacity is 0 or the name does not fit. */
QX_API ResultCode QX_CALL QX_SteamAPI_GetPersonaName(char* destination, uint32_t capacity);

/* Requests a ticket with which a server can identify the user, and writes it in upper-case
 * hexadecimal digits.
 *
 * destination  receives two characters for each byte of the ticket, and a terminator; a ticket has
 *              at most 1024 bytes
 * capacity     the bytes at destination
 *
 * Returns the number of characters written, without the terminator; QX_FAILED without Steam, if
 * Steam returns no ticket, if destination is null, or if capacity is too small. Every call requests
 * a ticket, even if destination is invalid. The library never cancels a ticket. */
QX_API int32_t QX_CALL QX_SteamAPI_GetSteamAuthTicket(char* destination, uint32_t capacity);

/* Copies the list of the game's languages, as Steam reports it.
 *
 * destination  receives the list with its terminator
 * capacity     the bytes at destination
 *
 * Returns 0, even if the list does not fit; QX_BAD_ARGUMENT if destination is null or capacity is
 * 0; QX_NO_STEAM before QX_SteamAPI_Init. */
QX_API ResultCode QX_CALL QX_SteamAPI_GetAvailableGameLanguages(char* destination,
                                                                uint32_t capacity);

/* Copies the name of the game's current language.
 *
 * destination  receives the name with its terminator
 * capacity     the bytes at destination
 *
 * Returns 0; QX_BAD_ARGUMENT if destination is null or capacity is 0; QX_NO_STEAM before
 * QX_SteamAPI_Init; QX_NOT_FOUND if the name is empty, and then does not write destination;
 * QX_OUT_OF_MEMORY if the name does not fit. */
QX_API ResultCode QX_CALL QX_SteamAPI_GetCurrentGameLanguage(char* destination, uint32_t capacity);

/* ---- Steam: the user's files on this machine ------------------------------------------------- */

/* The path of a file is the user's folder, which Steam returns, a backslash, and fileName without a
 * change. The path can have at most 259 characters. */

/* Writes the path of the user's folder.
 *
 * destination  receives the path with its terminator
 * capacity     the bytes at destination
 *
 * Returns 1, not 0, on success; 0 if Steam refuses, for example if capacity is too small;
 * QX_BAD_ARGUMENT if destination is null or capacity is 0 or below; QX_NO_STEAM. */
QX_API ResultCode QX_CALL QX_SteamAPI_GetUserDataFolder(char* destination, int32_t capacity);

/* Writes the path of a file in the user's folder. The file does not have to exist.
 *
 * destination  receives the path with its terminator
 * capacity     the bytes at destination
 * fileName     the file's name
 *
 * Returns 0; QX_FAILED if Steam returns no folder or the path does not fit; QX_BAD_ARGUMENT if a
 * pointer is null or capacity is 0 or below; QX_NO_STEAM. */
QX_API ResultCode QX_CALL QX_SteamAPI_CatUserFilePath(char* destination, int32_t capacity,
                                                      const char* fileName);

/* Returns 1 if a file or a folder with this name exists in the user's folder, else 0. Returns 0
 * also if fileName is null, if the path is too long, and without Steam. */
QX_API int32_t QX_CALL QX_SteamAPI_IsFileExist(const char* fileName);

/* Reads a whole file in the user's folder.
 *
 * fileName  the file's name
 * buffer    receives the file's bytes and no terminator
 * capacity  the bytes at buffer
 *
 * Returns 0; QX_BAD_ARGUMENT if a pointer is null, capacity is 0 or the file is larger than
 * capacity, and then reads nothing; QX_NO_STEAM; QX_FAILED if Steam returns no folder or the path
 * is too long; QX_NOT_FOUND if the file does not exist; QX_READ_FAILED if the file is empty, has
 * 2 GiB or more, or cannot be read completely; QX_OPEN_FAILED. The function does not report the
 * file's size. */
QX_API ResultCode QX_CALL QX_SteamAPI_ReadFile(const char* fileName, void* buffer,
                                               uint32_t capacity);

/* Creates or replaces a file in the user's folder. After a failed write the file can be incomplete.
 *
 * fileName  the file's name
 * data      size bytes
 * size      1 or more
 *
 * Returns 0; QX_BAD_ARGUMENT if a pointer is null or size is 0; QX_NO_STEAM; QX_FAILED if Steam
 * returns no folder or the path is too long; QX_OPEN_FAILED; QX_WRITE_FAILED. */
QX_API ResultCode QX_CALL QX_SteamAPI_WriteFile(const char* fileName, const void* data,
                                                uint32_t size);

/* ---- Steam: the user's files in the cloud ---------------------------------------------------- */

/* The results for an invalid argument and without Steam differ from function to function. The
 * library passes names to Steam unchanged. */

/* Writes a file.
 *
 * name  the file's name
 * data  size bytes
 * size  1 or more
 *
 * Returns 0; QX_FAILED if Steam refuses; QX_BAD_ARGUMENT if a pointer is null or size is 0 or
 * below; QX_NO_STEAM. */
QX_API ResultCode QX_CALL QX_SteamAPI_RemoteStorageFileWrite(const char* name, const void* data,
                                                             int32_t size);

/* Reads a file.
 *
 * name    the file's name
 * buffer  receives the file's bytes
 * size    the bytes at buffer; passed to Steam without a check
 *
 * Returns the number of bytes read, as Steam reports it; QX_BAD_ARGUMENT if a pointer is null;
 * QX_NO_STEAM. */
QX_API int32_t QX_CALL QX_SteamAPI_RemoteStorageFileRead(const char* name, void* buffer,
                                                         int32_t size);

/* Deletes a file on this computer and in the cloud.
 *
 * Returns 0; QX_FAILED if Steam refuses, and without Steam; QX_BAD_ARGUMENT if name is null. */
QX_API ResultCode QX_CALL QX_SteamAPI_RemoteStorageFileDelete(const char* name);

/* Returns 1 if the file exists, else 0. Returns 0 also if name is null, and without Steam. */
QX_API int32_t QX_CALL QX_SteamAPI_RemoteStorageFileExist(const char* name);

/* Removes a file from the cloud and keeps it on this computer.
 *
 * Returns 1 on success; 0 if Steam refuses, if name is null, and without Steam. */
QX_API int32_t QX_CALL QX_SteamAPI_RemoteStorageFileForget(const char* name);

/* Returns a file's size in bytes, as Steam reports it; 0 if name is null, and without Steam. */
QX_API int32_t QX_CALL QX_SteamAPI_RemoteStorageGetFileSize(const char* name);

/* Returns the number of files, as Steam reports it; QX_FAILED without Steam. */
QX_API int32_t QX_CALL QX_SteamAPI_RemoteStorageGetFileCount(void);

/* Copies the name of one file.
 *
 * index        0 or more, below the number of files
 * destination  receives the name with its terminator
 * capacity     the bytes at destination
 *
 * Returns 0, even if the name does not fit; QX_BAD_ARGUMENT if destination is null or capacity is
 * 0; QX_FAILED without Steam. */
QX_API ResultCode QX_CALL QX_SteamAPI_RemoteStorageGetFileName(int32_t index, char* destination,
                                                               uint32_t capacity);

/* Returns 1 if the cloud is on for the user's account; 0 if not, and without Steam. */
QX_API int32_t QX_CALL QX_SteamAPI_RemoteStorageIsCloudEnabledForAccount(void);

/* Returns 1 if the cloud is on for the game; 0 if not, and without Steam. */
QX_API int32_t QX_CALL QX_SteamAPI_RemoteStorageIsCloudEnabledForApp(void);

/* Switches the cloud on or off for the game.
 *
 * enabled  0: off; not 0: on
 *
 * Returns 0 on success, 1 without Steam. Only the low 8 bits of the result are defined. */
QX_API uint8_t QX_CALL QX_SteamAPI_RemoteStorageSetCloudEnabledForApp(int32_t enabled);

/* ---- Steam: HTTP ----------------------------------------------------------------------------- */

/* Sends one HTTP request and waits for the response. Then prints "Response: ", the body up to its
 * first NUL and a line end to the standard output, and flushes it.
 *
 * url          the URL
 * method       1 GET, 2 HEAD, 3 POST, 4 PUT, 5 DELETE, 6 OPTIONS, 7 PATCH
 * contentType  the content type of the body, or null
 * body         bodyLength bytes, or null
 * bodyLength   0 for no body
 *
 * The body is sent only if method is 3, contentType and body are not null and bodyLength is not 0.
 * A response with an HTTP error status is not a failure.
 *
 * Returns 0; QX_NO_STEAM without Steam, or if Steam cannot send the request or does not get the
 * whole response; QX_BAD_ARGUMENT if url is null; QX_OUT_OF_MEMORY if there is not enough memory
 * for the body. If the result is not 0, nothing is printed. */
QX_API ResultCode QX_CALL QX_SteamAPI_HTTPRequest(const char* url, int32_t method,
                                                  const char* contentType, const uint8_t* body,
                                                  uint32_t bodyLength);

/* ---- The host -------------------------------------------------------------------------------- */

/* Writes the display modes of an adapter in the format X8R8G8B8 as JSON text. Lines end with "\n":
 *
 *     {
 *     "DisplayMode": [
 *       {"Width": 800, "Height": 600, "Hz": 60},
 *       {"Width": 1024, "Height": 768, "Hz": 75}
 *     ]
 *     }
 *
 * adapter   the number of the graphics adapter; 0 for the first
 * reserved  not read
 * buffer    receives the text with its terminator; it needs at most 65 bytes for each mode plus 23
 * capacity  the bytes at buffer
 *
 * Returns the number of characters written, without the terminator. Returns 0, and writes nothing,
 * if buffer is null, if capacity is 0, without Direct3D 9, and if the adapter has no modes. If the
 * text does not fit, returns 0 and writes the beginning of the text and a terminator. Modes that
 * Direct3D does not report are missing; if the last one is missing, a comma remains at the end of
 * the list. */
QX_API uint32_t QX_CALL QX_EnumDisplayMode(uint32_t adapter, uint32_t reserved, char* buffer,
                                           uint32_t capacity);

/* Checks whether an adapter has a display mode in the format X8R8G8B8.
 *
 * adapter      the number of the graphics adapter; 0 for the first
 * reserved     not read
 * width        in pixels; only the low 16 bits are read, as a signed number
 * height       in pixels; only the low 16 bits are read, as a signed number
 * refreshRate  in Hz
 *
 * Returns 0 if the adapter has exactly this mode; QX_BAD_ARGUMENT if not, and without Direct3D 9.
 */
QX_API ResultCode QX_CALL QX_CheckDisplayMode(uint32_t adapter, uint32_t reserved, int32_t width,
                                              int32_t height, uint32_t refreshRate);

/* Compares two names with the names of the game's own servers, character by character. Does not
 * check a certificate. Does not check the names for null.
 *
 * certificateName  the name in the server's certificate
 * hostName         the host name with which the caller connected to the server
 *
 * Looks up label 5000 and, if hostName does not match, label 5001. Texts of more than 1023 bytes do
 * not match.
 *
 * Returns 1 if hostName equals one of these two settings, or if certificateName equals one of two
 * fixed names: "*." with the name of the game's own domain, or the name of the CI game API. Both
 * are compiled in. Otherwise returns 0. The "*" is an ordinary character. Only the low 8 bits of
 * the result are defined. */
QX_API uint8_t QX_CALL QX_CheckCert(const char* certificateName, const char* hostName);

/* Removes a file. If path is a link, removes the link and not its target.
 *
 * path  the file, in the ANSI code page
 *
 * Returns 0; QX_FAILED if the system refuses, for example because the file is read-only, open in
 * another program or does not exist; QX_BAD_ARGUMENT if path is null. */
QX_API ResultCode QX_CALL QX_RemoveFile(const char* path);

/* Removes a directory and everything in it.
 *
 * path           the directory, in the ANSI code page
 * keepDirectory  not 0: remove only what is in it
 *
 * If an entry cannot be removed, it stays, and the others are removed. Nothing outside the
 * directory is removed: links and junctions in it are removed and not followed. If path itself is a
 * link or a junction, the directory to which it refers is emptied, and the link is removed. If path
 * is empty or a drive without a directory ("C:"), nothing is removed.
 *
 * These entries stay: entries with a path of more than 259 characters, or in a directory with a
 * path of more than 255; entries whose name contains a separator or ends with a dot or a space.
 *
 * Returns 0 if the directory was removed. If keepDirectory is not 0, always returns 0. Returns
 * QX_FAILED if the directory was not removed or did not exist; QX_BAD_ARGUMENT if path is null. */
QX_API ResultCode QX_CALL QX_RemoveDirectory(const char* path, uint32_t keepDirectory);

/* ---- Fixed results --------------------------------------------------------------------------- */

/* These functions exist for older launchers. They do only what their comments describe. */

/* Returns 1. Only the low 8 bits of the result are defined. */
QX_API uint8_t QX_CALL QX_ExistClient(void);

/* Does nothing. Returns 0; QX_BAD_ARGUMENT if second, third or fourth is 0. */
QX_API ResultCode QX_CALL QX_Unzip(uint32_t first, uint32_t second, uint32_t third,
                                   uint32_t fourth);

/* Returns 0. */
QX_API int32_t QX_CALL QX_SteamAPI_GetMirvelURL(uint32_t first, uint32_t second, uint32_t third);

/* Returns the last random number of QX_ResetIllegalValue, or 0 if there is none. There is one
 * number for the process. The library takes no lock: do not call this function or
 * QX_ResetIllegalValue while another thread runs QX_ResetIllegalValue. */
QX_API int32_t QX_CALL QX_GetIllegalValue(void);

/* Returns a random number: seeds the C runtime's generator (rand) with the time in seconds and
 * takes its first number. Two calls within one second return the same number. This also seeds rand
 * for a caller that uses the same runtime (msvcrt.dll). */
QX_API int32_t QX_CALL QX_ResetIllegalValue(void);

#ifdef __cplusplus
}
#endif

#endif /* LAUNCHER_DLL_H_ */
