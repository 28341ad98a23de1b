/* LauncherDll: the support library of the game's launcher and of the client that it starts.
 *
 * For C and C++. Link with the import library, or load LauncherDll.dll and look the decorated names
 * up (`_QX_Allocate@8`: a leading underscore, the name, an at sign, four bytes for each argument).
 *
 * Every function uses the standard-call convention on Windows. No exception leaves a call, and the
 * library starts no thread and keeps no pointer that it was given. Text is NUL-terminated and 8-bit
 * and is passed on byte for byte. A `size` is bytes that are there, a `capacity` bytes on offer,
 * terminator included. Pointers must be valid for what is read or written through them; where null
 * is allowed or answered, the function says so.
 *
 * Truth values and counts are told with each function; all else answers with a ResultCode, or, in
 * the file_cipher_ family, with a CipherCode. Like functions differ in their results: the text at
 * each one decides. */

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

/* The version of this header and of the library it comes with, which bears it in its properties. */
#define QX_VERSION "1.0.0"

#ifdef __cplusplus
extern "C" {
#endif

/* Zero is success, a negative value a failure. */
typedef int32_t ResultCode;

#define QX_SUCCEEDED 0
#define QX_FAILED (-1)         /* the operation failed: a system call, a lookup, a text too short */
#define QX_BAD_ARGUMENT (-2)   /* a null pointer, a zero size, a destination too small */
#define QX_NO_STEAM (-3)       /* a Steam interface is missing, or a Steam request failed */
#define QX_NOT_FOUND (-4)      /* no such string label, no such file */
#define QX_OUT_OF_MEMORY (-5)  /* memory ran out, or a copy to the caller failed */
#define QX_OPEN_FAILED (-1000) /* a local file could not be opened */
#define QX_WRITE_FAILED (-1001) /* a local file could not be written */
#define QX_READ_FAILED (-1002)  /* a local file could not be read, or is empty */
#define QX_SIZE_REFUSED (-1005) /* a data size outside the range that QX_Decode accepts */

/* 0 is success and 7 is every failure. Test it against 0: a 7 is no failure to QX_IsFailed. */
typedef int32_t CipherCode;

#define QX_CIPHER_SUCCEEDED 0
#define QX_CIPHER_FAILED 7

/* The number of a text in the string table; QX_LoadString lists them. */
typedef int32_t StringLabel;

/* ---- Results and memory -------------------------------------------------------------------- */

/* Returns 1 if value is negative, else 0. */
QX_API int32_t QX_CALL QX_IsFailed(int32_t value);

/* Returns 1 if value is zero or positive, else 0. */
QX_API int32_t QX_CALL QX_IsSucceeded(int32_t value);

/* Takes a block of memory, filled with zero bytes.
 *
 * block  receives the block's address, or null where memory ran out; not tested, never null
 * size   the block's size in bytes
 *
 * Returns 0; QX_BAD_ARGUMENT for a size of 0, with *block unwritten; QX_OUT_OF_MEMORY. The block is
 * the caller's until QX_Deallocate. */
QX_API ResultCode QX_CALL QX_Allocate(void** block, uint32_t size);

/* Gives a block back that QX_Allocate or QX_LoadStringToMemory handed out. Null is allowed.
 * Returns 0 always. */
QX_API ResultCode QX_CALL QX_Deallocate(void* block);

/* ---- Settings and texts -------------------------------------------------------------------- */

/* Every lookup below, also a failing one and whatever the label, prints the line
 *
 *     QX_LoadStringToMemory called with label: LABEL
 *
 * to the standard output (unflushed) and then loads "config.json" from the current directory:
 *
 * - A missing file is created with the defaults, whole or not at all, and the line
 *   "Created default config: config.json" is printed and flushed. A file that is there but cannot
 *   be opened is left as it is; the defaults serve, and the same line is printed.
 * - A file that is there must hold all twelve settings, each a JSON string: in the object "Orvane"
 *   the eight that are named below, in the object "Settings" game_version, ssl_check, Is_Staging
 *   and Is_Shipping ("true" and "false" are strings too). If it does not, the lookup fails, also
 *   that of a fixed text; the file is not touched. QX_IsStaging tells why.
 *
 * Nothing is cached: an edit of the file counts from the next lookup on.
 *
 * Labels of settings: 1001 Api_server, 1200 Orvane_server, 1210 Purchase_server,
 * 1220 Telemetry_server, 1240 Download_url, 5000 Orvane_qa_api_url, 5001 Orvane_ci_api_url,
 * 5100 Game_url. Labels of fixed texts: 0 vendor, 10 build, 1000 HTTP method, 1011 content type,
 * 1012 and 1014 header names, 1100 to 1102 request templates, 2000 to 2018, 10023, 10194, 10196 and
 * 10239 messages, 11000 cipher key, 11001 signature marker. */

/* Copies a text into the caller's buffer.
 *
 * label        the text's number
 * destination  receives the text with its terminator; bytes behind that stay as they were
 * capacity     the bytes at destination
 *
 * Returns 0; QX_BAD_ARGUMENT for a null destination or a capacity of 0 (nothing printed or loaded),
 * and for a text that does not fit: one longer than capacity leaves destination as it was, one of
 * exactly capacity characters leaves an empty text; else what QX_LoadStringToMemory returns. */
QX_API ResultCode QX_CALL QX_LoadString(StringLabel label, char* destination, uint32_t capacity);

/* Makes a copy of a text.
 *
 * label  the text's number
 * text   receives the copy's address, on success only; what it held before is not freed
 *
 * Returns 0; QX_BAD_ARGUMENT for a null text (the line is printed, nothing is loaded);
 * QX_FAILED for settings that do not load; QX_NOT_FOUND for a label outside the table;
 * QX_OUT_OF_MEMORY. The copy is the caller's until QX_UnloadStringFromMemory. A setting that holds
 * a NUL character counts up to it; an empty one is a text like any other. */
QX_API ResultCode QX_CALL QX_LoadStringToMemory(StringLabel label, char** text);

/* Frees a copy of QX_LoadStringToMemory.
 *
 * text  the address of the pointer to the copy; that pointer may be null and is null afterwards
 *
 * Returns 0; QX_BAD_ARGUMENT for a null text. */
QX_API ResultCode QX_CALL QX_UnloadStringFromMemory(char** text);

/* Returns a text's length in characters, terminator not counted. A failed lookup gives 0, which an
 * empty text gives as well. */
QX_API uint32_t QX_CALL QX_GetLengthOfRString(StringLabel label);

/* What this library is, 176 bytes. */
typedef struct SystemInformation {
  uint32_t numbers[4];  /* 0, 2, 5, 0 */
  char buildName[32];   /* the text of label 10, filled up with zero bytes */
  char vendorName[128]; /* the text of label 0, filled up with zero bytes */
} SystemInformation;

/* Fills the record. Looks label 10 up, then label 0.
 *
 * record  receives 176 bytes
 * size    the bytes at record, 176 or more
 *
 * Returns 0, also where a lookup failed and left its field empty; QX_BAD_ARGUMENT for a null record
 * or a size below 176, with nothing written, printed or loaded. */
QX_API ResultCode QX_CALL QX_GetSystemInformation(SystemInformation* record, uint32_t size);

/* Tells whether "config.json" loads; it does not look at the setting Is_Staging. A missing file is
 * created as by a lookup, with the line "Created default config: config.json"; nothing else is
 * printed to the standard output.
 *
 * Returns 1 if the file loads, was created, or could be neither opened nor created; 0 if it does
 * not load or memory runs out, and then prints "Error: ", the reason and a line end to the standard
 * error stream, flushed. */
QX_API int32_t QX_CALL QX_IsStaging(void);

/* ---- The container ------------------------------------------------------------------------- */

/* A container holds a payload of n bytes: the magic "BFBR", then, enciphered by Blowfish in blocks
 * of 8 bytes from offset 4 on, the length n (4 bytes, little-endian), the payload's SHA-256 digest
 * (32 bytes), the payload at offset 40, and zero bytes up to the end of the last block. */

/* Returns the size in bytes of the container for a payload of size bytes: size + 36 rounded up to a
 * multiple of 8, and 4; 0 for a size of 0x80000000 or more. */
QX_API uint32_t QX_CALL file_cipher_get_encode_size(uint32_t size);

/* Makes a container with the built-in key, the text of label 11000.
 *
 * payload  size bytes
 * size     1 to 0x7FFFFFFF
 * output   receives file_cipher_get_encode_size(size) bytes, which the library cannot check. It may
 *          overlap payload where payload is at output + 40 or above; the container then overwrites
 *          the payload as far as it reaches
 *
 * Returns 0, or 7 with output unwritten: a null argument, a size out of range, no digest to be had
 * from the system. Nothing is allocated, kept or printed. */
QX_API CipherCode QX_CALL file_cipher_encode(const uint8_t* payload, uint32_t size,
                                             uint8_t* output);

/* Deciphers a container in place and tells where its payload lies.
 *
 * block          blockSize bytes, read and rewritten: once the size, the magic and the key's length
 *                fit, everything from offset 4 on is deciphered, also when the call fails later
 * blockSize      the container's size in bytes
 * key            keyLength bytes, taken as they are
 * keyLength      4 to 56
 * payloadSize    receives the payload's size in bytes, prefix not counted
 * payloadOffset  receives the distance in bytes from block to the payload behind the prefix
 * prefix         text that the payload must begin with; null or empty for none
 *
 * Returns 0, or 7 for every failure: a null argument, a size or magic of no container, a key length
 * out of range, a wrong key, damaged data, no digest to be had from the system, a missing prefix.
 * The outputs are written once the digest fits; a missing prefix leaves the whole payload in them.
 * Nothing is allocated, kept or printed. */
QX_API CipherCode QX_CALL file_cipher_decode(uint8_t* block, uint32_t blockSize, const uint8_t* key,
                                             int32_t keyLength, uint32_t* payloadSize,
                                             uint32_t* payloadOffset, const char* prefix);

/* Returns the size in bytes of the container for a payload of size bytes, as
 * file_cipher_get_encode_size does, but in plain 32-bit arithmetic that wraps, with no upper
 * limit. */
QX_API uint32_t QX_CALL QX_GetEncodeDataSize(uint32_t size);

/* Makes a container with the built-in key. Mind the order: output comes first here.
 *
 * output   receives QX_GetEncodeDataSize(size) bytes; overlap as in file_cipher_encode
 * payload  size bytes
 * size     1 or more
 *
 * Returns 0, or QX_FAILED with output unwritten: a null argument, a size of 0 or below, no digest
 * to be had from the system. QX_Decode refuses a container of more than 1,048,575 bytes. */
QX_API ResultCode QX_CALL QX_Encode(uint8_t* output, const uint8_t* payload, int32_t size);

/* Deciphers a container in place with the key of the string table and tells where its payload lies.
 *
 * block          blockSize bytes, read; rewritten from offset 4 on if they look like a container
 * blockSize      1 to 1,048,575
 * payloadSize    receives the payload's size in bytes, a skipped marker not counted
 * payloadOffset  receives the distance in bytes from block to the payload; 0 says that the block
 *                is no intact container
 * checkMarker    not 0: skip the signature marker if the payload begins with it, and deliver the
 *                payload whole if not; only the low 8 bits are read
 *
 * Looks label 11000 up, then 11001 if checkMarker is not 0, then 11000 again.
 *
 * Returns 0 where the call could be carried out, whatever became of the data:
 *   no container by its size or magic           *payloadSize 0,      *payloadOffset 0,  unchanged
 *   wrong length or digest inside               *payloadSize 0,      *payloadOffset 0,  deciphered
 *   intact, marker not asked for or not there   *payloadSize n,      *payloadOffset 40, deciphered
 *   intact, marker skipped                      *payloadSize n - 22, *payloadOffset 62, deciphered
 * QX_FAILED for a null argument or a failed lookup, QX_SIZE_REFUSED for a blockSize out of range;
 * then nothing is written. */
QX_API ResultCode QX_CALL QX_Decode(uint8_t* block, int32_t blockSize, uint32_t* payloadSize,
                                    uint32_t* payloadOffset, uint32_t checkMarker);

/* Returns 22, the signature marker's length in bytes. */
QX_API uint32_t QX_CALL QX_GetSignatureSize(void);

/* Writes the signature marker and then the data, without a terminator.
 *
 * destination  receives dataSize + 22 bytes; it may overlap data where data is at destination + 22
 *              or above
 * capacity     the bytes at destination
 * data         dataSize bytes
 * dataSize     0 or more
 *
 * Returns 1 when done, 0 with nothing written when refused: a null argument, a capacity too small.
 * Only the low 8 bits of the result are defined. */
QX_API uint8_t QX_CALL QX_SignSignature(uint8_t* destination, uint32_t capacity,
                                        const uint8_t* data, uint32_t dataSize);

/* ---- Starting the client -------------------------------------------------------------------- */

/* Starts the client with a launch line and waits until it has ended, half a second at least and
 * without a limit.
 *
 * clientPath  the program, at most 2028 characters
 * data        dataSize bytes that the client may read from this process while it runs, or null
 * dataSize    0 for no data
 *
 * The client's command line is its path in double quotes, a blank, this process's id and the
 * address of a copy of the data, each as eight lower-case hexadecimal digits; without data the
 * address is eight zeros. dataSize is not told: the data have to begin with it, if the client needs
 * it. The client gets a new console and the caller's environment and directory.
 *
 * Returns 0 after the client has ended, whatever its exit code; QX_FAILED where clientPath is null
 * or too long, or the client could not be started. */
QX_API ResultCode QX_CALL QX_CreateProcess(const char* clientPath, const void* data,
                                           uint32_t dataSize);

/* Takes a number off the end of a text: the last 8 characters, as hexadecimal digits.
 *
 * value  receives the number, or null; what strtoul makes of the 8 characters: blanks, a sign and
 *        "0x" may come first, and digits count up to the first character that is none
 * text   loses its last 8 characters
 *
 * Returns 0; QX_BAD_ARGUMENT for a null text; QX_FAILED for a text of fewer than 8 characters, with
 * nothing written. */
QX_API ResultCode QX_CALL QX_RightDWORD(uint32_t* value, char* text);

/* Reads bytes off the end of a text, two hexadecimal digits a byte, left to right.
 *
 * destination  receives count bytes and zero bytes up to capacity; null to test the text only
 * capacity     the bytes at destination, count or more; a NUL follows the bytes where there is room
 * text         not changed
 * count        the bytes wanted
 *
 * A character that is no hexadecimal digit counts as 0.
 * Returns 0; QX_BAD_ARGUMENT for a null text; QX_FAILED for a text of fewer than 2 * count
 * characters or a capacity below count, with nothing written. */
QX_API ResultCode QX_CALL QX_RightBinary(uint8_t* destination, uint32_t capacity, const char* text,
                                         uint32_t count);

/* Reads an address off the end of a text: the last 8 characters, as hexadecimal digits, most
 * significant first.
 *
 * address  receives the address, or null
 * text     not changed
 *
 * A character that is no hexadecimal digit counts as 0.
 * Returns 0; QX_BAD_ARGUMENT for a null text; QX_FAILED for a text of fewer than 8 characters. */
QX_API ResultCode QX_CALL QX_RightAddress(uint32_t* address, const char* text);

/* Gives this process's arguments, split by the system's rules, in the ANSI code page.
 *
 * block     receives the address of the arguments, NUL-terminated and one directly behind the
 *           other; the caller's until LocalFree; written on success only
 * capacity  refuse arguments of more than so many characters in all, terminators included
 * count     receives the number of arguments, also if the call fails after the split
 *
 * Neither pointer is tested. Returns 0; QX_BAD_ARGUMENT for arguments beyond capacity; QX_FAILED
 * where the system could not split or convert them, or memory ran out. */
QX_API ResultCode QX_CALL QX_CommandLineToArgvA(char** block, uint32_t capacity, int32_t* count);

/* ---- Steam: session and identity ------------------------------------------------------------ */

/* The Steam client library, steam_api.dll, is loaded when the first of these functions is called,
 * from the program's folder, that of LauncherDll.dll or the system's, in this order. If it is
 * missing, every function returns the same as without Steam. QX_SteamAPI_Init comes before the two
 * language functions; the others fetch what they need themselves, as far as Steam allows it. A text
 * that does not fit leaves an empty one. */

/* Starts the link to the Steam client.
 *
 * Returns 1 if Steam came up and knows the game; 0 if Steam did not come up, with what an earlier
 * call found still in use, or came up without its part for games. */
QX_API int32_t QX_CALL QX_SteamAPI_Init(void);

/* Ends the link to the Steam client. No language function may follow until QX_SteamAPI_Init has
 * succeeded again. */
QX_API void QX_CALL QX_SteamAPI_Shutdown(void);

/* Returns 1 if the Steam client runs, else 0. May come before QX_SteamAPI_Init. */
QX_API int32_t QX_CALL QX_SteamAPI_IsSteamRunning(void);

/* Has Steam start the game if it was not started by Steam. May come before QX_SteamAPI_Init.
 *
 * appId  the game's number at Steam
 *
 * Returns 0 if Steam starts the game anew, so that the caller should end; QX_FAILED if there is no
 * need to, or no Steam. */
QX_API ResultCode QX_CALL QX_SteamAPI_RestartAppIfNecessary(uint32_t appId);

/* Returns 1 if the user is logged on to Steam, else 0, also without Steam. Only the low 8 bits of
 * the result are defined. */
QX_API uint8_t QX_CALL QX_SteamAPI_IsLoggedOn(void);

/* Returns the account's 64-bit identifier, 0 without Steam. */
QX_API uint64_t QX_CALL QX_SteamAPI_GetSteamIDConvertToUint64(void);

/* Copies the user's name.
 *
 * destination  receives the name with its terminator
 * capacity     the bytes at destination
 *
 * Returns 0, also without Steam, with destination unwritten; QX_BAD_ARGUMENT for a null
 * destination, a capacity of 0, and a name that does not fit. */
QX_API ResultCode QX_CALL QX_SteamAPI_GetPersonaName(char* destination, uint32_t capacity);

/* Takes a ticket by which a server can tell the user, and writes it in upper-case hexadecimal
 * digits.
 *
 * destination  receives two characters for each byte of the ticket, 1024 bytes at most, and a
 *              terminator
 * capacity     the bytes at destination
 *
 * Returns the characters written, terminator not counted; QX_FAILED without Steam, where Steam
 * gives no ticket, for a null destination, and for a capacity too small. Also a call with a bad
 * destination takes a ticket. No ticket is ever cancelled. */
QX_API int32_t QX_CALL QX_SteamAPI_GetSteamAuthTicket(char* destination, uint32_t capacity);

/* Copies the list of the languages that the game has.
 *
 * destination  receives the list with its terminator
 * capacity     the bytes at destination
 *
 * Returns 0, also for a list that does not fit; QX_BAD_ARGUMENT for a null destination or a
 * capacity of 0; QX_NO_STEAM before QX_SteamAPI_Init. */
QX_API ResultCode QX_CALL QX_SteamAPI_GetAvailableGameLanguages(char* destination,
                                                                uint32_t capacity);

/* Copies the name of the language that the game runs in.
 *
 * destination  receives the name with its terminator
 * capacity     the bytes at destination
 *
 * Returns 0; QX_BAD_ARGUMENT for a null destination or a capacity of 0; QX_NO_STEAM before
 * QX_SteamAPI_Init; QX_NOT_FOUND for an empty name, with destination unwritten; QX_OUT_OF_MEMORY
 * for a name that does not fit. */
QX_API ResultCode QX_CALL QX_SteamAPI_GetCurrentGameLanguage(char* destination, uint32_t capacity);

/* ---- Steam: the user's files on this machine ------------------------------------------------- */

/* A fileName goes unchanged behind the folder that Steam gives the user and a backslash. The path
 * has at most 259 characters. */

/* Writes the path of the user's folder.
 *
 * destination  receives the path with its terminator
 * capacity     the bytes at destination
 *
 * Returns 1, not 0, on success; 0 where Steam refuses, for example for a capacity too small;
 * QX_BAD_ARGUMENT for a null destination or a capacity of 0 or below; QX_NO_STEAM. */
QX_API ResultCode QX_CALL QX_SteamAPI_GetUserDataFolder(char* destination, int32_t capacity);

/* Writes the path of a file in the user's folder, whether there is one or not.
 *
 * destination  receives the path with its terminator
 * capacity     the bytes at destination
 * fileName     the file's name
 *
 * Returns 0; QX_FAILED where Steam gives no folder, and for a path that does not fit, which leaves
 * an empty text; QX_BAD_ARGUMENT for a null pointer or a capacity of 0 or below; QX_NO_STEAM. */
QX_API ResultCode QX_CALL QX_SteamAPI_CatUserFilePath(char* destination, int32_t capacity,
                                                      const char* fileName);

/* Returns 1 if there is a file, or a folder, of that name in the user's folder; 0 if not, for a
 * null fileName, a path that does not fit, and without Steam. */
QX_API int32_t QX_CALL QX_SteamAPI_IsFileExist(const char* fileName);

/* Reads a whole file of the user's folder.
 *
 * fileName  the file's name
 * buffer    receives the file's bytes and no terminator
 * capacity  the bytes at buffer
 *
 * Returns 0; QX_BAD_ARGUMENT for a null pointer, a capacity of 0, and a file larger than capacity,
 * with nothing read; QX_NO_STEAM; QX_FAILED where Steam gives no folder or the path does not fit;
 * QX_NOT_FOUND where there is no file; QX_READ_FAILED for an empty file, or one that could not be
 * read whole; QX_OPEN_FAILED. The result does not tell the file's size. */
QX_API ResultCode QX_CALL QX_SteamAPI_ReadFile(const char* fileName, void* buffer,
                                               uint32_t capacity);

/* Writes a file of the user's folder anew. A failed write can leave a shortened file.
 *
 * fileName  the file's name
 * data      size bytes
 * size      1 or more
 *
 * Returns 0; QX_BAD_ARGUMENT for a null pointer or a size of 0; QX_NO_STEAM; QX_FAILED where Steam
 * gives no folder or the path does not fit; QX_OPEN_FAILED; QX_WRITE_FAILED. */
QX_API ResultCode QX_CALL QX_SteamAPI_WriteFile(const char* fileName, const void* data,
                                                uint32_t size);

/* ---- Steam: the user's files in the cloud ---------------------------------------------------- */

/* Mind how the results for a bad argument and for a missing Steam differ. What becomes of a name is
 * Steam's affair. */

/* Writes a file of size bytes, 1 or more, at data.
 * Returns 0; QX_FAILED where Steam refuses; QX_BAD_ARGUMENT for a null pointer or a size of 0 or
 * below; QX_NO_STEAM. */
QX_API ResultCode QX_CALL QX_SteamAPI_RemoteStorageFileWrite(const char* name, const void* data,
                                                             int32_t size);

/* Reads a file into the size bytes at buffer.
 * Returns the bytes read, as Steam counts them; QX_BAD_ARGUMENT for a null pointer; QX_NO_STEAM.
 * The size goes to Steam untested. */
QX_API int32_t QX_CALL QX_SteamAPI_RemoteStorageFileRead(const char* name, void* buffer,
                                                         int32_t size);

/* Deletes a file, here and in the cloud.
 * Returns 0; QX_FAILED where Steam refuses, and without Steam; QX_BAD_ARGUMENT for a null name. */
QX_API ResultCode QX_CALL QX_SteamAPI_RemoteStorageFileDelete(const char* name);

/* Returns 1 if there is such a file; 0 if not, for a null name, and without Steam. */
QX_API int32_t QX_CALL QX_SteamAPI_RemoteStorageFileExist(const char* name);

/* Takes a file out of the cloud and keeps it on this machine.
 * Returns 1 if done; 0 where Steam refuses, for a null name, and without Steam. */
QX_API int32_t QX_CALL QX_SteamAPI_RemoteStorageFileForget(const char* name);

/* Returns a file's size in bytes as Steam tells it; 0 for a null name, and without Steam. */
QX_API int32_t QX_CALL QX_SteamAPI_RemoteStorageGetFileSize(const char* name);

/* Returns the number of files; QX_FAILED, which is no count, without Steam. */
QX_API int32_t QX_CALL QX_SteamAPI_RemoteStorageGetFileCount(void);

/* Copies the name of one file.
 *
 * index        0 up to the number of files
 * destination  receives the name with its terminator
 * capacity     the bytes at destination
 *
 * Returns 0, also for a name that does not fit; QX_BAD_ARGUMENT for a null destination or a
 * capacity of 0; QX_FAILED without Steam. */
QX_API ResultCode QX_CALL QX_SteamAPI_RemoteStorageGetFileName(int32_t index, char* destination,
                                                               uint32_t capacity);

/* Returns 1 if the user has the cloud switched on; 0 if not, and without Steam. */
QX_API int32_t QX_CALL QX_SteamAPI_RemoteStorageIsCloudEnabledForAccount(void);

/* Returns 1 if the cloud is switched on for the game; 0 if not, and without Steam. */
QX_API int32_t QX_CALL QX_SteamAPI_RemoteStorageIsCloudEnabledForApp(void);

/* Switches the cloud on (not 0) or off (0) for the game.
 * Returns 0 when done and 1 without Steam: 1 tells that nothing was done. Only the low 8 bits of
 * the result are defined. */
QX_API uint8_t QX_CALL QX_SteamAPI_RemoteStorageSetCloudEnabledForApp(int32_t enabled);

/* ---- Steam: HTTP ----------------------------------------------------------------------------- */

/* Sends one HTTP request and waits for the response, whose body it prints to the standard output:
 * "Response: ", the body up to its first NUL, a line end, flushed.
 *
 * url          the address
 * method       1 GET, 2 HEAD, 3 POST, 4 PUT, 5 DELETE, 6 OPTIONS, 7 PATCH
 * contentType  of the body, or null
 * body         bodyLength bytes, or null
 * bodyLength   0 for no body
 *
 * Only a POST with a content type, a body and a length sends its body. An HTTP error status is a
 * response like any other.
 * Returns 0; QX_NO_STEAM without Steam, or where Steam could not send the request or get the whole
 * response; QX_BAD_ARGUMENT for a null url; QX_OUT_OF_MEMORY where the body cannot be held. Nothing
 * is printed unless the result is 0. */
QX_API ResultCode QX_CALL QX_SteamAPI_HTTPRequest(const char* url, int32_t method,
                                                  const char* contentType, const uint8_t* body,
                                                  uint32_t bodyLength);

/* ---- The host -------------------------------------------------------------------------------- */

/* Writes the display modes of an adapter in the format X8R8G8B8 as JSON text, lines ending in "\n":
 *
 *     {
 *     "DisplayMode": [
 *       {"Width": 800, "Height": 600, "Hz": 60},
 *       {"Width": 1024, "Height": 768, "Hz": 75}
 *     ]
 *     }
 *
 * adapter   0 for the first
 * reserved  not read
 * buffer    receives the text with its terminator; 65 bytes a mode and 23 more are enough
 * capacity  the bytes at buffer
 *
 * Returns the characters written, terminator not counted; 0 for a null buffer or a capacity of 0,
 * without Direct3D 9, and for an adapter without modes, with nothing written; 0 too for a text that
 * does not fit, whose beginning is then in the buffer, with its terminator. A mode that Direct3D
 * does not tell is left out; if it is the last one, a comma stays behind the list. */
QX_API uint32_t QX_CALL QX_EnumDisplayMode(uint32_t adapter, uint32_t reserved, char* buffer,
                                           uint32_t capacity);

/* Asks for one display mode in the format X8R8G8B8.
 *
 * adapter      0 for the first
 * reserved     not read
 * width        pixels; only the low 16 bits are read, as a signed number, here and in height
 * height       pixels
 * refreshRate  in Hz
 *
 * Returns 0 if the adapter has exactly this mode; QX_BAD_ARGUMENT if not, and without Direct3D 9.
 */
QX_API ResultCode QX_CALL QX_CheckDisplayMode(uint32_t adapter, uint32_t reserved, int32_t width,
                                              int32_t height, uint32_t refreshRate);

/* Tells whether a server is one of the game's own, by two names, which are compared character for
 * character. Neither is tested for null, and no certificate is checked.
 *
 * certificateName  the name in the server's certificate
 * hostName         the name under which the caller reached it
 *
 * Looks label 5000 up, then 5001; the first match ends the call.
 * Returns 1 if hostName is one of these two settings, of at most 1023 bytes, or certificateName the
 * name of the game's own domain with "*." ahead, or that of the CI game API (both stand in
 * src/config/deployment.h); else 0. The "*" stands for itself. Only the low 8 bits of the result
 * are defined. */
QX_API uint8_t QX_CALL QX_CheckCert(const char* certificateName, const char* hostName);

/* Paths are in the ANSI code page, as for the A functions of Windows.
 *
 * Removes a file; of a link, the link.
 * Returns 0; QX_FAILED where the system refuses, as for a file that is read-only, open elsewhere or
 * not there; QX_BAD_ARGUMENT for a null path. */
QX_API ResultCode QX_CALL QX_RemoveFile(const char* path);

/* Removes a directory with all that is in it.
 *
 * path           the directory
 * keepDirectory  not 0: remove only what is in it
 *
 * An entry that cannot be removed stays, and the rest goes all the same. Nothing outside the
 * directory is removed: a link or junction in it goes and is not followed. Where path itself is
 * one, the directory that it leads to is emptied, and the link goes. An entry stays if its path has
 * more than 259 characters, or that of its directory more than 255, or if its name holds a
 * separator or ends in a dot or a blank. An empty path, and a drive without a directory ("C:"),
 * name nothing.
 * Returns 0 if the directory is gone, and always with keepDirectory; QX_FAILED if it is not, or was
 * not there; QX_BAD_ARGUMENT for a null path. */
QX_API ResultCode QX_CALL QX_RemoveDirectory(const char* path, uint32_t keepDirectory);

/* ---- Fixed answers --------------------------------------------------------------------------- */

/* Kept for older launchers. They do only what is said here. */

/* Returns 1. Only the low 8 bits of the result are defined. */
QX_API uint8_t QX_CALL QX_ExistClient(void);

/* Unpacks nothing.
 * Returns 0; QX_BAD_ARGUMENT if second, third or fourth is 0. */
QX_API ResultCode QX_CALL QX_Unzip(uint32_t first, uint32_t second, uint32_t third,
                                   uint32_t fourth);

/* Returns 0. */
QX_API int32_t QX_CALL QX_SteamAPI_GetMirvelURL(uint32_t first, uint32_t second, uint32_t third);

/* Returns the number that QX_ResetIllegalValue drew last, 0 if none. The process has one; callers
 * in several threads take turns. */
QX_API int32_t QX_CALL QX_GetIllegalValue(void);

/* Draws a number and returns it: the first of the runtime's generator (rand), which is seeded anew
 * with the time in seconds. Two calls in one second draw the same one. A caller that uses the same
 * runtime (msvcrt.dll) finds its own rand seeded anew as well. */
QX_API int32_t QX_CALL QX_ResetIllegalValue(void);

#ifdef __cplusplus
}
#endif

#endif /* LAUNCHER_DLL_H_ */
