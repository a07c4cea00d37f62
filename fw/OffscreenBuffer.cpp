#include "fw/OffscreenBuffer.h"

namespace fw {

OffscreenBuffer::OffscreenBuffer(HDC target, const RECT& area) : m_target(target), m_area(area) {
    const int w = area.right - area.left, h = area.bottom - area.top;
    if (!target || w <= 0 || h <= 0) return;
    m_dc.reset(::CreateCompatibleDC(target));
    m_bitmap.reset(::CreateCompatibleBitmap(target, w, h));
    if (!m_dc || !m_bitmap) return;
    m_saved = ::SaveDC(m_dc.get());
    m_ready = m_saved != 0 && ::SelectObject(m_dc.get(), m_bitmap.get()) != nullptr;
}

OffscreenBuffer::~OffscreenBuffer() {
    if (!m_flushed) Flush();
    // Puts back the DC's own bitmap and whatever else the painter left
    // selected, so the bitmap and the DC can be deleted.
    if (m_saved) ::RestoreDC(m_dc.get(), m_saved);
}

bool OffscreenBuffer::Flush() {
    if (!m_ready) return false;
    m_flushed = true;
    // The painter may have changed the mapping; the copy is pixel for pixel.
    HDC dc = m_dc.get();
    const int saved = ::SaveDC(dc);
    ::SetMapMode(dc, MM_TEXT);
    ::SetWindowOrgEx(dc, 0, 0, nullptr);
    ::SetViewportOrgEx(dc, 0, 0, nullptr);
    const BOOL copied = ::BitBlt(m_target, m_area.left, m_area.top, m_area.right - m_area.left,
                                 m_area.bottom - m_area.top, dc, 0, 0, SRCCOPY);
    ::RestoreDC(dc, saved);
    return copied != FALSE;
}

}  // namespace fw
