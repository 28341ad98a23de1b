// The module's entry point. It starts nothing: what a call needs, it acquires itself.

#include "platform/win32.h"

extern "C" BOOL WINAPI DllMain(HINSTANCE /*module*/, DWORD /*reason*/, LPVOID /*reserved*/) {
  return TRUE;
}
