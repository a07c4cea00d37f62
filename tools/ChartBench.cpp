// Measures one hover repaint of the dentition chart at the designer's size
// (396 x 200) against a plain BitBlt of the same size, in the same run.
//   bench-chart.exe <Zemblax.ini with the tooth outlines> [repeats]
#include <windows.h>
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>
#include "chart/ToothChart.h"
#include "fw/Handle.h"
#include "settings/Settings.h"

namespace {

double Now() {
    LARGE_INTEGER f, c;
    QueryPerformanceFrequency(&f);
    QueryPerformanceCounter(&c);
    return static_cast<double>(c.QuadPart) / f.QuadPart;
}

template <typename F>
std::vector<double> Times(int n, F step) {
    std::vector<double> t;
    for (int i = 0; i < n; ++i) {
        const double start = Now();
        step(i);
        t.push_back((Now() - start) * 1e3);
    }
    std::sort(t.begin(), t.end());
    return t;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc < 2) return 2;
    const int n = argc > 2 ? std::atoi(argv[2]) : 200;
    TheSettings().Load(argv[1]);
    HWND popup = CreateWindowExA(WS_EX_TOPMOST, "STATIC", "", WS_POPUP | WS_VISIBLE, 50, 50, 396,
                                 200, nullptr, nullptr, nullptr, nullptr);
    HWND control = CreateWindowExA(0, "STATIC", "", WS_CHILD | WS_VISIBLE, 0, 0, 396, 200, popup,
                                   nullptr, nullptr, nullptr);
    CToothChart chart;
    chart.Subclass(control);
    chart.Init(nullptr, argv[1]);
    const RECT box = chart.GetToothBox(2);
    SetCursorPos(50 + (box.left + box.right) / 2, 50 + (box.top + box.bottom) / 2);
    const auto hover = Times(n, [&](int) {
        SendMessageA(control, WM_MOUSEMOVE, 0, MAKELPARAM((box.left + box.right) / 2, 60));
    });
    fw::WindowDC dc(control);
    fw::UniqueDC memory(CreateCompatibleDC(dc.get()));
    fw::UniqueBitmap picture(CreateCompatibleBitmap(dc.get(), 396, 200));
    fw::SelectObj sel(memory.get(), picture.get());
    const auto blit = Times(n, [&](int) {
        BitBlt(dc.get(), 0, 0, 396, 200, memory.get(), 0, 0, SRCCOPY);
        GdiFlush();
    });
    // A repaint cycle that only blits: what the window system costs alone.
    HWND plain = CreateWindowExA(0, "STATIC", "", WS_CHILD | WS_VISIBLE | SS_BITMAP, 0, 0, 396,
                                 200, popup, nullptr, nullptr, nullptr);
    SendMessageA(plain, STM_SETIMAGE, IMAGE_BITMAP, reinterpret_cast<LPARAM>(picture.get()));
    const auto cycle = Times(n, [&](int) {
        InvalidateRect(plain, nullptr, FALSE);
        UpdateWindow(plain);
    });
    std::printf("repaint cycle of a static bitmap: median %.3f ms\n", cycle[n / 2]);
    const double h = hover[n / 2], b = blit[n / 2];
    std::printf("chart hover repaint 396x200: median %.3f ms, min %.3f ms\n", h, hover[0]);
    std::printf("BitBlt 396x200 (floor):      median %.3f ms, min %.3f ms\n", b, blit[0]);
    std::printf("ratio %.1f\n", h / b);
    DestroyWindow(popup);
    return 0;
}
