/* LauncherDll: the support library of the game's launcher and of the client that it starts.
 *
 * For C and C++. Link with the import library, or load LauncherDll.dll and look up the decorated
 * names: `_QX_Allocate@8` is an underscore, the name, an at sign and four bytes for each argument.
 *
 * On Windows every function uses the stdcall convention. No exception leaves a call. The library
 * starts no thread and keeps no pointer that it was given. Text is NUL-terminated and 8-bit, and is
 * passed on byte for byte. A `size` counts bytes that exist, a `capacity` bytes available,
 * terminator included. Pointers must be valid for what is read or written through them, and must
 * not be null unless the function's text mentions null.
 *
 * Functions return a ResultCode, or, in the file_cipher_ family, a CipherCode; some return a truth
 * value or a count instead. Similar functions can have different results: see each one's text. */

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

#define QX_SUCCEEDED 0         /* the call did what it was asked to do */
#define QX_FAILED (-1)         /* the operation failed: a system call, a lookup, a text too short */
#define QX_BAD_ARGUMENT (-2)   /* a null pointer, a zero size, a destination too small */
#define QX_NO_STEAM (-3)       /* a Steam interface is missing, or a Steam request failed */
#define QX_NOT_FOUND (-4)      /* no such string label, no such file */
#define QX_OUT_OF_MEMORY (-5)  /* memory ran out, or a copy to the caller failed */
#define QX_OPEN_FAILED (-1000) /* a local file could not be opened */
#define QX_WRITE_FAILED (-1001) /* a local file could not be written */
#define QX_READ_FAILED (-1002)  /* a local file could not be read, or is empty */
#define QX_SIZE_REFUSED (-1005) /* a data size outside the range that QX_Decode accepts */

/* 0 is success and 7 is every failure. Compare it with 0: QX_IsFailed does not recognise the 7. */
typedef int32_t CipherCode;

#define QX_CIPHER_SUCCEEDED 0 /* the call did what it was asked to do */
#define QX_CIPHER_FAILED 7    /* the only failure, whatever the reason */

/* The number of a text in the string table; QX_LoadString lists them. */
typedef int32_t StringLabel;

/* ---- Results and memory -------------------------------------------------------------------- */

/* Returns 1 if value is negative, else 0. */
QX_API int32_t QX_CALL QX_IsFailed(int32_t value);

/* Returns 1 if value is zero or positive, else 0. */
QX_API int32_t QX_CALL QX_IsSucceeded(int32_t value);

/* Allocates a block of memory, filled with zero bytes.
 *
 * block  receives the block's address, or null if memory ran out; must not be null, not checked
 * size   the block's size in bytes
 *
 * Returns 0; QX_BAD_ARGUMENT for a size of 0, with *block unwritten; QX_OUT_OF_MEMORY. The block is
 * the caller's and must be freed by QX_Deallocate. */
QX_API ResultCode QX_CALL QX_Allocate(void** block, uint32_t size);

/* Frees a block of QX_Allocate or QX_LoadStringToMemory. Null is allowed. Always returns 0. */
QX_API ResultCode QX_CALL QX_Deallocate(void* block);

/* ---- Settings and texts -------------------------------------------------------------------- */

/* Every lookup of a text, even one that fails, first prints the line
 *
 *     QX_LoadStringToMemory called with label: LABEL
 *
 * to the standard output, unflushed, and then loads "config.json" from the current directory:
 *
 * - A missing file is created with the defaults, completely or not at all, and the line
 *   "Created default config: config.json" is printed and flushed. A file that exists but cannot be
 *   opened is not changed: the defaults are used, and the same line is printed.
 * - An existing file must hold all twelve settings, each a JSON string: in the object "Orvane" the
 *   eight that are listed below, in the object "Settings" game_version, ssl_check, Is_Staging and
 *   Is_Shipping ("true" and "false" are strings too). If it does not, the lookup fails, even that
 *   of a fixed text, and the file is not changed. QX_IsStaging prints the reason.
 *
 * Nothing is cached: an edit of the file takes effect at the next lookup.
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
 * Returns 0; QX_BAD_ARGUMENT for a null destination or a capacity of 0 (nothing is printed or
 * loaded), and for a text that does not fit: if it is longer than capacity, destination is not
 * changed; if it has exactly capacity characters, destination becomes an empty text. Otherwise
 * returns what QX_LoadStringToMemory returns. */
QX_API ResultCode QX_CALL QX_LoadString(StringLabel label, char* destination, uint32_t capacity);

/* Makes a copy of a text.
 *
 * label  the text's number
 * text   receives the copy's address, only on success; its previous value is not freed
 *
 * Returns 0; QX_BAD_ARGUMENT for a null text (the line is printed, nothing is loaded);
 * QX_FAILED if the settings do not load; QX_NOT_FOUND for a label outside the table;
 * QX_OUT_OF_MEMORY. The copy is the caller's and must be freed by QX_UnloadStringFromMemory. A
 * setting that holds a NUL character ends there. An empty setting is a valid text. */
QX_API ResultCode QX_CALL QX_LoadStringToMemory(StringLabel label, char** text);

/* Frees a copy of QX_LoadStringToMemory.
 *
 * text  the address of the pointer to the copy; the pointer may be null, and is set to null
 *
 * Returns 0; QX_BAD_ARGUMENT for a null text. */
QX_API ResultCode QX_CALL QX_UnloadStringFromMemory(char** text);

/* Returns a text's length in characters, terminator not counted; 0 for a failed lookup, as for an
 * empty text. */
QX_API uint32_t QX_CALL QX_GetLengthOfRString(StringLabel label);

/* What this library is, 176 bytes. */
typedef struct SystemInformation {
  uint32_t numbers[4];  /* 0, 2, 5, 0 */
  char buildName[32];   /* the text of label 10, filled up with zero bytes */
  char vendorName[128]; /* the text of label 0, filled up with zero bytes */
} SystemInformation;

/* Fills a record with the library's build and vendor. Looks label 10 up, then label 0.
 *
 * record  receives 176 bytes
 * size    the bytes at record, 176 or more
 *
 * Returns 0, even if a lookup failed and left its field empty; QX_BAD_ARGUMENT for a null record or
 * a size below 176, with nothing written, printed or loaded. */
QX_API ResultCode QX_CALL QX_GetSystemInformation(SystemInformation* record, uint32_t size);

/* Checks whether "config.json" loads. It does not read the setting Is_Staging. A missing file is
 * created as by a lookup, with the line "Created default config: config.json"; nothing else is
 * printed to the standard output.
 *
 * Returns 1 if the file loads, was created, or could be neither opened nor created; 0 if it does
 * not load or memory runs out. In the last two cases it prints "Error: ", the reason and a line end
 * to the standard error stream, flushed. */
QX_API int32_t QX_CALL QX_IsStaging(void);

/* ---- The container ------------------------------------------------------------------------- */

/* A container holds a payload of n bytes: the magic "BFBR", then, enciphered by Blowfish in blocks
 * of 8 bytes from offset 4 on, the length n (4 bytes, little-endian), the payload's SHA-256 digest
 * (32 bytes), the payload at offset 40, and zero bytes up to the end of the last block. */

/* Returns the size in bytes of the container for a payload of size bytes: size + 36, rounded up to
 * a multiple of 8, plus 4; 0 for a size of 0x80000000 or more. */
QX_API uint32_t QX_CALL file_cipher_get_encode_size(uint32_t size);

/* Makes a container with the built-in key, the text of label 11000.
 *
 * payload  size bytes
 * size     1 to 0x7FFFFFFF
 * output   receives file_cipher_get_encode_size(size) bytes, which the library cannot check. It may
 *          overlap payload if payload is at output + 40 or above; the container then overwrites
 *          as much of the payload as it covers
 *
 * Returns 0, or 7 with output unwritten: for a null argument, a size out of range, or if the system
 * cannot compute the digest. Nothing is allocated, kept or printed. */
QX_API CipherCode QX_CALL file_cipher_encode(const uint8_t* payload, uint32_t size,
                                             uint8_t* output);

/* Deciphers a container in place and reports where its payload is.
 *
 * block          blockSize bytes, read and rewritten: if the size, the magic and the key's length
 *                are valid, everything from offset 4 on is deciphered, even if the call then fails
 * blockSize      the container's size in bytes
 * key            keyLength bytes, taken as they are
 * keyLength      4 to 56
 * payloadSize    receives the payload's size in bytes, prefix not counted
 * payloadOffset  receives the distance in bytes from block to the payload after the prefix
 * prefix         text that the payload must begin with; null or empty for none
 *
 * Returns 0, or 7 for every failure: a null argument, a size or magic that no container has, a key
 * length out of range, a wrong key, damaged data, a missing prefix, or if the system cannot compute
 * the digest. The outputs are written if the digest matches; if only the prefix is missing, they
 * describe the whole payload. Nothing is allocated, kept or printed. */
QX_API CipherCode QX_CALL file_cipher_decode(uint8_t* block, uint32_t blockSize, const uint8_t* key,
                                             int32_t keyLength, uint32_t* payloadSize,
                                             uint32_t* payloadOffset, const char* prefix);

/* Returns the size in bytes of the container for a payload of size bytes, as
 * file_cipher_get_encode_size does, but without an upper limit: the 32-bit sum can wrap around. */
QX_API uint32_t QX_CALL QX_GetEncodeDataSize(uint32_t size);

/* Makes a container with the built-in key. Note the order: output is the first argument here.
 *
 * output   receives QX_GetEncodeDataSize(size) bytes; overlap as in file_cipher_encode
 * payload  size bytes
 * size     1 or more
 *
 * Returns 0, or QX_FAILED with output unwritten: for a null argument, a size of 0 or below, or if
 * the system cannot compute the digest. QX_Decode refuses a container of more than 1,048,575
 * bytes. */
QX_API ResultCode QX_CALL QX_Encode(uint8_t* output, const uint8_t* payload, int32_t size);

/* Deciphers a container in place with the key of the string table and reports where its payload is.
 *
 * block          blockSize bytes, read; rewritten from offset 4 on if they look like a container
 * blockSize      1 to 1,048,575
 * payloadSize    receives the payload's size in bytes, a skipped marker not counted
 * payloadOffset  receives the distance in bytes from block to the payload; 0 if the block is no
 *                intact container
 * checkMarker    not 0: skip the signature marker if the payload begins with it; only the low 8
 *                bits are read
 *
 * Looks label 11000 up, then 11001 if checkMarker is not 0, then 11000 again.
 *
 * Returns QX_FAILED for a null argument or a failed lookup, QX_SIZE_REFUSED for a blockSize out of
 * range, both with nothing written. Otherwise returns 0, and the outputs describe the data:
 *
 *     block                              payloadSize  payloadOffset  bytes from offset 4 on
 *     no container: its size or magic    0            0              unchanged
 *     wrong length or digest inside      0            0              deciphered
 *     intact, no marker skipped          n            40             deciphered
 *     intact, marker skipped             n - 22       62             deciphered */
QX_API ResultCode QX_CALL QX_Decode(uint8_t* block, int32_t blockSize, uint32_t* payloadSize,
                                    uint32_t* payloadOffset, uint32_t checkMarker);

/* Returns 22, the signature marker's length in bytes. */
QX_API uint32_t QX_CALL QX_GetSignatureSize(void);

/* Writes the signature marker and then the data, without a terminator.
 *
 * destination  receives dataSize + 22 bytes; it may overlap data if data is at destination + 22 or
 *              above
 * capacity     the bytes at destination
 * data         dataSize bytes
 * dataSize     0 or more
 *
 * Returns 1; or 0 with nothing written, for a null argument or a capacity that is too small.
 * Only the low 8 bits of the result are defined. */
QX_API uint8_t QX_CALL QX_SignSignature(uint8_t* destination, uint32_t capacity,
                                        const uint8_t* data, uint32_t dataSize);

/* ---- Starting the client -------------------------------------------------------------------- */

/* Starts the client with a launch line and waits until it has ended, at least half a second and
 * without a time limit.
 *
 * clientPath  the program, at most 2028 characters
 * data        dataSize bytes that the client may read from this process while it runs, or null
 * dataSize    0 for no data
 *
 * The client's command line is its path in double quotes, a space, this process's id and the
 * address of a copy of the data, each as eight lower-case hexadecimal digits; without data the
 * address is eight zeros. dataSize is not part of it: if the client needs the size, begin the data
 * with it. The client gets a new console and the caller's environment and directory.
 *
 * Returns 0 after the client has ended, whatever its exit code; QX_FAILED if clientPath is null or
 * too long, or if the client could not be started. */
QX_API ResultCode QX_CALL QX_CreateProcess(const char* clientPath, const void* data,
                                           uint32_t dataSize);

/* Reads a number from the end of a text, the last 8 characters as hexadecimal digits, and cuts them
 * off.
 *
 * value  receives the number, or null. The 8 characters are read by strtoul: they may begin with
 *        spaces, a sign and "0x", and end at the first character that is no digit
 * text   loses its last 8 characters
 *
 * Returns 0; QX_BAD_ARGUMENT for a null text; QX_FAILED for a text of fewer than 8 characters, with
 * nothing written. */
QX_API ResultCode QX_CALL QX_RightDWORD(uint32_t* value, char* text);

/* Reads bytes from the end of a text, two hexadecimal digits for each byte, left to right.
 *
 * destination  receives count bytes and zero bytes up to capacity; null to check only the text
 * capacity     the bytes at destination, count or more
 * text         not changed
 * count        the number of bytes to read
 *
 * A character that is no hexadecimal digit counts as 0.
 *
 * Returns 0; QX_BAD_ARGUMENT for a null text; QX_FAILED for a text of fewer than 2 * count
 * characters or a capacity below count, with nothing written. */
QX_API ResultCode QX_CALL QX_RightBinary(uint8_t* destination, uint32_t capacity, const char* text,
                                         uint32_t count);

/* Reads an address from the end of a text: the last 8 characters as hexadecimal digits, the most
 * significant first.
 *
 * address  receives the address, or null
 * text     not changed
 *
 * A character that is no hexadecimal digit counts as 0.
 *
 * Returns 0; QX_BAD_ARGUMENT for a null text; QX_FAILED for a text of fewer than 8 characters. */
QX_API ResultCode QX_CALL QX_RightAddress(uint32_t* address, const char* text);

/* Returns this process's arguments, split by the system's rules, in the ANSI code page.
 *
 * block     receives the address of the arguments, each NUL-terminated, one directly after the
 *           other; written only on success; the caller's, to be freed by LocalFree
 * capacity  the largest number of characters in total, terminators included
 * count     receives the number of arguments, even if the call fails after the split
 *
 * Neither pointer is checked for null.
 *
 * Returns 0; QX_BAD_ARGUMENT for arguments of more than capacity characters; QX_FAILED if the
 * system could not split or convert them, or memory ran out. */
QX_API ResultCode QX_CALL QX_CommandLineToArgvA(char** block, uint32_t capacity, int32_t* count);

/* ---- Steam: session and identity ------------------------------------------------------------ */

/* The Steam client library, steam_api.dll, is loaded when the first of these functions is called,
 * from the program's folder, that of LauncherDll.dll or the system's, in this order. If it is
 * missing, every function returns the same as without Steam. Call QX_SteamAPI_Init before the two
 * language functions; the others get the interface that they need from Steam themselves. If a text
 * does not fit, the destination becomes an empty text. */

/* Starts the connection to the Steam client.
 *
 * Returns 1 if Steam runs and knows the game; 0 if Steam does not start (what an earlier call found
 * stays in use), or has no interface for games. */
QX_API int32_t QX_CALL QX_SteamAPI_Init(void);

/* Ends the connection to the Steam client. Do not call a language function until QX_SteamAPI_Init
 * has succeeded again. */
QX_API void QX_CALL QX_SteamAPI_Shutdown(void);

/* Returns 1 if the Steam client runs, else 0. May be called before QX_SteamAPI_Init. */
QX_API int32_t QX_CALL QX_SteamAPI_IsSteamRunning(void);

/* Asks Steam to restart the game if it was not started by Steam. May be called before
 * QX_SteamAPI_Init.
 *
 * appId  the game's number at Steam
 *
 * Returns 0 if Steam restarts the game, and the caller should end; QX_FAILED if no restart is
 * needed, or without Steam. */
QX_API ResultCode QX_CALL QX_SteamAPI_RestartAppIfNecessary(uint32_t appId);

/* Returns 1 if the user is logged on to Steam, else 0, even without Steam. Only the low 8 bits of
 * the result are defined. */
QX_API uint8_t QX_CALL QX_SteamAPI_IsLoggedOn(void);

/* Returns the account's 64-bit identifier, 0 without Steam. */
QX_API uint64_t QX_CALL QX_SteamAPI_GetSteamIDConvertToUint64(void);

/* Copies the user's name.
 *
 * destination  receives the name with its terminator
 * capacity     the bytes at destination
 *
 * Returns 0, also without Steam, but then with destination unwritten; QX_BAD_ARGUMENT for a null
 * destination, a capacity of 0, and a name that does not fit. */
QX_API ResultCode QX_CALL QX_SteamAPI_GetPersonaName(char* destination, uint32_t capacity);

/* Requests a ticket by which a server can identify the user, and writes it in upper-case
 * hexadecimal digits.
 *
 * destination  receives two characters for each byte of the ticket, which has at most 1024, and a
 *              terminator
 * capacity     the bytes at destination
 *
 * Returns the number of characters written, terminator not counted; QX_FAILED without Steam, if
 * Steam returns no ticket, for a null destination, and for a capacity that is too small. Even a
 * call with a bad destination requests a ticket. No ticket is ever cancelled. */
QX_API int32_t QX_CALL QX_SteamAPI_GetSteamAuthTicket(char* destination, uint32_t capacity);

/* Copies the list of the languages that the game has.
 *
 * destination  receives the list with its terminator
 * capacity     the bytes at destination
 *
 * Returns 0, even for a list that does not fit; QX_BAD_ARGUMENT for a null destination or a
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

/* A file's path is the user's folder, as Steam returns it, a backslash and fileName, which is not
 * changed. The path has at most 259 characters. */

/* Writes the path of the user's folder.
 *
 * destination  receives the path with its terminator
 * capacity     the bytes at destination
 *
 * Returns 1, not 0, on success; 0 if Steam refuses, for example if capacity is too small;
 * QX_BAD_ARGUMENT for a null destination or a capacity of 0 or below; QX_NO_STEAM. */
QX_API ResultCode QX_CALL QX_SteamAPI_GetUserDataFolder(char* destination, int32_t capacity);

/* Writes the path of a file in the user's folder, whether the file exists or not.
 *
 * destination  receives the path with its terminator
 * capacity     the bytes at destination
 * fileName     the file's name
 *
 * Returns 0; QX_FAILED if Steam returns no folder, and for a path that does not fit, with an empty
 * text at destination; QX_BAD_ARGUMENT for a null pointer or a capacity of 0 or below; QX_NO_STEAM.
 */
QX_API ResultCode QX_CALL QX_SteamAPI_CatUserFilePath(char* destination, int32_t capacity,
                                                      const char* fileName);

/* Returns 1 if a file, or a folder, of that name exists in the user's folder; 0 if not, for a null
 * fileName, a path that is too long, and without Steam. */
QX_API int32_t QX_CALL QX_SteamAPI_IsFileExist(const char* fileName);

/* Reads a whole file of the user's folder.
 *
 * fileName  the file's name
 * buffer    receives the file's bytes and no terminator
 * capacity  the bytes at buffer
 *
 * Returns 0; QX_BAD_ARGUMENT for a null pointer, a capacity of 0, and a file larger than capacity,
 * with nothing read; QX_NO_STEAM; QX_FAILED if Steam returns no folder or the path is too long;
 * QX_NOT_FOUND if the file does not exist; QX_READ_FAILED for an empty file, or one that could not
 * be read completely; QX_OPEN_FAILED. The file's size is not reported. */
QX_API ResultCode QX_CALL QX_SteamAPI_ReadFile(const char* fileName, void* buffer,
                                               uint32_t capacity);

/* Creates or replaces a file in the user's folder. A failed write can leave a shortened file.
 *
 * fileName  the file's name
 * data      size bytes
 * size      1 or more
 *
 * Returns 0; QX_BAD_ARGUMENT for a null pointer or a size of 0; QX_NO_STEAM; QX_FAILED if Steam
 * returns no folder or the path is too long; QX_OPEN_FAILED; QX_WRITE_FAILED. */
QX_API ResultCode QX_CALL QX_SteamAPI_WriteFile(const char* fileName, const void* data,
                                                uint32_t size);

/* ---- Steam: the user's files in the cloud ---------------------------------------------------- */

/* Note that the results for a bad argument and for a missing Steam differ from function to
 * function. The library passes a name to Steam unchanged. */

/* Writes a file of size bytes, 1 or more, at data.
 *
 * Returns 0; QX_FAILED if Steam refuses; QX_BAD_ARGUMENT for a null pointer or a size of 0 or
 * below; QX_NO_STEAM. */
QX_API ResultCode QX_CALL QX_SteamAPI_RemoteStorageFileWrite(const char* name, const void* data,
                                                             int32_t size);

/* Reads a file into the size bytes at buffer.
 *
 * Returns the number of bytes read, as Steam reports it; QX_BAD_ARGUMENT for a null pointer;
 * QX_NO_STEAM. The size is passed to Steam without a check. */
QX_API int32_t QX_CALL QX_SteamAPI_RemoteStorageFileRead(const char* name, void* buffer,
                                                         int32_t size);

/* Deletes a file, here and in the cloud.
 *
 * Returns 0; QX_FAILED if Steam refuses, and without Steam; QX_BAD_ARGUMENT for a null name. */
QX_API ResultCode QX_CALL QX_SteamAPI_RemoteStorageFileDelete(const char* name);

/* Returns 1 if the file exists; 0 if not, for a null name, and without Steam. */
QX_API int32_t QX_CALL QX_SteamAPI_RemoteStorageFileExist(const char* name);

/* Removes a file from the cloud and keeps it on this machine.
 *
 * Returns 1 on success; 0 if Steam refuses, for a null name, and without Steam. */
QX_API int32_t QX_CALL QX_SteamAPI_RemoteStorageFileForget(const char* name);

/* Returns a file's size in bytes as Steam reports it; 0 for a null name, and without Steam. */
QX_API int32_t QX_CALL QX_SteamAPI_RemoteStorageGetFileSize(const char* name);

/* Returns the number of files; QX_FAILED without Steam. */
QX_API int32_t QX_CALL QX_SteamAPI_RemoteStorageGetFileCount(void);

/* Copies the name of one file.
 *
 * index        0 or more, below the number of files
 * destination  receives the name with its terminator
 * capacity     the bytes at destination
 *
 * Returns 0, even for a name that does not fit; QX_BAD_ARGUMENT for a null destination or a
 * capacity of 0; QX_FAILED without Steam. */
QX_API ResultCode QX_CALL QX_SteamAPI_RemoteStorageGetFileName(int32_t index, char* destination,
                                                               uint32_t capacity);

/* Returns 1 if the user has the cloud switched on; 0 if not, and without Steam. */
QX_API int32_t QX_CALL QX_SteamAPI_RemoteStorageIsCloudEnabledForAccount(void);

/* Returns 1 if the cloud is switched on for the game; 0 if not, and without Steam. */
QX_API int32_t QX_CALL QX_SteamAPI_RemoteStorageIsCloudEnabledForApp(void);

/* Switches the cloud on (not 0) or off (0) for the game.
 *
 * Returns 0 on success and 1 without Steam: here 1 means that nothing was done. Only the low 8 bits
 * of the result are defined. */
QX_API uint8_t QX_CALL QX_SteamAPI_RemoteStorageSetCloudEnabledForApp(int32_t enabled);

/* ---- Steam: HTTP ----------------------------------------------------------------------------- */

/* Sends one HTTP request, waits for the response and prints its body to the standard output:
 * "Response: ", the body up to its first NUL, a line end, flushed.
 *
 * url          the address
 * method       1 GET, 2 HEAD, 3 POST, 4 PUT, 5 DELETE, 6 OPTIONS, 7 PATCH
 * contentType  of the body, or null
 * body         bodyLength bytes, or null
 * bodyLength   0 for no body
 *
 * The body is sent only with a POST that has a content type, a body and a length. A response with
 * an HTTP error status is not a failure.
 *
 * Returns 0; QX_NO_STEAM without Steam, or if Steam could not send the request or get the whole
 * response; QX_BAD_ARGUMENT for a null url; QX_OUT_OF_MEMORY if there is no memory for the body.
 * Nothing is printed unless the result is 0. */
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
 * buffer    receives the text with its terminator; 65 bytes for each mode and 23 more are enough
 * capacity  the bytes at buffer
 *
 * Returns the number of characters written, terminator not counted; 0, with nothing written, for a
 * null buffer or a capacity of 0, without Direct3D 9, and for an adapter without modes; 0 also for
 * a text that does not fit, with its beginning and a terminator in the buffer. A mode that Direct3D
 * does not report is left out; if that is the last one, a comma remains after the list. */
QX_API uint32_t QX_CALL QX_EnumDisplayMode(uint32_t adapter, uint32_t reserved, char* buffer,
                                           uint32_t capacity);

/* Checks whether an adapter has a display mode in the format X8R8G8B8.
 *
 * adapter      0 for the first
 * reserved     not read
 * width        in pixels; only the low 16 bits are read, as a signed number
 * height       in pixels; only the low 16 bits are read, as a signed number
 * refreshRate  in Hz
 *
 * Returns 0 if the adapter has exactly this mode; QX_BAD_ARGUMENT if not, and without Direct3D 9.
 */
QX_API ResultCode QX_CALL QX_CheckDisplayMode(uint32_t adapter, uint32_t reserved, int32_t width,
                                              int32_t height, uint32_t refreshRate);

/* Checks by two names whether a server is one of the game's own. Names are compared character for
 * character. Neither is checked for null, and no certificate is checked.
 *
 * certificateName  the name in the server's certificate
 * hostName         the name by which the caller reached it
 *
 * Looks label 5000 up, then 5001; the first match ends the call.
 *
 * Returns 1 if hostName is one of these two settings, of at most 1023 bytes, or if certificateName
 * is "*." with the name of the game's own domain, or is the name of the CI game API (both are in
 * src/config/deployment.h); else 0. The "*" is an ordinary character. Only the low 8 bits of the
 * result are defined. */
QX_API uint8_t QX_CALL QX_CheckCert(const char* certificateName, const char* hostName);

/* Removes a file, or a link itself.
 *
 * path  in the ANSI code page, as for the A functions of Windows
 *
 * Returns 0; QX_FAILED if the system refuses, for example because the file is read-only, open in
 * another program or does not exist; QX_BAD_ARGUMENT for a null path. */
QX_API ResultCode QX_CALL QX_RemoveFile(const char* path);

/* Removes a directory and everything in it.
 *
 * path           the directory, in the ANSI code page
 * keepDirectory  not 0: remove only what is in it
 *
 * An entry that cannot be removed stays, and the others are removed. Nothing outside the directory
 * is removed: a link or junction in it is removed and not followed. If path itself is a link or a
 * junction, the directory that it leads to is emptied, and the link is removed. An entry stays if
 * its path has more than 259 characters, or that of its directory more than 255, or if its name
 * contains a separator or ends in a dot or a space. For an empty path, or a drive without a
 * directory ("C:"), nothing is removed.
 *
 * Returns 0 if the directory was removed, and always with keepDirectory; QX_FAILED if it was not
 * removed or did not exist; QX_BAD_ARGUMENT for a null path. */
QX_API ResultCode QX_CALL QX_RemoveDirectory(const char* path, uint32_t keepDirectory);

/* ---- Fixed results --------------------------------------------------------------------------- */

/* Kept for older launchers. They do only what their texts describe. */

/* Returns 1. Only the low 8 bits of the result are defined. */
QX_API uint8_t QX_CALL QX_ExistClient(void);

/* Does nothing. Returns 0; QX_BAD_ARGUMENT if second, third or fourth is 0. */
QX_API ResultCode QX_CALL QX_Unzip(uint32_t first, uint32_t second, uint32_t third,
                                   uint32_t fourth);

/* Returns 0. */
QX_API int32_t QX_CALL QX_SteamAPI_GetMirvelURL(uint32_t first, uint32_t second, uint32_t third);

/* Returns the number that QX_ResetIllegalValue drew last, 0 if none. There is one number for the
 * process; calls from several threads are serialised. */
QX_API int32_t QX_CALL QX_GetIllegalValue(void);

/* Draws a random number and returns it: seeds the runtime's generator (rand) with the time in
 * seconds and takes its first number. Two calls within one second draw the same number. This also
 * seeds rand for a caller that uses the same runtime (msvcrt.dll). */
QX_API int32_t QX_CALL QX_ResetIllegalValue(void);

#ifdef __cplusplus
}
#endif

#endif /* LAUNCHER_DLL_H_ */
