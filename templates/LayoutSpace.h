// The layout space: take rectangles live in a 1024 x 768 space whose area
// x 70..914, y 50..748 stands for the host's image layout. Every mapping of it
// (onto the host's rectangle, onto a canvas) is here; double to integer
// conversions truncate toward zero.
#pragma once
#include <windows.h>

namespace layout {

constexpr int kWidth = 1024;
constexpr int kHeight = 768;
constexpr int kAreaLeft = 70;
constexpr int kAreaTop = 50;
constexpr int kAreaRight = 914;
constexpr int kAreaBottom = 748;
constexpr int kAreaWidth = kAreaRight - kAreaLeft;    // 844
constexpr int kAreaHeight = kAreaBottom - kAreaTop;   // 698

inline bool Contains(int x, int y) { return x >= 0 && x <= kWidth && y >= 0 && y <= kHeight; }

// A layout rectangle on the host's rectangle, relative to its top-left corner.
RECT MapToHost(const RECT& take, const RECT& host);

// Layout units per canvas pixel, in x and y separately.
struct CanvasScale {
    double x = 1.0, y = 1.0;
    static CanvasScale For(const RECT& client);
    RECT ToPixels(const RECT& layoutRect) const;
    int LayoutX(int pixel) const { return static_cast<int>(pixel * x); }
    int LayoutY(int pixel) const { return static_cast<int>(pixel * y); }
    int PixelX(int layoutUnits) const { return static_cast<int>(layoutUnits / x); }
    int PixelY(int layoutUnits) const { return static_cast<int>(layoutUnits / y); }
};

}  // namespace layout
