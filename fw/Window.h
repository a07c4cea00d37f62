// A control of a dialog subclassed by one of our objects: the object does not
// own the window; it stops dispatching and removes the subclass when the
// window is destroyed. Several objects may watch one window and leave
// independently; the newest sees a message first.
#pragma once
#include <windows.h>

namespace fw {

class Window {
public:
    Window() = default;
    virtual ~Window();
    Window(const Window&) = delete;
    Window& operator=(const Window&) = delete;

    bool Subclass(HWND hwnd);
    void Unsubclass();
    HWND hwnd() const { return m_hwnd; }
    RECT GetClientRect() const;
    void Invalidate(const RECT* rect = nullptr, bool erase = true) const;

protected:
    // Handles a message; the default passes it on to the control's procedure.
    virtual LRESULT WindowProc(UINT msg, WPARAM wp, LPARAM lp);
    LRESULT Default(UINT msg, WPARAM wp, LPARAM lp);
    // Another window (or none) took the mouse capture from this one; called
    // before WindowProc sees the WM_CAPTURECHANGED.
    virtual void OnCaptureLost() {}

private:
    static LRESULT CALLBACK Proc(HWND, UINT, WPARAM, LPARAM);
    static LRESULT Dispatch(Window* self, UINT msg, WPARAM wp, LPARAM lp);
    HWND m_hwnd = nullptr;
};

}  // namespace fw
