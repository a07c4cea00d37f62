#include "fw/OffscreenBuffer.h"

namespace fw {

OffscreenBuffer::OffscreenBuffer(HDC target, const RECT& area) : m_target(target), m_area(area) {
    if (!target) return;
    Prepare(target, {area.right - area.left, area.bottom - area.top});
}

OffscreenBuffer::~OffscreenBuffer() {
    if (m_target && !m_flushed) Flush();
    Release();
}

// Puts back the DC's own bitmap and whatever else the painter left selected,
// so the bitmap and the DC can be deleted.
void OffscreenBuffer::Release() {
    if (m_saved) ::RestoreDC(m_dc.get(), m_saved);
    m_saved = m_filled = 0;
    m_ready = false;
    m_bitmap.reset();
}

HDC OffscreenBuffer::Prepare(HDC reference, SIZE size, bool monochrome) {
    if (m_ready && size.cx == m_size.cx && size.cy == m_size.cy && monochrome == m_monochrome) {
        ::RestoreDC(m_dc.get(), m_filled);
        m_filled = ::SaveDC(m_dc.get());
        return m_dc.get();
    }
    Release();
    m_size = size;
    m_monochrome = monochrome;
    if (!reference || size.cx <= 0 || size.cy <= 0) return nullptr;
    if (!m_dc) m_dc.reset(::CreateCompatibleDC(reference));
    m_bitmap.reset(monochrome ? ::CreateBitmap(size.cx, size.cy, 1, 1, nullptr)
                              : ::CreateCompatibleBitmap(reference, size.cx, size.cy));
    if (!m_dc || !m_bitmap) return nullptr;
    m_saved = ::SaveDC(m_dc.get());
    m_ready = m_saved != 0 && ::SelectObject(m_dc.get(), m_bitmap.get()) != nullptr;
    if (m_ready) m_filled = ::SaveDC(m_dc.get());
    m_ready = m_ready && m_filled != 0;
    return dc();
}

bool OffscreenBuffer::Flush() {
    if (!m_ready || !m_target) return false;
    m_flushed = true;
    return Copy(m_target, m_area, 0, 0);
}

bool OffscreenBuffer::CopyTo(HDC target, const RECT& rect) const {
    return Copy(target, rect, rect.left, rect.top);
}

bool OffscreenBuffer::Copy(HDC target, const RECT& rect, int x, int y) const {
    if (!m_ready) return false;
    HDC dc = m_dc.get();
    const int w = rect.right - rect.left, h = rect.bottom - rect.top;
    POINT window{}, viewport{};
    if (::GetMapMode(dc) == MM_TEXT && ::GetWindowOrgEx(dc, &window) && !window.x && !window.y &&
        ::GetViewportOrgEx(dc, &viewport) && !viewport.x && !viewport.y)
        return ::BitBlt(target, rect.left, rect.top, w, h, dc, x, y, SRCCOPY) != FALSE;
    // The painter changed the mapping; the copy is pixel for pixel.
    const int saved = ::SaveDC(dc);
    ::SetMapMode(dc, MM_TEXT);
    ::SetWindowOrgEx(dc, 0, 0, nullptr);
    ::SetViewportOrgEx(dc, 0, 0, nullptr);
    const BOOL copied = ::BitBlt(target, rect.left, rect.top, w, h, dc, x, y, SRCCOPY);
    ::RestoreDC(dc, saved);
    return copied != FALSE;
}

}  // namespace fw
