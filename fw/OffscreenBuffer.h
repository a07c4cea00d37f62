// Flicker-free painting: the caller paints into a memory DC the size of a
// rectangle of the target, and the picture reaches the target in one BitBlt,
// on Flush or else when the buffer goes. Buffer coordinates start at (0, 0)
// for the rectangle's top-left corner.
#pragma once
#include <windows.h>
#include "fw/Handle.h"

namespace fw {

class OffscreenBuffer {
public:
    OffscreenBuffer(HDC target, const RECT& area);
    ~OffscreenBuffer();
    OffscreenBuffer(const OffscreenBuffer&) = delete;
    OffscreenBuffer& operator=(const OffscreenBuffer&) = delete;

    // Null when the buffer could not be made (or the rectangle is empty);
    // painting then goes nowhere and nothing is copied.
    HDC dc() const { return m_ready ? m_dc.get() : nullptr; }
    explicit operator bool() const { return m_ready; }
    // Copies the buffer to the target now; the destructor then copies no more.
    bool Flush();

private:
    HDC m_target;
    RECT m_area;
    UniqueDC m_dc;
    UniqueBitmap m_bitmap;
    int m_saved = 0;  // the memory DC's state before the bitmap went in
    bool m_ready = false;
    bool m_flushed = false;
};

}  // namespace fw
