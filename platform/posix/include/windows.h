// With this file a program written for Windows builds against the native layer: the examples
// include <windows.h>, as any caller of the library does.

#include "platform/win32.h"
