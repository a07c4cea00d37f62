// Owners for Win32 handles and GDI objects. One template, one alias line per
// handle kind; copies are deleted so a handle can never be released twice.
#pragma once
#include <windows.h>
#include <commctrl.h>
#include <utility>

namespace fw {

template <typename H, BOOL(WINAPI* Close)(H)>
class Unique {
public:
    Unique() = default;
    explicit Unique(H h) : m_h(h) {}
    ~Unique() { reset(); }
    Unique(const Unique&) = delete;
    Unique& operator=(const Unique&) = delete;
    Unique(Unique&& o) noexcept : m_h(o.release()) {}
    Unique& operator=(Unique&& o) noexcept {
        if (this != &o) reset(o.release());
        return *this;
    }
    H get() const { return m_h; }
    explicit operator bool() const { return m_h != nullptr; }
    H release() { return std::exchange(m_h, nullptr); }
    void reset(H h = nullptr) {
        H old = std::exchange(m_h, h);
        if (old) Close(old);
    }

private:
    H m_h = nullptr;
};

namespace detail {
inline BOOL WINAPI DeleteGdi(HGDIOBJ h) { return ::DeleteObject(h); }
template <typename T> BOOL WINAPI DeleteGdiT(T h) { return ::DeleteObject(h); }
inline BOOL WINAPI FreeGlobal(HGLOBAL h) { return ::GlobalFree(h) == nullptr; }
inline BOOL WINAPI FreeIcon(HICON h) { return ::DestroyIcon(h); }
inline BOOL WINAPI FreeImageList(HIMAGELIST h) { return ::ImageList_Destroy(h); }
}  // namespace detail

using UniqueBrush = Unique<HBRUSH, detail::DeleteGdiT<HBRUSH>>;
using UniquePen = Unique<HPEN, detail::DeleteGdiT<HPEN>>;
using UniqueFont = Unique<HFONT, detail::DeleteGdiT<HFONT>>;
using UniqueBitmap = Unique<HBITMAP, detail::DeleteGdiT<HBITMAP>>;
using UniqueRgn = Unique<HRGN, detail::DeleteGdiT<HRGN>>;
using UniquePalette = Unique<HPALETTE, detail::DeleteGdiT<HPALETTE>>;
using UniqueDC = Unique<HDC, ::DeleteDC>;
using UniqueGlobal = Unique<HGLOBAL, detail::FreeGlobal>;
using UniqueIcon = Unique<HICON, detail::FreeIcon>;
using UniqueImageList = Unique<HIMAGELIST, detail::FreeImageList>;
using UniqueMenu = Unique<HMENU, ::DestroyMenu>;
using UniqueModule = Unique<HMODULE, ::FreeLibrary>;
using UniqueHandle = Unique<HANDLE, ::CloseHandle>;

// GetDC/ReleaseDC pair; keeps the window for the release.
class WindowDC {
public:
    explicit WindowDC(HWND hwnd) : m_hwnd(hwnd), m_dc(::GetDC(hwnd)) {}
    ~WindowDC() { if (m_dc) ::ReleaseDC(m_hwnd, m_dc); }
    WindowDC(const WindowDC&) = delete;
    WindowDC& operator=(const WindowDC&) = delete;
    HDC get() const { return m_dc; }
    explicit operator bool() const { return m_dc != nullptr; }

private:
    HWND m_hwnd;
    HDC m_dc;
};

// BeginPaint/EndPaint pair.
class PaintDC {
public:
    explicit PaintDC(HWND hwnd) : m_hwnd(hwnd) { m_dc = ::BeginPaint(hwnd, &m_ps); }
    ~PaintDC() { ::EndPaint(m_hwnd, &m_ps); }
    PaintDC(const PaintDC&) = delete;
    PaintDC& operator=(const PaintDC&) = delete;
    HDC get() const { return m_dc; }
    const PAINTSTRUCT& ps() const { return m_ps; }

private:
    HWND m_hwnd;
    PAINTSTRUCT m_ps{};
    HDC m_dc = nullptr;
};

// Selects an object into a DC and puts the previous one back on scope exit.
class SelectObj {
public:
    SelectObj(HDC dc, HGDIOBJ obj) : m_dc(dc), m_old(obj ? ::SelectObject(dc, obj) : nullptr) {}
    ~SelectObj() { if (m_old) ::SelectObject(m_dc, m_old); }
    SelectObj(const SelectObj&) = delete;
    SelectObj& operator=(const SelectObj&) = delete;

private:
    HDC m_dc;
    HGDIOBJ m_old;
};

// GlobalLock/GlobalUnlock pair.
template <typename T = void>
class GlobalLock {
public:
    explicit GlobalLock(HGLOBAL h) : m_h(h), m_p(h ? static_cast<T*>(::GlobalLock(h)) : nullptr) {}
    ~GlobalLock() { if (m_p) ::GlobalUnlock(m_h); }
    GlobalLock(const GlobalLock&) = delete;
    GlobalLock& operator=(const GlobalLock&) = delete;
    T* get() const { return m_p; }
    explicit operator bool() const { return m_p != nullptr; }

private:
    HGLOBAL m_h;
    T* m_p;
};

// Shows the wait cursor for the lifetime of the object. Nested inside another
// it only puts the wait cursor back where something (a dialog in between)
// replaced it: a loop that already shows it does not set it per item. The
// outermost puts the old cursor back. User-interface thread only.
class WaitCursor {
public:
    WaitCursor() : m_old(Show(Depth()++ == 0)) {}
    ~WaitCursor() {
        if (--Depth() == 0) ::SetCursor(m_old);
    }
    WaitCursor(const WaitCursor&) = delete;
    WaitCursor& operator=(const WaitCursor&) = delete;

private:
    static HCURSOR Show(bool outermost) {
        const HCURSOR wait = ::LoadCursor(nullptr, IDC_WAIT);
        if (outermost) return ::SetCursor(wait);
        if (::GetCursor() != wait) ::SetCursor(wait);
        return nullptr;
    }
    static int& Depth() {
        static int depth = 0;
        return depth;
    }
    HCURSOR m_old;
};

}  // namespace fw
