#include <windows.h>
#include "fw/Module.h"

BOOL WINAPI DllMain(HINSTANCE instance, DWORD reason, LPVOID) {
    if (reason == DLL_PROCESS_ATTACH) {
        fw::Module::SetInstance(instance);
        ::DisableThreadLibraryCalls(instance);
    } else if (reason == DLL_PROCESS_DETACH) {
        // Runs before the module object's destructor: a host that unloads
        // us during a run gets no window calls under the loader lock.
        fw::Module::SetUnloading();
    }
    return TRUE;
}
