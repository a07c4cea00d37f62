#include "host/BitmapFile.h"
#include <cstdio>
#include <vector>
#include "fw/Handle.h"

bool WriteBitmapFile(HBITMAP bitmap, const std::string& path) {
    BITMAP bm{};
    if (!GetObjectA(bitmap, sizeof bm, &bm)) return false;
    const int w = bm.bmWidth, h = bm.bmHeight;
    const int row = (w * 3 + 3) & ~3;
    std::vector<BYTE> bits(static_cast<size_t>(row) * h);
    BITMAPINFOHEADER bih{sizeof bih, w, h, 1, 24, BI_RGB, static_cast<DWORD>(bits.size())};
    fw::WindowDC screen(nullptr);
    GetDIBits(screen.get(), bitmap, 0, h, bits.data(), reinterpret_cast<BITMAPINFO*>(&bih),
              DIB_RGB_COLORS);
    BITMAPFILEHEADER bfh{0x4D42, static_cast<DWORD>(sizeof bfh + sizeof bih + bits.size()), 0, 0,
                         sizeof bfh + sizeof bih};
    FILE* f = std::fopen(path.c_str(), "wb");
    if (!f) return false;
    const bool ok = std::fwrite(&bfh, sizeof bfh, 1, f) == 1 &&
                    std::fwrite(&bih, sizeof bih, 1, f) == 1 &&
                    std::fwrite(bits.data(), bits.size(), 1, f) == 1;
    return std::fclose(f) == 0 && ok;
}
