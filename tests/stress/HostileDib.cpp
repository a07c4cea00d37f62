#include "HostileDib.h"
#include <algorithm>
#include <climits>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <iterator>

namespace {
constexpr DWORD kProfileLinked = 0x4C494E4B;    // 'LINK'
constexpr DWORD kProfileEmbedded = 0x4D424544;  // 'MBED'

template <typename T>
std::string Bytes(const T& v) {
    return std::string(reinterpret_cast<const char*>(&v), sizeof v);
}
}  // namespace

std::string HostileDib::Noise(size_t n) {
    std::string s(n, '\0');
    for (char& c : s) c = static_cast<char>(m_rng());
    return s;
}

// Rows of runs, literals and deltas; usually closed by the end mark.
std::string HostileDib::RleStream(int width, int height, bool fourBit) {
    std::string s;
    const int rows = static_cast<int>(Below(height + 2));
    for (int y = 0; y < rows; ++y) {
        for (int x = 0; x < width;) {
            switch (Below(6)) {
            case 0: {  // literal, padded to a word
                const int n = 3 + static_cast<int>(Below(40));
                s += '\0';
                s += static_cast<char>(n);
                size_t bytes = fourBit ? (n + 1) / 2 : n;
                s += Noise(bytes + (bytes & 1));
                x += n;
                break;
            }
            case 1:  // delta
                if (Chance(30)) {
                    s += std::string("\0\2", 2);
                    s += static_cast<char>(Below(8));
                    s += static_cast<char>(Below(2));
                }
                x += 4;
                break;
            default: {  // run
                const int n = 1 + static_cast<int>(Below(255));
                s += static_cast<char>(n);
                s += static_cast<char>(m_rng());
                x += n;
                break;
            }
            }
        }
        s += std::string("\0\0", 2);
    }
    if (Chance(80)) s += std::string("\0\1", 2);
    return s;
}

std::string HostileDib::Cut(const std::string& s) {
    return s.substr(0, Below(static_cast<unsigned>(s.size()) + 1));
}

DibBlocks HostileDib::Next() {
    DibBlocks d;
    const unsigned kind = Below(100);
    if (kind < 4) {  // noise for both blocks
        d.header = Noise(Below(1200));
        d.bits = Noise(Below(5000));
        return d;
    }
    static const WORD kBitCounts[] = {1, 4, 8, 16, 24, 32};
    WORD bits = kBitCounts[Below(6)];
    if (Chance(5)) bits = static_cast<WORD>(Chance(50) ? Below(70) : Any());
    DWORD compression = BI_RGB;
    if (bits == 8 && Chance(30)) compression = BI_RLE8;
    if (bits == 4 && Chance(30)) compression = BI_RLE4;
    if ((bits == 16 || bits == 32) && Chance(25)) compression = BI_BITFIELDS;
    if (Chance(5)) compression = Chance(50) ? Below(8) : Any();
    LONG width = 1 + static_cast<LONG>(Below(200));
    LONG height = 1 + static_cast<LONG>(Below(150));
    if (Chance(25) && compression != BI_RLE4 && compression != BI_RLE8) height = -height;
    if (Chance(8)) {
        static const LONG kOdd[] = {0, -1, -200, 65535, 65536, 0x7FFFFFFF, 0x40000000, LONG_MIN};
        (Chance(50) ? width : height) = Chance(70) ? kOdd[Below(8)] : static_cast<LONG>(Any());
    }
    WORD planes = Chance(95) ? 1 : static_cast<WORD>(Below(4));
    DWORD clrUsed = 0;
    if (Chance(15)) {
        static const DWORD kUsed[] = {1, 2, 16, 255, 256, 257, 1000, 0xFFFFFFFF};
        clrUsed = Chance(80) ? kUsed[Below(8)] : Any();
    }
    const unsigned long long stride =
        ((static_cast<unsigned long long>(bits) * static_cast<DWORD>(width) + 31) / 32) * 4;
    const unsigned long long absHeight =
        height < 0 ? 0ull - static_cast<unsigned long long>(static_cast<long long>(height))
                   : static_cast<unsigned long long>(height);
    const unsigned long long rows = stride * absHeight;
    const bool sane = width > 0 && width <= 4096 && absHeight > 0 && absHeight <= 4096 &&
                      bits <= 32 && rows <= (4u << 20);

    // Pixels first: an RLE header names the stream's length.
    if (compression == BI_RLE4 || compression == BI_RLE8) {
        d.bits = sane ? RleStream(width, static_cast<int>(absHeight), compression == BI_RLE4)
                      : Noise(Below(3000));
    } else if (sane) {
        d.bits = Noise(static_cast<size_t>(rows));
    } else {
        d.bits = Noise(Below(5000));
    }
    DWORD sizeImage = 0;
    if (compression == BI_RLE4 || compression == BI_RLE8 || Chance(30)) {
        sizeImage = static_cast<DWORD>(d.bits.size());
        if (Chance(15)) sizeImage = Chance(50) ? sizeImage + Below(64) - 32 : Any();
    }
    switch (Below(10)) {  // the pixel block's own length
    case 0: d.bits = Cut(d.bits); break;
    case 1: d.bits += Noise(Below(100)); break;
    case 2: if (!d.bits.empty()) d.bits.pop_back(); break;
    default: break;
    }

    const unsigned headerKind = Below(100);
    const bool core = headerKind < 15;
    if (core) {
        BITMAPCOREHEADER c{sizeof c, static_cast<WORD>(width), static_cast<WORD>(absHeight),
                           planes, bits};
        d.header = Bytes(c);
    } else {
        BITMAPV5HEADER v{};
        DWORD size = sizeof(BITMAPINFOHEADER);
        if (headerKind >= 80) size = sizeof(BITMAPV4HEADER);
        if (headerKind >= 88) size = sizeof(BITMAPV5HEADER);
        if (headerKind >= 97) size = Below(200);
        v.bV5Size = size;
        v.bV5Width = width;
        v.bV5Height = height;
        v.bV5Planes = planes;
        v.bV5BitCount = bits;
        v.bV5Compression = compression;
        v.bV5SizeImage = sizeImage;
        v.bV5ClrUsed = clrUsed;
        v.bV5RedMask = 0xF800;
        v.bV5GreenMask = 0x07E0;
        v.bV5BlueMask = 0x001F;
        if (size >= sizeof(BITMAPV5HEADER) && Chance(30)) {
            v.bV5CSType = Chance(50) ? kProfileEmbedded : kProfileLinked;
            v.bV5ProfileData = Chance(50) ? size : Any();
            v.bV5ProfileSize = Below(64);
        }
        d.header = Bytes(v).substr(0, size > sizeof v ? sizeof v : size);
        if (size > sizeof v) d.header += Noise(size - sizeof v);
        if (compression == BI_BITFIELDS && size == sizeof(BITMAPINFOHEADER) && Chance(85))
            d.header += Bytes(v.bV5RedMask) + Bytes(v.bV5GreenMask) + Bytes(v.bV5BlueMask);
        if (v.bV5CSType == kProfileEmbedded && v.bV5ProfileData == size)
            d.header += Noise(v.bV5ProfileSize);
    }
    unsigned long long colors = clrUsed ? clrUsed : (bits <= 8 ? 1ull << bits : 0);
    if (colors > 4096) colors = Below(300);
    if (Chance(20)) colors = Below(static_cast<unsigned>(colors) + 10);
    d.header += Noise(static_cast<size_t>(colors) * (core ? 3 : 4));
    if (Chance(10)) d.header = Cut(d.header);
    if (Chance(3)) d.header[Below(static_cast<unsigned>(d.header.size()))] ^= 1 << Below(8);
    return d;
}

std::string HostileDib::Describe(const DibBlocks& d) {
    BITMAPINFOHEADER h{};
    std::memcpy(&h, d.header.data(), std::min(d.header.size(), sizeof h));
    char text[160];
    std::snprintf(text, sizeof text, "header %zu bytes (biSize %lu, %ld x %ld, %u bits, compression %lu, "
                  "biSizeImage %lu, biClrUsed %lu), bits %zu bytes",
                  d.header.size(), h.biSize, h.biWidth, h.biHeight, h.biBitCount, h.biCompression,
                  h.biSizeImage, h.biClrUsed, d.bits.size());
    return text;
}

DibBlocks HostileDib::Grey(int width, int height) {
    DibBlocks d;
    BITMAPINFOHEADER h{sizeof h, width, height, 1, 8, BI_RGB};
    d.header = Bytes(h);
    for (int i = 0; i < 256; ++i) d.header += Bytes(RGBQUAD{BYTE(i), BYTE(i), BYTE(i), 0});
    const int row = (width + 3) & ~3;
    d.bits.resize(static_cast<size_t>(row) * height);
    for (size_t i = 0; i < d.bits.size(); ++i) d.bits[i] = static_cast<char>(i % 251);
    return d;
}

bool HostileDib::FromBmpFile(const std::string& file, DibBlocks& out) {
    std::ifstream in(file, std::ios::binary);
    const std::string all((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    if (all.size() < sizeof(BITMAPFILEHEADER)) return false;
    BITMAPFILEHEADER fh;
    std::memcpy(&fh, all.data(), sizeof fh);
    size_t offBits = fh.bfOffBits;
    if (offBits < sizeof fh || offBits > all.size()) offBits = all.size();
    out.header = all.substr(sizeof fh, offBits - sizeof fh);
    out.bits = all.substr(offBits);
    return true;
}
