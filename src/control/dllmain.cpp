// Entry point of the control library. The COM server (class factory, registration,
// the control itself) lives beside this file.
#include <windows.h>

BOOL WINAPI DllMain(HINSTANCE, DWORD, LPVOID) { return TRUE; }
