// The module's own instance and the resource handle that dialogs, strings and
// bitmaps are loaded from. Inside the DLL DllMain sets the instance; a program
// that links the module's code directly uses its own executable.
#pragma once
#include <windows.h>
#include <string>

namespace fw {

class Module {
public:
    static HINSTANCE Instance();
    static void SetInstance(HINSTANCE h);
    static HINSTANCE ResourceHandle();
    static void SetResourceHandle(HINSTANCE h);
    // A string of the module's string table; empty when there is none.
    static std::string LoadStr(UINT id);
    // Set when the library is being unloaded: under the loader lock, window
    // owners forget their windows instead of destroying them.
    static void SetUnloading() { s_bUnloading = true; }
    static bool Unloading() { return s_bUnloading; }

private:
    static inline bool s_bUnloading = false;
};

// Switches the resource handle to the module's own for the duration of an
// exported call and puts the caller's back afterwards.
class ModuleState {
public:
    ModuleState();
    ~ModuleState();
    ModuleState(const ModuleState&) = delete;
    ModuleState& operator=(const ModuleState&) = delete;

private:
    HINSTANCE m_saved;
};

}  // namespace fw
