// The host's utility library MEBRAKIT.dll: message boxes by string id and the
// display form of a take type. Bound at run time when the host has it loaded or
// it lies on the search path; otherwise our own stand-ins answer, so the
// module loads and works without the host.
#pragma once
#include <windows.h>

// Message boxes with a string of the module's German string table.
int HostBoxError(HWND owner, UINT nStringId);
int HostBoxInfo(HWND owner, UINT nStringId);
int HostBoxQuestion(HWND owner, UINT nStringId);  // nonzero for yes
int HostBoxWarning(HWND owner, UINT nStringId);
// Writes the display form of a take type ("11XI") into an 8-character buffer.
void HostGetTakeTypeDisp(const char* takeType, char* out8);
// True when the host's library was found and its functions are used.
bool HostLibraryBound();
