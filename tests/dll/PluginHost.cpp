#include "PluginHost.h"
#include <cstring>
#include <mutex>

namespace {
std::mutex g_beepMutex;
std::vector<UINT> g_beeps;

BOOL WINAPI RecordBeep(UINT type) {
    std::lock_guard<std::mutex> lock(g_beepMutex);
    g_beeps.push_back(type);
    return TRUE;
}

// Points the module's import of dll!name at replacement.
bool PatchImport(HMODULE module, const char* dll, const char* name, void* replacement) {
    auto* base = reinterpret_cast<BYTE*>(module);
    auto* dos = reinterpret_cast<IMAGE_DOS_HEADER*>(base);
    auto* nt = reinterpret_cast<IMAGE_NT_HEADERS*>(base + dos->e_lfanew);
    const auto& dir = nt->OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_IMPORT];
    for (auto* imp = reinterpret_cast<IMAGE_IMPORT_DESCRIPTOR*>(base + dir.VirtualAddress);
         imp->Name; ++imp) {
        if (lstrcmpiA(reinterpret_cast<char*>(base + imp->Name), dll) != 0) continue;
        auto* names = reinterpret_cast<IMAGE_THUNK_DATA*>(base + imp->OriginalFirstThunk);
        auto* slots = reinterpret_cast<IMAGE_THUNK_DATA*>(base + imp->FirstThunk);
        for (; names->u1.AddressOfData; ++names, ++slots) {
            if (IMAGE_SNAP_BY_ORDINAL(names->u1.Ordinal)) continue;
            auto* byName = reinterpret_cast<IMAGE_IMPORT_BY_NAME*>(base + names->u1.AddressOfData);
            if (std::strcmp(reinterpret_cast<char*>(byName->Name), name) != 0) continue;
            DWORD old;
            VirtualProtect(&slots->u1.Function, sizeof(void*), PAGE_READWRITE, &old);
            slots->u1.Function = reinterpret_cast<ULONG_PTR>(replacement);
            VirtualProtect(&slots->u1.Function, sizeof(void*), old, &old);
            return true;
        }
    }
    return false;
}

LRESULT CALLBACK HostProc(HWND h, UINT m, WPARAM w, LPARAM l) {
    if (m == kHostStopRun) return PluginHost::Get().Stop();
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
                    PatchImport(p->module(), "user32.dll", "MessageBeep",
                                reinterpret_cast<void*>(&RecordBeep));
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
