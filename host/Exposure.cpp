#include "host/Exposure.h"
#include <algorithm>
#include <cmath>
#include <cstring>
#include <vector>
#include "fw/Handle.h"

namespace {
constexpr int kLong = 320, kShort = 240;

struct Canvas {
    int w, h;
    std::vector<BYTE> px;  // top-down grey values
    void Blend(int x, int y, int v) {
        if (x < 0 || y < 0 || x >= w || y >= h) return;
        BYTE& p = px[y * w + x];
        p = static_cast<BYTE>(std::max<int>(p, std::min(255, v)));
    }
};

// One tooth, upright in a w x h picture of a horizontal sensor: crown, roots
// and a darker pulp, drawn as brightness fields.
void DrawTooth(Canvas& c, double cx, double top, double width, double height, bool upper) {
    for (int y = 0; y < c.h; ++y)
        for (int x = 0; x < c.w; ++x) {
            double u = (x - cx) / (width / 2);
            double t = (upper ? (c.h - y) - top : y - top) / height;  // 0 at the crown, 1 at the apex
            if (t < 0 || t > 1) continue;
            double half = t < 0.35 ? 1.0 - 0.15 * (0.35 - t) / 0.35 : 1.0 - 0.75 * (t - 0.35) / 0.65;
            if (std::fabs(u) > half) continue;
            int v = t < 0.35 ? 215 : 165;
            if (std::fabs(u) < half * 0.22 && t > 0.2) v -= 70;  // pulp and canal
            v -= static_cast<int>(25 * std::fabs(u));
            c.Blend(x, y, v);
        }
}
}  // namespace

Exposure MakeExposure(const std::string& label, bool vertical, int seed) {
    // A turned sensor gives a picture standing upright, with fewer, longer teeth.
    const int w = vertical ? kShort : kLong, h = vertical ? kLong : kShort;
    Canvas c{w, h, std::vector<BYTE>(static_cast<size_t>(w) * h)};
    unsigned rnd = 12345u + seed * 7919u;
    for (BYTE& p : c.px) {
        rnd = rnd * 1103515245u + 12345u;
        p = static_cast<BYTE>(28 + (rnd >> 16) % 14);
    }
    // Upper teeth (quadrants 1, 2, 5, 6) show their crowns at the bottom.
    const char q = label.empty() ? '1' : label[0];
    const bool upper = q == '1' || q == '2' || q == '5' || q == '6';
    const int teeth = vertical ? 2 : 3;
    for (int i = 0; i < teeth; ++i) {
        double cx = (i + 0.5) * w / teeth + (seed % 3) * 3;
        DrawTooth(c, cx, 10, w / teeth * 0.72, h * 0.78, upper);
    }
    for (int y = 0; y < h; ++y)  // bone around the roots
        for (int x = 0; x < w; ++x) c.Blend(x, y, 55 + (upper ? h - y : y) / 6);

    const int row = (w + 3) & ~3;
    Exposure e;
    e.header = GlobalAlloc(GMEM_MOVEABLE | GMEM_ZEROINIT, sizeof(BITMAPINFOHEADER) + 256 * 4);
    e.bits = GlobalAlloc(GMEM_MOVEABLE | GMEM_ZEROINIT, static_cast<SIZE_T>(row) * h);
    auto* bi = static_cast<BITMAPINFO*>(GlobalLock(e.header));
    bi->bmiHeader = {sizeof(BITMAPINFOHEADER), w, h, 1, 8, BI_RGB, static_cast<DWORD>(row * h),
                     3780, 3780, 256, 0};
    for (int i = 0; i < 256; ++i)
        bi->bmiColors[i] = {static_cast<BYTE>(i), static_cast<BYTE>(i), static_cast<BYTE>(i), 0};
    auto* bits = static_cast<BYTE*>(GlobalLock(e.bits));
    for (int y = 0; y < h; ++y)
        for (int x = 0; x < w; ++x) {
            bits[(h - 1 - y) * row + x] = c.px[y * w + x];  // bottom-up rows
        }
    // The label, burned in at the top left through GDI on a DIB section.
    void* sectionBits = nullptr;
    fw::UniqueDC dc(CreateCompatibleDC(nullptr));
    fw::UniqueBitmap section(CreateDIBSection(dc.get(), bi, DIB_RGB_COLORS, &sectionBits, nullptr, 0));
    if (section) {
        std::memcpy(sectionBits, bits, static_cast<size_t>(row) * h);
        fw::UniqueFont font(CreateFontA(-22, 0, 0, 0, FW_BOLD, 0, 0, 0, DEFAULT_CHARSET, 0, 0, 0, 0,
                                        "Arial"));
        {
            fw::SelectObj selBitmap(dc.get(), section.get());
            fw::SelectObj selFont(dc.get(), font.get());
            SetBkMode(dc.get(), TRANSPARENT);
            SetTextColor(dc.get(), RGB(250, 250, 250));
            TextOutA(dc.get(), 8, 6, label.c_str(), static_cast<int>(label.size()));
            GdiFlush();
        }
        std::memcpy(bits, sectionBits, static_cast<size_t>(row) * h);
    }
    GlobalUnlock(e.bits);
    GlobalUnlock(e.header);
    return e;
}

HBITMAP ExposureToBitmap(const Exposure& e) {
    auto* bi = static_cast<BITMAPINFO*>(GlobalLock(e.header));
    auto* bits = GlobalLock(e.bits);
    fw::WindowDC screen(nullptr);
    HBITMAP bmp = CreateDIBitmap(screen.get(), &bi->bmiHeader, CBM_INIT, bits, bi, DIB_RGB_COLORS);
    GlobalUnlock(e.bits);
    GlobalUnlock(e.header);
    return bmp;
}
