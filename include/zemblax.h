/* Zemblax.dll — acquisition templates for intraoral X-ray series.
 * The host's view of the plug-in: eight __stdcall functions, exported by their
 * plain names on both x86 and x64. Call them on the user-interface thread only.
 *
 * Order: ZEMBLAX_CheckVersion(ZEMBLAX_INTERFACE_VERSION, &v) -> ZEMBLAX_Initialize(folder)
 * -> any number of ZEMBLAX_Configure and of runs (ZEMBLAX_Start, ZEMBLAX_GetNext ...
 * until it returns -1 or the host ends the run, ZEMBLAX_Stop) -> ZEMBLAX_Uninitialize.
 */
#ifndef ZEMBLAX_H
#define ZEMBLAX_H

#include <windows.h>

#define ZEMBLAX_INTERFACE_VERSION 1
#define ZEMBLAX_STATE_RUNNING 2 /* ZEMBLAX_GetState: a run is active */
#define ZEMBLAX_STATE_IDLE 3    /* ZEMBLAX_GetState: no run */

#ifdef __cplusplus
extern "C" {
#endif

/* 1 when nHostVersion is 1; *pnModuleVersion (may be NULL) always receives 1. */
BOOL WINAPI ZEMBLAX_CheckVersion(UINT nHostVersion, UINT* pnModuleVersion);
/* Base folder of the data; the settings and templates lie in <base>\Template\. */
BOOL WINAPI ZEMBLAX_Initialize(LPCSTR pszBasePath);
/* Lets the user choose a template and starts a run; shows the preview window. */
BOOL WINAPI ZEMBLAX_Start(HWND hwndHost);
/* 2 while a run is active, else 3. */
int WINAPI ZEMBLAX_GetState(void);
/* Ends the run; 1 when one was active. */
BOOL WINAPI ZEMBLAX_Stop(void);
BOOL WINAPI ZEMBLAX_Uninitialize(void);
/* Opens the template designer modally. */
BOOL WINAPI ZEMBLAX_Configure(HWND hwndHost);
/* Reviews the last exposure (the two blocks pass to the module, which frees
 * them) and delivers the next take: its label (buffer of at least 4 bytes), its
 * orientation (1 = sensor turned by 90 degrees) and its rectangle relative to
 * the top-left corner of *prcHost. Returns the new position, or -1 when the run
 * ended or the call was refused. */
int WINAPI ZEMBLAX_GetNext(HWND hwndHost, HGLOBAL hDibHeader, HGLOBAL hDibBits,
                           const RECT* prcHost, LPSTR pszLabel, int* pnOrientation,
                           RECT* prcTake, BOOL bStepBackAndAsk, BOOL* pbTemplateDone);

/* Pointer types for hosts that bind with GetProcAddress. */
typedef BOOL(WINAPI* PFN_ZEMBLAX_CheckVersion)(UINT, UINT*);
typedef BOOL(WINAPI* PFN_ZEMBLAX_Initialize)(LPCSTR);
typedef BOOL(WINAPI* PFN_ZEMBLAX_Start)(HWND);
typedef int(WINAPI* PFN_ZEMBLAX_GetState)(void);
typedef BOOL(WINAPI* PFN_ZEMBLAX_Stop)(void);
typedef BOOL(WINAPI* PFN_ZEMBLAX_Uninitialize)(void);
typedef BOOL(WINAPI* PFN_ZEMBLAX_Configure)(HWND);
typedef int(WINAPI* PFN_ZEMBLAX_GetNext)(HWND, HGLOBAL, HGLOBAL, const RECT*, LPSTR, int*,
                                         RECT*, BOOL, BOOL*);

#ifdef __cplusplus
}
#endif

#endif /* ZEMBLAX_H */
