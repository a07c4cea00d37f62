// The eight functions the host calls. Each switches to the module's resources
// for the call and keeps every exception inside the module.
#include "zemblax.h"
#include "fw/Beep.h"
#include "fw/Module.h"
#include "plugin/TemplateApp.h"

namespace {

template <typename R, typename F>
R Guarded(R failure, F f) {
    try {
        fw::ModuleState state;
        return f(TheApp());
    } catch (...) {
        return failure;
    }
}

}  // namespace

extern "C" {

BOOL WINAPI ZEMBLAX_CheckVersion(UINT nHostVersion, UINT* pnModuleVersion) {
    if (pnModuleVersion) *pnModuleVersion = ZEMBLAX_INTERFACE_VERSION;
    return nHostVersion == ZEMBLAX_INTERFACE_VERSION;
}

BOOL WINAPI ZEMBLAX_Initialize(LPCSTR pszBasePath) {
    return Guarded(FALSE, [&](CTemplateApp& app) { return app.Initialize(pszBasePath); });
}

BOOL WINAPI ZEMBLAX_Start(HWND hwndHost) {
    return Guarded(FALSE, [&](CTemplateApp& app) { return app.Start(hwndHost); });
}

int WINAPI ZEMBLAX_GetState(void) {
    return Guarded(ZEMBLAX_STATE_IDLE, [](CTemplateApp& app) { return app.GetRunState(); });
}

BOOL WINAPI ZEMBLAX_Stop(void) {
    return Guarded(FALSE, [](CTemplateApp& app) { return app.Stop(); });
}

BOOL WINAPI ZEMBLAX_Uninitialize(void) {
    return Guarded(FALSE, [](CTemplateApp& app) { return app.Uninitialize(); });
}

BOOL WINAPI ZEMBLAX_Configure(HWND hwndHost) {
    return Guarded(FALSE, [&](CTemplateApp& app) { return app.Configure(hwndHost); });
}

int WINAPI ZEMBLAX_GetNext(HWND hwndHost, HGLOBAL hDibHeader, HGLOBAL hDibBits,
                           const RECT* prcHost, LPSTR pszLabel, int* pnOrientation,
                           RECT* prcTake, BOOL bStepBackAndAsk, BOOL* pbTemplateDone) {
    return Guarded(-1, [&](CTemplateApp& app) {
        return app.GetNext(hwndHost, hDibHeader, hDibBits, prcHost, pszLabel, pnOrientation,
                           prcTake, bStepBackAndAsk, pbTemplateDone);
    });
}

}  // extern "C"
