// The eight functions the host calls: each a thin call into the module object
// behind the export guard.
#include "zemblax.h"
#include "plugin/ExportGuard.h"
#include "plugin/TemplateApp.h"

extern "C" {

BOOL WINAPI ZEMBLAX_CheckVersion(UINT nHostVersion, UINT* pnModuleVersion) {
    if (pnModuleVersion) *pnModuleVersion = ZEMBLAX_INTERFACE_VERSION;
    return nHostVersion == ZEMBLAX_INTERFACE_VERSION;
}

BOOL WINAPI ZEMBLAX_Initialize(LPCSTR pszBasePath) {
    return Guarded(__func__, FALSE, [&] { return TheApp().Initialize(pszBasePath); });
}

BOOL WINAPI ZEMBLAX_Start(HWND hwndHost) {
    return Guarded(__func__, FALSE, [&] { return TheApp().Start(hwndHost); });
}

int WINAPI ZEMBLAX_GetState(void) {
    return Guarded(__func__, ZEMBLAX_STATE_IDLE, [] { return TheApp().GetRunState(); });
}

BOOL WINAPI ZEMBLAX_Stop(void) {
    return Guarded(__func__, FALSE, [] { return TheApp().Stop(); });
}

BOOL WINAPI ZEMBLAX_Uninitialize(void) {
    return Guarded(__func__, FALSE, [] { return TheApp().Uninitialize(); });
}

BOOL WINAPI ZEMBLAX_Configure(HWND hwndHost) {
    return Guarded(__func__, FALSE, [&] { return TheApp().Configure(hwndHost); });
}

int WINAPI ZEMBLAX_GetNext(HWND hwndHost, HGLOBAL hDibHeader, HGLOBAL hDibBits,
                           const RECT* prcHost, LPSTR pszLabel, int* pnOrientation,
                           RECT* prcTake, BOOL bStepBackAndAsk, BOOL* pbTemplateDone) {
    return Guarded(__func__, -1, [&] {
        return TheApp().GetNext(hwndHost, hDibHeader, hDibBits, prcHost, pszLabel,
                                pnOrientation, prcTake, bStepBackAndAsk, pbTemplateDone);
    });
}

}  // extern "C"
