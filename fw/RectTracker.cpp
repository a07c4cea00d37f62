#include "fw/RectTracker.h"
#include "fw/Handle.h"
#include <utility>

namespace fw {

namespace {
constexpr int kBand = 4;  // width of the hatched band of a selected tracker
}

RECT RectTracker::TrueRect() const {
    RECT r = m_rect;
    if (r.left > r.right) std::swap(r.left, r.right);
    if (r.top > r.bottom) std::swap(r.top, r.bottom);
    if (m_nStyle & hatchedBorder) ::InflateRect(&r, kBand, kBand);
    return r;
}

// The tracker draws in device pixels. A caller in plain pixel mapping gets
// its origins and background mode put back one by one: saving the whole DC
// for every take would cost more than drawing it.
void RectTracker::Draw(HDC dc) const {
    if (::GetMapMode(dc) != MM_TEXT) {
        const int saved = ::SaveDC(dc);
        ::SetMapMode(dc, MM_TEXT);
        DrawInPixels(dc);
        ::RestoreDC(dc, saved);
        return;
    }
    POINT viewport{}, window{};
    ::GetViewportOrgEx(dc, &viewport);
    ::GetWindowOrgEx(dc, &window);
    const int background = ::GetBkMode(dc);
    DrawInPixels(dc);
    ::SetBkMode(dc, background);
    ::SetWindowOrgEx(dc, window.x, window.y, nullptr);
    ::SetViewportOrgEx(dc, viewport.x, viewport.y, nullptr);
}

void RectTracker::DrawInPixels(HDC dc) const {
    ::SetViewportOrgEx(dc, 0, 0, nullptr);
    ::SetWindowOrgEx(dc, 0, 0, nullptr);
    RECT r = m_rect;
    if (m_nStyle & solidLine) {
        SelectObj pen(dc, ::GetStockObject(BLACK_PEN));
        SelectObj brush(dc, ::GetStockObject(NULL_BRUSH));
        ::Rectangle(dc, r.left - 1, r.top - 1, r.right + 1, r.bottom + 1);
    }
    if (m_nStyle & hatchedBorder) {
        UniqueBrush hatch(::CreateHatchBrush(HS_BDIAGONAL, RGB(0, 0, 0)));
        RECT bands[4] = {{r.left - kBand, r.top - kBand, r.right + kBand, r.top},
                         {r.left - kBand, r.bottom, r.right + kBand, r.bottom + kBand},
                         {r.left - kBand, r.top, r.left, r.bottom},
                         {r.right, r.top, r.right + kBand, r.bottom}};
        ::SetBkMode(dc, TRANSPARENT);
        for (const RECT& b : bands) ::FillRect(dc, &b, hatch.get());
    }
}

int RectTracker::HitTest(POINT pt) const {
    RECT r = TrueRect();
    return ::PtInRect(&r, pt) ? hitMiddle : hitNothing;
}

bool RectTracker::SetCursor(HWND wnd, UINT nHitTest) const {
    if (nHitTest != HTCLIENT) return false;
    POINT pt;
    ::GetCursorPos(&pt);
    ::ScreenToClient(wnd, &pt);
    if (HitTest(pt) < 0) return false;
    ::SetCursor(::LoadCursor(nullptr, IDC_SIZEALL));
    return true;
}

void RectTracker::DrawRubber(HWND wnd, const RECT& r) {
    WindowDC dc(wnd);
    ::DrawFocusRect(dc.get(), &r);
}

bool RectTracker::Track(HWND wnd, POINT start) {
    if (::GetCapture()) return false;
    const RECT original = m_rect;
    RECT drawn = m_rect;
    bool shown = false, moved = false, cancelled = false;
    ::SetCapture(wnd);
    ::UpdateWindow(wnd);
    for (bool done = false; !done;) {
        MSG msg;
        if (::GetMessageA(&msg, nullptr, 0, 0) <= 0) {
            if (msg.message == WM_QUIT) ::PostQuitMessage(static_cast<int>(msg.wParam));
            break;
        }
        if (::GetCapture() != wnd) break;
        switch (msg.message) {
        case WM_MOUSEMOVE:
        case WM_LBUTTONUP: {
            POINT pt{static_cast<short>(LOWORD(msg.lParam)), static_cast<short>(HIWORD(msg.lParam))};
            if (msg.hwnd != wnd) ::MapWindowPoints(msg.hwnd, wnd, &pt, 1);
            RECT next = original;
            ::OffsetRect(&next, pt.x - start.x, pt.y - start.y);
            if (!::EqualRect(&next, &m_rect)) {
                const RECT previous = m_rect;
                m_rect = next;
                OnChangedRect(previous);
                moved = true;
            }
            if (shown) DrawRubber(wnd, drawn);
            drawn = m_rect;
            DrawRubber(wnd, drawn);
            shown = true;
            if (msg.message == WM_LBUTTONUP) done = true;
            break;
        }
        case WM_KEYDOWN:
            if (msg.wParam == VK_ESCAPE) cancelled = done = true;
            break;
        case WM_RBUTTONDOWN:
            cancelled = done = true;
            break;
        default:
            ::DispatchMessageA(&msg);
            break;
        }
    }
    if (shown) DrawRubber(wnd, drawn);
    ::ReleaseCapture();
    if (cancelled) {
        m_rect = original;
        return false;
    }
    return moved && !::EqualRect(&original, &m_rect);
}

void RectTracker::OnChangedRect(const RECT&) {}

}  // namespace fw
