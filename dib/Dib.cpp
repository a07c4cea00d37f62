#include "dib/Dib.h"
#include <cstring>
#include <vector>
#include "fw/Handle.h"

namespace {

constexpr DWORD kCoreHeaderSize = sizeof(BITMAPCOREHEADER);
// Blocks beyond this are refused like a failed allocation: no sane thumbnail or
// tooth picture comes near it, and a hostile header must not take the machine.
constexpr unsigned long long kMaxDibBytes = 256ull << 20;

DWORD RowBytesTimesHeight(const BITMAPINFOHEADER& h) {
    return ((static_cast<DWORD>(h.biBitCount) * static_cast<DWORD>(h.biWidth) + 31) >> 5) *
           static_cast<DWORD>(h.biHeight) * 4;
}

bool ReadExact(HANDLE file, void* buf, DWORD n) {
    DWORD got = 0;
    return ::ReadFile(file, buf, n, &got, nullptr) && got == n;
}

void ReadSome(HANDLE file, void* buf, DWORD n) {
    DWORD got = 0;
    ::ReadFile(file, buf, n, &got, nullptr);
}

LONGLONG Tell(HANDLE file) {
    LARGE_INTEGER zero{}, pos{};
    ::SetFilePointerEx(file, zero, &pos, FILE_CURRENT);
    return pos.QuadPart;
}

void Seek(HANDLE file, LONGLONG offset, DWORD method) {
    LARGE_INTEGER li;
    li.QuadPart = offset;
    ::SetFilePointerEx(file, li, nullptr, method);
}

// Bytes the pixel rows of an uncompressed DIB really occupy.
unsigned long long RowsSize(const BITMAPINFOHEADER& h) {
    if (h.biCompression != BI_RGB && h.biCompression != BI_BITFIELDS) return 0;
    unsigned long long row =
        ((static_cast<unsigned long long>(h.biBitCount) * static_cast<unsigned>(
             h.biWidth < 0 ? -static_cast<long long>(h.biWidth) : h.biWidth) + 31) >> 5) * 4;
    long long height = h.biHeight < 0 ? -static_cast<long long>(h.biHeight) : h.biHeight;
    return row * static_cast<unsigned long long>(height);
}

}  // namespace

WORD DibColorCount(const void* header) {
    const auto* info = static_cast<const BITMAPINFOHEADER*>(header);
    WORD bits;
    if (info->biSize != kCoreHeaderSize) {
        if (info->biClrUsed != 0) return static_cast<WORD>(info->biClrUsed);
        bits = info->biBitCount;
    } else {
        bits = static_cast<const BITMAPCOREHEADER*>(header)->bcBitCount;
    }
    switch (bits) {
    case 1: return 2;
    case 4: return 16;
    case 8: return 256;
    default: return 0;
    }
}

WORD DibColorTableSize(const void* header) {
    const auto* info = static_cast<const BITMAPINFOHEADER*>(header);
    return static_cast<WORD>(DibColorCount(header) * (info->biSize == kCoreHeaderSize ? 3 : 4));
}

BOOL GetDibInfo(HGLOBAL hDib, BITMAPINFOHEADER* info) {
    if (!hDib) return FALSE;
    fw::GlobalLock<BYTE> p(hDib);
    if (!p) return FALSE;
    const SIZE_T have = ::GlobalSize(hDib);
    std::memset(info, 0, sizeof *info);
    std::memcpy(info, p.get(), have < sizeof *info ? have : sizeof *info);
    if (info->biSize != kCoreHeaderSize) {
        if (info->biSizeImage == 0)
            info->biSizeImage =
                static_cast<DWORD>((static_cast<LONG>(info->biBitCount) * info->biWidth + 31) / 32 *
                                   info->biHeight * 4);
        if (info->biClrUsed == 0) info->biClrUsed = DibColorCount(info);
    }
    return TRUE;
}

HGLOBAL ReadDibHeader(HANDLE file) {
    if (!file || file == INVALID_HANDLE_VALUE) return nullptr;
    const LONGLONG start = Tell(file);
    BITMAPFILEHEADER fh;
    if (!ReadExact(file, &fh, sizeof fh)) return nullptr;
    if (fh.bfType != 0x4D42) {
        fh.bfOffBits = 0;
        Seek(file, start, FILE_BEGIN);
    }
    BITMAPINFOHEADER h;
    if (!ReadExact(file, &h, sizeof h)) return nullptr;
    const WORD colors = DibColorCount(&h);
    const bool core = h.biSize == kCoreHeaderSize;
    if (core) {
        BITMAPCOREHEADER c;
        std::memcpy(&c, &h, sizeof c);
        h.biSize = sizeof(BITMAPINFOHEADER);
        h.biWidth = c.bcWidth;
        h.biHeight = c.bcHeight;
        h.biPlanes = c.bcPlanes;
        h.biBitCount = c.bcBitCount;
        h.biCompression = h.biSizeImage = 0;
        h.biXPelsPerMeter = h.biYPelsPerMeter = 0;
        h.biClrUsed = h.biClrImportant = colors;
        Seek(file, -28, FILE_CURRENT);
    } else if (h.biSize != sizeof(BITMAPINFOHEADER)) {
        return nullptr;
    }
    if (h.biSizeImage == 0) h.biSizeImage = RowBytesTimesHeight(h);
    if (h.biClrUsed == 0) h.biClrUsed = DibColorCount(&h);

    fw::UniqueGlobal block(::GlobalAlloc(GMEM_MOVEABLE | GMEM_ZEROINIT, h.biSize + colors * 4));
    if (!block) return nullptr;
    {
        fw::GlobalLock<BYTE> p(block.get());
        if (!p) return nullptr;
        std::memcpy(p.get(), &h, sizeof h);
        auto* quads = reinterpret_cast<RGBQUAD*>(p.get() + h.biSize);
        if (colors && core) {
            ReadSome(file, quads, colors * 3u);
            const auto* triples = reinterpret_cast<const RGBTRIPLE*>(quads);
            for (int i = colors - 1; i >= 0; --i) {
                RGBTRIPLE t = triples[i];
                quads[i] = {t.rgbtBlue, t.rgbtGreen, t.rgbtRed, 0};
            }
        } else if (colors) {
            ReadSome(file, quads, colors * 4u);
        }
    }
    if (fh.bfOffBits) Seek(file, start + fh.bfOffBits, FILE_BEGIN);
    return block.release();
}

HGLOBAL ReadDibFile(const std::string& path) {
    fw::UniqueHandle file(::CreateFileA(path.c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr,
                                        OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
    if (file.get() == INVALID_HANDLE_VALUE) {
        file.release();
        return nullptr;
    }
    fw::UniqueGlobal block(ReadDibHeader(file.get()));
    if (!block) return nullptr;
    BITMAPINFOHEADER info;
    GetDibInfo(block.get(), &info);
    const DWORD table = DibColorTableSize(&info);
    // Room for at least the rows the header describes, so that drawing the
    // DIB never reads past the block even when biSizeImage is too small.
    unsigned long long pixels = info.biSizeImage;
    if (RowsSize(info) > pixels) pixels = RowsSize(info);
    const unsigned long long total = info.biSize + table + pixels;
    if (total > kMaxDibBytes) return nullptr;
    HGLOBAL grown = ::GlobalReAlloc(block.get(), static_cast<SIZE_T>(total),
                                    GMEM_MOVEABLE | GMEM_ZEROINIT);
    if (!grown) return nullptr;
    block.release();
    block.reset(grown);
    {
        fw::GlobalLock<BYTE> p(block.get());
        if (!p) return nullptr;
        ReadSome(file.get(), p.get() + static_cast<WORD>(info.biSize) + table, info.biSizeImage);
    }
    return block.release();
}

BOOL WriteDibFile(const std::string& path, HGLOBAL hDib) {
    if (!hDib) return FALSE;
    fw::UniqueHandle file(::CreateFileA(path.c_str(), GENERIC_READ | GENERIC_WRITE, 0, nullptr,
                                        CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr));
    if (file.get() == INVALID_HANDLE_VALUE) {
        file.release();
        return FALSE;
    }
    fw::GlobalLock<BYTE> p(hDib);
    if (!p) return FALSE;
    const auto* info = reinterpret_cast<const BITMAPINFOHEADER*>(p.get());
    const DWORD size = static_cast<DWORD>(::GlobalSize(hDib));
    BITMAPFILEHEADER fh{};
    fh.bfType = 0x4D42;
    fh.bfSize = size + sizeof fh;
    fh.bfOffBits = sizeof fh + info->biSize + DibColorTableSize(info);
    // Header and block in one write: the file system is asked once.
    std::vector<BYTE> bytes(sizeof fh + size);
    std::memcpy(bytes.data(), &fh, sizeof fh);
    std::memcpy(bytes.data() + sizeof fh, p.get(), size);
    const DWORD total = static_cast<DWORD>(bytes.size());
    DWORD written = 0;
    return ::WriteFile(file.get(), bytes.data(), total, &written, nullptr) && written == total;
}

HGLOBAL BitmapToDib(HBITMAP bitmap, DWORD compression, WORD bits, HPALETTE palette) {
    if (!bitmap) return nullptr;
    if (!palette) palette = static_cast<HPALETTE>(::GetStockObject(DEFAULT_PALETTE));
    BITMAP bm;
    if (!::GetObjectA(bitmap, sizeof bm, &bm)) return nullptr;
    BITMAPINFOHEADER h{};
    h.biSize = sizeof h;
    h.biWidth = bm.bmWidth;
    h.biHeight = bm.bmHeight;
    h.biPlanes = 1;
    h.biBitCount = 0;  // lets GetDIBits fill in the bitmap's own depth
    h.biCompression = compression;

    fw::WindowDC screen(nullptr);
    HPALETTE oldPal = ::SelectPalette(screen.get(), palette, FALSE);
    ::RealizePalette(screen.get());
    HGLOBAL result = nullptr;
    fw::UniqueGlobal block(::GlobalAlloc(GMEM_MOVEABLE | GMEM_ZEROINIT,
                                         sizeof h + DibColorTableSize(&h) + 3 * sizeof(DWORD)));
    if (block) {
        {
            fw::GlobalLock<BITMAPINFO> p(block.get());
            std::memcpy(p.get(), &h, sizeof h);
            ::GetDIBits(screen.get(), bitmap, 0, static_cast<WORD>(h.biHeight), nullptr, p.get(),
                        DIB_RGB_COLORS);
            std::memcpy(&h, p.get(), sizeof h);
        }
        // The system answers BI_BITFIELDS for 16- and 32-bit screens; the
        // block has no room for masks, so the pixels keep the asked-for form.
        if (h.biCompression == BI_BITFIELDS && compression == BI_RGB) h.biCompression = BI_RGB;
        if (h.biSizeImage == 0) {
            h.biSizeImage = ((static_cast<DWORD>(bits) * h.biWidth + 31) >> 5) * h.biHeight * 4;
            if (compression != BI_RGB) h.biSizeImage = h.biSizeImage * 3 / 2;
        }
        const SIZE_T size = sizeof h + DibColorTableSize(&h) + h.biSizeImage;
        HGLOBAL grown = ::GlobalReAlloc(block.get(), size, GMEM_MOVEABLE);
        if (grown) {
            block.release();
            block.reset(grown);
            fw::GlobalLock<BYTE> p(block.get());
            auto* bi = reinterpret_cast<BITMAPINFO*>(p.get());
            std::memcpy(bi, &h, sizeof h);
            if (::GetDIBits(screen.get(), bitmap, 0, static_cast<WORD>(h.biHeight),
                            p.get() + sizeof h + DibColorTableSize(&h), bi, DIB_RGB_COLORS))
                result = block.get();
        }
    }
    ::SelectPalette(screen.get(), oldPal, FALSE);
    if (result) block.release();
    return result;
}

HBITMAP DibToBitmap(HGLOBAL hDib, HPALETTE palette) {
    fw::WaitCursor wait;
    if (!hDib) return nullptr;
    fw::GlobalLock<BYTE> p(hDib);
    if (!p) return nullptr;
    const auto* info = reinterpret_cast<const BITMAPINFOHEADER*>(p.get());
    if (info->biSize < sizeof(BITMAPINFOHEADER)) return nullptr;
    fw::WindowDC screen(nullptr);
    HPALETTE oldPal = nullptr;
    if (palette) {
        oldPal = ::SelectPalette(screen.get(), palette, FALSE);
        ::RealizePalette(screen.get());
    }
    HBITMAP bmp = ::CreateDIBitmap(screen.get(), info, CBM_INIT,
                                   p.get() + info->biSize + DibColorTableSize(info),
                                   reinterpret_cast<const BITMAPINFO*>(info), DIB_RGB_COLORS);
    if (palette) ::SelectPalette(screen.get(), oldPal, FALSE);
    return bmp;
}

void StretchBitmapInPlace(HDC dc, HBITMAP bitmap, double fx, double fy) {
    BITMAP bm;
    if (!::GetObjectA(bitmap, sizeof bm, &bm)) return;
    const int w = bm.bmWidth, h = bm.bmHeight;
    const int nw = static_cast<int>(w * fx), nh = static_cast<int>(h * fy);
    fw::UniqueDC src(::CreateCompatibleDC(dc)), dst(::CreateCompatibleDC(dc));
    fw::UniqueBitmap temp(::CreateCompatibleBitmap(dc, nw, nh));
    fw::SelectObj s1(src.get(), bitmap), s2(dst.get(), temp.get());
    ::StretchBlt(dst.get(), 0, 0, nw, nh, src.get(), 0, 0, w, h, SRCCOPY);
    ::PatBlt(src.get(), 0, 0, w, h, BLACKNESS);
    ::BitBlt(src.get(), 0, 0, nw, nh, dst.get(), 0, 0, SRCCOPY);
}

void DrawTransparentBitmap(HDC dc, HBITMAP bitmap, int x, int y, COLORREF transparent) {
    BITMAP bm;
    if (!::GetObjectA(bitmap, sizeof bm, &bm)) return;
    fw::UniqueDC src(::CreateCompatibleDC(dc));
    fw::SelectObj selSrc(src.get(), bitmap);
    POINT size{bm.bmWidth, bm.bmHeight};
    ::DPtoLP(src.get(), &size, 1);
    fw::UniqueDC back(::CreateCompatibleDC(dc)), object(::CreateCompatibleDC(dc)),
        memory(::CreateCompatibleDC(dc)), save(::CreateCompatibleDC(dc));
    fw::UniqueBitmap bmBack(::CreateBitmap(size.x, size.y, 1, 1, nullptr));
    fw::UniqueBitmap bmObject(::CreateBitmap(size.x, size.y, 1, 1, nullptr));
    fw::UniqueBitmap bmMemory(::CreateCompatibleBitmap(dc, size.x, size.y));
    fw::UniqueBitmap bmSave(::CreateCompatibleBitmap(dc, size.x, size.y));
    fw::SelectObj s1(back.get(), bmBack.get()), s2(object.get(), bmObject.get()),
        s3(memory.get(), bmMemory.get()), s4(save.get(), bmSave.get());
    ::SetMapMode(src.get(), ::GetMapMode(dc));
    ::BitBlt(save.get(), 0, 0, size.x, size.y, src.get(), 0, 0, SRCCOPY);
    COLORREF oldBk = ::SetBkColor(src.get(), transparent);
    ::BitBlt(object.get(), 0, 0, size.x, size.y, src.get(), 0, 0, SRCCOPY);
    ::SetBkColor(src.get(), oldBk);
    ::BitBlt(back.get(), 0, 0, size.x, size.y, object.get(), 0, 0, NOTSRCCOPY);
    ::BitBlt(memory.get(), 0, 0, size.x, size.y, dc, x, y, SRCCOPY);
    ::BitBlt(memory.get(), 0, 0, size.x, size.y, object.get(), 0, 0, SRCAND);
    ::BitBlt(src.get(), 0, 0, size.x, size.y, back.get(), 0, 0, SRCAND);
    ::BitBlt(memory.get(), 0, 0, size.x, size.y, src.get(), 0, 0, SRCPAINT);
    ::BitBlt(dc, x, y, size.x, size.y, memory.get(), 0, 0, SRCCOPY);
    ::BitBlt(src.get(), 0, 0, size.x, size.y, save.get(), 0, 0, SRCCOPY);
}
