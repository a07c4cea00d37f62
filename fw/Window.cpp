#include "fw/Window.h"
#include <commctrl.h>
#include "fw/Module.h"

namespace fw {

Window::~Window() { Unsubclass(); }

bool Window::Subclass(HWND hwnd) {
    Unsubclass();
    if (!hwnd || !::SetWindowSubclass(hwnd, Proc, Id(), reinterpret_cast<DWORD_PTR>(this)))
        return false;
    m_hwnd = hwnd;
    return true;
}

void Window::Unsubclass() {
    if (m_hwnd && !Module::Unloading() && ::IsWindow(m_hwnd))
        ::RemoveWindowSubclass(m_hwnd, Proc, Id());
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

LRESULT Window::Default(UINT msg, WPARAM wp, LPARAM lp) {
    return ::DefSubclassProc(m_hwnd, msg, wp, lp);
}

LRESULT CALLBACK Window::Proc(HWND hwnd, UINT msg, WPARAM wp, LPARAM lp, UINT_PTR id,
                              DWORD_PTR data) {
    auto* self = reinterpret_cast<Window*>(data);
    if (msg == WM_NCDESTROY) {
        ::RemoveWindowSubclass(hwnd, Proc, id);
        self->m_hwnd = nullptr;
        return ::DefSubclassProc(hwnd, msg, wp, lp);
    }
    try {
        if (msg == WM_CAPTURECHANGED && reinterpret_cast<HWND>(lp) != hwnd) self->OnCaptureLost();
        return self->WindowProc(msg, wp, lp);
    } catch (...) {
        return ::DefSubclassProc(hwnd, msg, wp, lp);
    }
}

}  // namespace fw
