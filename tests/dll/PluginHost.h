// Zemblax.dll loaded as a host loads it, its eight functions bound by name,
// and its MessageBeep import redirected so that tests see every beep.
#pragma once
#include <windows.h>
#include <string>
#include <vector>
#include "host/PluginLibrary.h"

struct PluginHost : PluginLibrary {
    // Loads the DLL beside the test program once for the whole run.
    static PluginHost& Get();
    bool loaded = false;
};

// Beeps given by the DLL since the last call.
std::vector<UINT> TakeBeeps();

// Posted to a HostWindow, it makes the host call ZEMBLAX_Stop from its own
// window procedure, as a host's menu command or timer would.
constexpr UINT kHostStopRun = WM_APP + 7;
// A window property of a HostWindow naming a child window that the host closes
// the next time its main window is enabled (as a modal dialog of it ends).
constexpr const char* kCloseOnEnable = "ZemblaxCloseOnEnable";

// A top-level window standing for the host's main window.
class HostWindow {
public:
    HostWindow(int x = 0, int y = 0, int w = 1024, int h = 768);
    ~HostWindow();
    HWND hwnd() const { return m_hwnd; }

private:
    HWND m_hwnd;
};
