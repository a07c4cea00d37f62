#include "fw/Window.h"
#include <algorithm>
#include <unordered_map>
#include <vector>
#include "fw/Module.h"

namespace fw {
namespace {

// The objects watching one window, newest last, and the procedure they put
// aside. The window procedure itself is replaced rather than going through
// comctl32's subclass helper: that one looks its data up in window
// properties at every message, which under Wine is a trip to the server
// (about 80 microseconds, more than the drawing of a hover repaint).
struct Chain {
    WNDPROC original = nullptr;
    bool unicode = false;  // the window keeps the character set it had
    std::vector<Window*> objects;
};

// User-interface thread only, like every window of the module. Never
// destroyed: objects that outlive static destruction at unloading may still
// look for their window.
std::unordered_map<HWND, Chain>& Chains() {
    static auto* chains = new std::unordered_map<HWND, Chain>;
    return *chains;
}

LONG_PTR SetProc(HWND hwnd, bool unicode, LONG_PTR proc) {
    return unicode ? ::SetWindowLongPtrW(hwnd, GWLP_WNDPROC, proc)
                   : ::SetWindowLongPtrA(hwnd, GWLP_WNDPROC, proc);
}

LRESULT CallOriginal(const Chain& c, HWND hwnd, UINT msg, WPARAM wp, LPARAM lp) {
    return c.unicode ? ::CallWindowProcW(c.original, hwnd, msg, wp, lp)
                     : ::CallWindowProcA(c.original, hwnd, msg, wp, lp);
}

}  // namespace

Window::~Window() { Unsubclass(); }

bool Window::Subclass(HWND hwnd) {
    Unsubclass();
    if (!hwnd || !::IsWindow(hwnd)) return false;
    auto found = Chains().find(hwnd);
    if (found == Chains().end()) {
        const bool unicode = ::IsWindowUnicode(hwnd) != FALSE;
        const auto original =
            reinterpret_cast<WNDPROC>(SetProc(hwnd, unicode, reinterpret_cast<LONG_PTR>(Proc)));
        if (!original) return false;
        found = Chains().emplace(hwnd, Chain{original, unicode, {}}).first;
    }
    found->second.objects.push_back(this);
    m_hwnd = hwnd;
    return true;
}

void Window::Unsubclass() {
    if (!m_hwnd) return;
    const auto found = Chains().find(m_hwnd);
    if (found != Chains().end()) {
        auto& objects = found->second.objects;
        objects.erase(std::remove(objects.begin(), objects.end(), this), objects.end());
        // The procedure goes back only while nobody subclassed on top of it;
        // otherwise it stays and passes everything on.
        const bool onTop =
            found->second.unicode
                ? ::GetWindowLongPtrW(m_hwnd, GWLP_WNDPROC) == reinterpret_cast<LONG_PTR>(Proc)
                : ::GetWindowLongPtrA(m_hwnd, GWLP_WNDPROC) == reinterpret_cast<LONG_PTR>(Proc);
        if (objects.empty() && !Module::Unloading() && ::IsWindow(m_hwnd) && onTop) {
            SetProc(m_hwnd, found->second.unicode,
                    reinterpret_cast<LONG_PTR>(found->second.original));
            Chains().erase(found);
        }
    }
    m_hwnd = nullptr;
}

RECT Window::GetClientRect() const {
    RECT r{};
    if (m_hwnd) ::GetClientRect(m_hwnd, &r);
    return r;
}

void Window::Invalidate(const RECT* rect, bool erase) const {
    if (m_hwnd) ::InvalidateRect(m_hwnd, rect, erase);
}

LRESULT Window::WindowProc(UINT msg, WPARAM wp, LPARAM lp) { return Default(msg, wp, lp); }

// The next object below this one in the window's chain, or the put-aside procedure.
LRESULT Window::Default(UINT msg, WPARAM wp, LPARAM lp) {
    const auto found = Chains().find(m_hwnd);
    if (found == Chains().end()) return ::DefWindowProcW(m_hwnd, msg, wp, lp);
    const auto& objects = found->second.objects;
    const auto me = std::find(objects.begin(), objects.end(), this);
    if (me == objects.begin() || me == objects.end())
        return CallOriginal(found->second, m_hwnd, msg, wp, lp);
    return Dispatch(*(me - 1), msg, wp, lp);
}

LRESULT Window::Dispatch(Window* self, UINT msg, WPARAM wp, LPARAM lp) {
    try {
        if (msg == WM_CAPTURECHANGED && reinterpret_cast<HWND>(lp) != self->m_hwnd)
            self->OnCaptureLost();
        return self->WindowProc(msg, wp, lp);
    } catch (...) {
        // The message still reaches the objects below and the control.
        return self->m_hwnd ? self->Default(msg, wp, lp) : 0;
    }
}

LRESULT CALLBACK Window::Proc(HWND hwnd, UINT msg, WPARAM wp, LPARAM lp) {
    const auto found = Chains().find(hwnd);
    if (found == Chains().end()) return ::DefWindowProcW(hwnd, msg, wp, lp);
    if (msg == WM_NCDESTROY) {
        const Chain chain = found->second;
        for (Window* w : chain.objects) w->m_hwnd = nullptr;
        Chains().erase(found);
        SetProc(hwnd, chain.unicode, reinterpret_cast<LONG_PTR>(chain.original));
        return CallOriginal(chain, hwnd, msg, wp, lp);
    }
    if (found->second.objects.empty()) return CallOriginal(found->second, hwnd, msg, wp, lp);
    return Dispatch(found->second.objects.back(), msg, wp, lp);
}

}  // namespace fw
