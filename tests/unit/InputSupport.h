// Real input for the UI tests, as a person gives it: the mouse through the
// system's input queue, keys pressed in an open popup menu, message boxes
// answered with OK; and the popups that hold the controls under test.
#pragma once
#include <windows.h>
#include <commctrl.h>
#include <chrono>
#include <cstring>
#include <future>
#include <string>
#include <vector>
#include "../dll/DialogDriver.h"

namespace input_support {

// Dispatches the UI thread's messages until `done()` holds or `ms` have passed.
template <typename Done>
bool PumpUntil(Done done, int ms) {
    const DWORD start = GetTickCount();
    for (;;) {
        MSG m;
        while (PeekMessageA(&m, nullptr, 0, 0, PM_REMOVE)) {
            TranslateMessage(&m);
            DispatchMessageA(&m);
        }
        if (done()) return true;
        if (GetTickCount() - start >= static_cast<DWORD>(ms)) return false;
        Sleep(5);
    }
}
inline void Pump(int ms = 0) { PumpUntil([] { return false; }, ms); }

// The mouse through the system's input queue; a move goes to a screen point.
inline void Mouse(DWORD flags, POINT screen = {}) {
    INPUT in{};
    in.type = INPUT_MOUSE;
    in.mi.dwFlags = flags;
    if (flags & MOUSEEVENTF_MOVE) {
        const int w = GetSystemMetrics(SM_CXSCREEN), h = GetSystemMetrics(SM_CYSCREEN);
        in.mi.dwFlags |= MOUSEEVENTF_ABSOLUTE;
        in.mi.dx = (screen.x * 65536 + w - 1) / w;
        in.mi.dy = (screen.y * 65536 + h - 1) / h;
    }
    SendInput(1, &in, sizeof in);
    Pump(60);
}

inline BOOL CALLBACK FindOpenMenu(HWND h, LPARAM found) {
    char cls[16];
    GetClassNameA(h, cls, sizeof cls);
    if (std::strcmp(cls, "#32768") != 0 || !IsWindowVisible(h)) return TRUE;
    *reinterpret_cast<HWND*>(found) = h;
    return FALSE;
}

struct Seen {
    bool menu = false;
    std::string box;  // text of the message box answered, if one came
};

// A person at the screen: waits for a popup menu of the calling thread,
// presses the keys in it, then answers with OK the message box that comes
// within `boxWaitMs`. Gives up on a menu or a box that does not come, so no
// test waits for ever.
inline std::future<Seen> Person(std::vector<UINT> keys, int boxWaitMs = 0, int menuWaitMs = 5000) {
    const DWORD thread = GetCurrentThreadId();
    const DialogDriver driver;
    return std::async(std::launch::async, [=] {
        Seen seen;
        HWND menu = nullptr;
        for (int waited = 0; !menu && waited < menuWaitMs; waited += 10) {
            EnumThreadWindows(thread, FindOpenMenu, reinterpret_cast<LPARAM>(&menu));
            if (!menu) Sleep(10);
        }
        if (!(seen.menu = menu != nullptr)) return seen;
        for (UINT key : keys) {
            PostMessageA(menu, WM_KEYDOWN, key, 1);
            PostMessageA(menu, WM_KEYUP, key, 0xC0000001);
            Sleep(30);  // a sub-menu opens between keys
        }
        DialogDriver::WaitGone(menu, 3000);
        seen.box = driver.AnswerBox(IDOK, boxWaitMs);
        return seen;
    });
}

// Keeps the UI thread's messages flowing while the person acts: the menu and
// the message boxes run modally inside the dispatch.
inline Seen PumpUntilDone(std::future<Seen>& person) {
    PumpUntil([&] { return person.wait_for(std::chrono::seconds(0)) == std::future_status::ready; },
              60000);
    Pump();  // the command that the menu posted
    return person.get();
}

// A visible popup holding controls, as a dialog holds them.
class Popup {
public:
    Popup(int x, int y, int w, int h, DWORD exStyle = 0) {
        static const bool controls = [] {
            INITCOMMONCONTROLSEX icc{sizeof icc, ICC_LISTVIEW_CLASSES};
            return InitCommonControlsEx(&icc) != FALSE;
        }();
        (void)controls;
        m_hwnd = CreateWindowExA(exStyle, "STATIC", "", WS_POPUP | WS_VISIBLE, x, y, w, h, nullptr,
                                 nullptr, nullptr, nullptr);
    }
    ~Popup() { Destroy(); }
    Popup(const Popup&) = delete;
    Popup& operator=(const Popup&) = delete;
    HWND Add(const char* cls, DWORD style, int x, int y, int w, int h, int id = 0) const {
        return CreateWindowExA(0, cls, "", WS_CHILD | WS_VISIBLE | style, x, y, w, h, m_hwnd,
                               reinterpret_cast<HMENU>(static_cast<INT_PTR>(id)), nullptr, nullptr);
    }
    void Destroy() {
        if (IsWindow(m_hwnd)) DestroyWindow(m_hwnd);
    }
    HWND get() const { return m_hwnd; }

private:
    HWND m_hwnd;
};

}  // namespace input_support
