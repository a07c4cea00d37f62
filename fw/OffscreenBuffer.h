// Flicker-free painting: the caller paints into a memory DC and the picture
// reaches the target in one BitBlt.
//
// For one paint, construct it over a rectangle of the target: buffer
// coordinates start at (0, 0) for the rectangle's top-left corner, and the
// copy happens on Flush or else when the buffer goes.
//
// Kept between paints (default-constructed), it holds a picture of a whole
// area, in that area's coordinates: Prepare makes its DC and bitmap on the
// first call and again only when the size changes, and CopyTo copies any
// rectangle of it to the same place in a target.
#pragma once
#include <windows.h>
#include "fw/Handle.h"

namespace fw {

class OffscreenBuffer {
public:
    OffscreenBuffer() = default;
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

    // Kept between paints: a picture of `size` compatible with `reference`
    // (or black and white). Each call hands out the DC in the state it had
    // when the bitmap went in, whatever the previous painter left, as a new
    // buffer would.
    HDC Prepare(HDC reference, SIZE size, bool monochrome = false);
    // Copies `rect` of the picture to the same place in target.
    bool CopyTo(HDC target, const RECT& rect) const;

private:
    void Release();
    bool Copy(HDC target, const RECT& rect, int x, int y) const;

    HDC m_target = nullptr;  // of a one-paint buffer
    RECT m_area{};
    SIZE m_size{};
    bool m_monochrome = false;
    UniqueDC m_dc;
    UniqueBitmap m_bitmap;
    int m_saved = 0;   // the memory DC's state before the bitmap went in
    int m_filled = 0;  // and right after
    bool m_ready = false;
    bool m_flushed = false;
};

}  // namespace fw
