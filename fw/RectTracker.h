// A move-only rectangle tracker: hit test, border drawing, move cursor and a
// modal mouse loop with a rubber rectangle. Escape or the right button cancel.
#pragma once
#include <windows.h>

namespace fw {

class RectTracker {
public:
    enum Style : UINT { solidLine = 1, hatchedBorder = 4 };
    enum Hit : int { hitNothing = -1, hitMiddle = 8 };

    RectTracker() = default;
    virtual ~RectTracker() = default;

    void Draw(HDC dc) const;
    int HitTest(POINT pt) const;
    // Sets the move cursor when the cursor is over the rectangle.
    bool SetCursor(HWND wnd, UINT nHitTest) const;
    // Follows the mouse until the button is released; true when moved.
    bool Track(HWND wnd, POINT start);

    RECT m_rect{};
    UINT m_nStyle = 0;
    RECT m_rectLast{};

protected:
    virtual void OnChangedRect(const RECT& previous);

private:
    RECT TrueRect() const;
    void DrawInPixels(HDC dc) const;
    static void DrawRubber(HWND wnd, const RECT& r);
};

}  // namespace fw
