#include "IdleDriver.h"
#include <commctrl.h>
#include <cstdio>
#include "Samples.h"

namespace {
IdleDriver* g_driver = nullptr;
volatile LONGLONG g_deadline = 0;

DWORD WINAPI WatchdogThread(void*) {
    for (;;) {
        ::Sleep(250);
        const LONGLONG deadline = g_deadline;
        if (deadline && static_cast<LONGLONG>(::GetTickCount64()) > deadline) break;
    }
    std::printf("bench: a dialog did not show in time; giving up\n");
    std::fflush(stdout);
    ::ExitProcess(3);
}
}  // namespace

IdleDriver::IdleDriver() {
    g_driver = this;
    WNDCLASSA wc{};
    wc.lpfnWndProc = HostProc;
    wc.hInstance = ::GetModuleHandleA(nullptr);
    wc.hbrBackground = static_cast<HBRUSH>(::GetStockObject(WHITE_BRUSH));
    wc.lpszClassName = "ZemblaxBenchHost";
    ::RegisterClassA(&wc);
    m_host = ::CreateWindowExA(0, wc.lpszClassName, "Bench host", WS_OVERLAPPEDWINDOW | WS_VISIBLE,
                               0, 0, 1024, 768, nullptr, nullptr, wc.hInstance, nullptr);
    m_hook = ::SetWindowsHookExA(WH_CBT, CreationHook, nullptr, ::GetCurrentThreadId());
}

IdleDriver::~IdleDriver() {
    ::UnhookWindowsHookEx(m_hook);
    ::DestroyWindow(m_host);
    g_driver = nullptr;
}

void IdleDriver::Watchdog(int seconds) {
    static const HANDLE thread = ::CreateThread(nullptr, 0, WatchdogThread, nullptr, 0, nullptr);
    (void)thread;
    g_deadline = static_cast<LONGLONG>(::GetTickCount64()) + seconds * 1000LL;
}

void IdleDriver::Click(HWND dialog, int id) {
    ::PostMessageA(dialog, WM_COMMAND, MAKEWPARAM(id, BN_CLICKED),
                   reinterpret_cast<LPARAM>(::GetDlgItem(dialog, id)));
}

void IdleDriver::SelectItem(HWND list, int index) {
    ListView_SetItemState(list, -1, 0, LVIS_SELECTED | LVIS_FOCUSED);
    ListView_SetItemState(list, index, LVIS_SELECTED | LVIS_FOCUSED, LVIS_SELECTED | LVIS_FOCUSED);
}

void IdleDriver::OnIdle(HWND dialog) {
    // A dialog opened from this one sends its idles here.
    ::SetWindowSubclass(dialog, OwnerProc, 1, 0);
    if (m_steps.empty() || m_steps.front().painted || !::GetDlgItem(dialog, m_steps.front().id))
        return;
    Action action = std::move(m_steps.front().action);
    m_steps.pop_front();
    action(dialog);
}

LRESULT CALLBACK IdleDriver::HostProc(HWND hwnd, UINT msg, WPARAM wp, LPARAM lp) {
    if (msg == WM_ENTERIDLE && wp == MSGF_DIALOGBOX && g_driver)
        g_driver->OnIdle(reinterpret_cast<HWND>(lp));
    return ::DefWindowProcA(hwnd, msg, wp, lp);
}

LRESULT CALLBACK IdleDriver::OwnerProc(HWND hwnd, UINT msg, WPARAM wp, LPARAM lp, UINT_PTR,
                                       DWORD_PTR) {
    if (msg == WM_ENTERIDLE && wp == MSGF_DIALOGBOX && g_driver)
        g_driver->OnIdle(reinterpret_cast<HWND>(lp));
    if (msg != WM_NCDESTROY) return ::DefSubclassProc(hwnd, msg, wp, lp);
    ::RemoveWindowSubclass(hwnd, OwnerProc, 1);
    const LRESULT result = ::DefSubclassProc(hwnd, msg, wp, lp);
    if (g_driver) g_driver->m_lastClosed = NowMs();
    return result;
}

// Watches the children whose control id the next paint step names.
LRESULT CALLBACK IdleDriver::CreationHook(int code, WPARAM wp, LPARAM lp) {
    if (code == HCBT_CREATEWND && g_driver && !g_driver->m_steps.empty() &&
        g_driver->m_steps.front().painted) {
        const CREATESTRUCTA* cs = reinterpret_cast<CBT_CREATEWNDA*>(lp)->lpcs;
        if ((cs->style & WS_CHILD) &&
            reinterpret_cast<INT_PTR>(cs->hMenu) == g_driver->m_steps.front().id)
            ::SetWindowSubclass(reinterpret_cast<HWND>(wp), PaintProc, 2, 0);
    }
    return ::CallNextHookEx(nullptr, code, wp, lp);
}

LRESULT CALLBACK IdleDriver::PaintProc(HWND hwnd, UINT msg, WPARAM wp, LPARAM lp, UINT_PTR,
                                       DWORD_PTR) {
    if (msg == WM_NCDESTROY) ::RemoveWindowSubclass(hwnd, PaintProc, 2);
    const LRESULT result = ::DefSubclassProc(hwnd, msg, wp, lp);
    if (msg == WM_PAINT && g_driver && !g_driver->m_steps.empty() &&
        g_driver->m_steps.front().painted) {
        Action action = std::move(g_driver->m_steps.front().action);
        g_driver->m_steps.pop_front();
        ::RemoveWindowSubclass(hwnd, PaintProc, 2);
        action(::GetParent(hwnd));
    }
    return result;
}
