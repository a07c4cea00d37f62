// Zemblax.dll loaded as a host loads it, its eight functions bound by name,
// and its MessageBeep import redirected so that tests see every beep.
#pragma once
#include <windows.h>
#include <string>
#include <vector>
#include "zemblax.h"

struct PluginHost {
    // Loads the DLL beside the test program once for the whole run.
    static PluginHost& Get();
    bool loaded = false;
    HMODULE module = nullptr;
    PFN_ZEMBLAX_CheckVersion CheckVersion = nullptr;
    PFN_ZEMBLAX_Initialize Initialize = nullptr;
    PFN_ZEMBLAX_Start Start = nullptr;
    PFN_ZEMBLAX_GetState GetState = nullptr;
    PFN_ZEMBLAX_Stop Stop = nullptr;
    PFN_ZEMBLAX_Uninitialize Uninitialize = nullptr;
    PFN_ZEMBLAX_Configure Configure = nullptr;
    PFN_ZEMBLAX_GetNext GetNext = nullptr;
};

// Beeps given by the DLL since the last call.
std::vector<UINT> TakeBeeps();

// A top-level window standing for the host's main window.
class HostWindow {
public:
    HostWindow(int x = 0, int y = 0, int w = 1024, int h = 768);
    ~HostWindow();
    HWND hwnd() const { return m_hwnd; }

private:
    HWND m_hwnd;
};
