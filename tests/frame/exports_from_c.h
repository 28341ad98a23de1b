// Calls of the library from C.

#ifndef LAUNCHER_TESTS_FRAME_EXPORTS_FROM_C_H_
#define LAUNCHER_TESTS_FRAME_EXPORTS_FROM_C_H_

#ifdef __cplusplus
extern "C" {
#endif

// Takes and gives a block back. Returns 1 if all went well.
int UseLibraryFromC(void);

#ifdef __cplusplus
}
#endif

#endif  // LAUNCHER_TESTS_FRAME_EXPORTS_FROM_C_H_
