#include <windows.h>
#include "fw/Module.h"

BOOL WINAPI DllMain(HINSTANCE instance, DWORD reason, LPVOID) {
    if (reason == DLL_PROCESS_ATTACH) {
        fw::Module::SetInstance(instance);
        ::DisableThreadLibraryCalls(instance);
    }
    return TRUE;
}
