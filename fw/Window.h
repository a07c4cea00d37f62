// A control of a dialog subclassed by one of our objects: the object does not
// own the window; it stops dispatching and removes the subclass when the
// window is destroyed.
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

private:
    static LRESULT CALLBACK Proc(HWND, UINT, WPARAM, LPARAM, UINT_PTR, DWORD_PTR);
    HWND m_hwnd = nullptr;
};

}  // namespace fw
