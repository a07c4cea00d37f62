#include "PluginHost.h"
#include <cstring>
#include <mutex>
#include "../unit/TestSupport.h"

namespace {
std::mutex g_beepMutex;
std::vector<UINT> g_beeps;

BOOL WINAPI RecordBeep(UINT type) {
    std::lock_guard<std::mutex> lock(g_beepMutex);
    g_beeps.push_back(type);
    return TRUE;
}

LRESULT CALLBACK HostProc(HWND h, UINT m, WPARAM w, LPARAM l) {
    if (m == kHostStopRun) return PluginHost::Get().Stop();
    if (m == WM_ENABLE && w)
        if (HWND child = static_cast<HWND>(RemovePropA(h, kCloseOnEnable))) DestroyWindow(child);
    return DefWindowProcA(h, m, w, l);
}
}  // namespace

PluginHost& PluginHost::Get() {
    static PluginHost& host = *[] {
        auto* p = new PluginHost;  // lives until the process ends, like a host's plug-in
        char path[MAX_PATH];
        GetModuleFileNameA(nullptr, path, MAX_PATH);
        std::string dll(path);
        dll = dll.substr(0, dll.find_last_of('\\') + 1) + "Zemblax.dll";
        p->loaded = p->Load(dll.c_str()) &&
                    testing_support::PatchImport(p->module(), "user32.dll", "MessageBeep",
                                                reinterpret_cast<void*>(&RecordBeep)) != nullptr;
        return p;
    }();
    return host;
}

std::vector<UINT> TakeBeeps() {
    std::lock_guard<std::mutex> lock(g_beepMutex);
    std::vector<UINT> b;
    b.swap(g_beeps);
    return b;
}

HostWindow::HostWindow(int x, int y, int w, int h) {
    WNDCLASSA wc{};
    wc.lpfnWndProc = HostProc;
    wc.hInstance = GetModuleHandleA(nullptr);
    wc.lpszClassName = "ZemblaxTestHost";
    RegisterClassA(&wc);
    m_hwnd = CreateWindowExA(0, wc.lpszClassName, "Host", WS_OVERLAPPEDWINDOW | WS_VISIBLE, x, y, w,
                             h, nullptr, nullptr, wc.hInstance, nullptr);
}

HostWindow::~HostWindow() {
    if (IsWindow(m_hwnd)) DestroyWindow(m_hwnd);
}
