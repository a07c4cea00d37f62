#include "dib/DibValidation.h"
#include <climits>
#include <cstring>

namespace {

constexpr DWORD kCoreSize = sizeof(BITMAPCOREHEADER);
constexpr DWORD kInfoSize = sizeof(BITMAPINFOHEADER);
constexpr DWORD kV4Size = sizeof(BITMAPV4HEADER);
constexpr DWORD kV5Size = sizeof(BITMAPV5HEADER);
constexpr DWORD kProfileLinked = 0x4C494E4B;    // 'LINK'
constexpr DWORD kProfileEmbedded = 0x4D424544;  // 'MBED'
// GDI does its size arithmetic in 32-bit ints: a picture beyond this would
// make it compute a short buffer and read past ours.
constexpr unsigned long long kMaxImageBytes = INT_MAX;
// GDI converts or decodes the whole picture before stretching it; an RLE
// header can claim any size for a few bytes. 64 M pixels (8192 x 8192) is
// far beyond any exposure.
constexpr unsigned long long kMaxPixels = 1ull << 26;

template <typename T>
T ReadAt(const BYTE* p, SIZE_T offset) {
    T v;
    std::memcpy(&v, p + offset, sizeof v);
    return v;
}

// Walks an RLE stream as a decoder does and accepts it only when its end mark
// lies inside the stream: a decoder never has a reason to read further.
bool RleStreamEndsInside(const BYTE* p, SIZE_T size, bool fourBit) {
    SIZE_T i = 0;
    while (size - i >= 2) {
        const BYTE count = p[i], code = p[i + 1];
        i += 2;
        if (count != 0) continue;  // a run: two bytes
        switch (code) {
        case 0: break;             // end of line
        case 1: return true;       // end of bitmap
        case 2:                    // delta: two more bytes
            if (size - i < 2) return false;
            i += 2;
            break;
        default: {                 // literal pixels, padded to a word
            SIZE_T bytes = fourBit ? (code + 1u) / 2 : code;
            bytes += bytes & 1;
            if (size - i < bytes) return false;
            i += bytes;
            break;
        }
        }
    }
    return false;
}

bool ValidBitCount(DWORD compression, WORD bits) {
    switch (compression) {
    case BI_RGB:
        return bits == 1 || bits == 4 || bits == 8 || bits == 16 || bits == 24 || bits == 32;
    case BI_RLE8: return bits == 8;
    case BI_RLE4: return bits == 4;
    case BI_BITFIELDS: return bits == 16 || bits == 32;
    default: return false;  // JPEG, PNG and anything unknown
    }
}

// Bytes of the pixel rows of an uncompressed picture, or 0 when absurd.
unsigned long long RowsBytes(unsigned long long width, unsigned long long height, WORD bits) {
    const unsigned long long rowBits = width * bits + 31;
    if (rowBits > INT_MAX) return 0;
    const unsigned long long row = rowBits / 32 * 4;
    if (height > kMaxImageBytes / row) return 0;
    return row * height;
}

}  // namespace

bool IsDrawablePackedDib(const void* header, SIZE_T headerBytes, const void* bits,
                         SIZE_T bitsBytes, DibGeometry* geometry) {
    if (!header || !bits || headerBytes < sizeof(DWORD)) return false;
    const auto* h = static_cast<const BYTE*>(header);
    const DWORD size = ReadAt<DWORD>(h, 0);
    unsigned long long need = size;  // bytes of the header block GDI reads
    unsigned long long width, height;
    bool topDown = false;
    WORD bitCount;
    DWORD compression = BI_RGB;
    if (size == kCoreSize) {
        if (headerBytes < kCoreSize) return false;
        const auto core = ReadAt<BITMAPCOREHEADER>(h, 0);
        if (core.bcPlanes != 1) return false;
        bitCount = core.bcBitCount;
        if (bitCount != 1 && bitCount != 4 && bitCount != 8 && bitCount != 24) return false;
        width = core.bcWidth;
        height = core.bcHeight;
        if (bitCount <= 8) need += (1ull << bitCount) * sizeof(RGBTRIPLE);
    } else if (size == kInfoSize || size == kV4Size || size == kV5Size) {
        if (headerBytes < size) return false;
        const auto info = ReadAt<BITMAPINFOHEADER>(h, 0);
        if (info.biPlanes != 1 || info.biWidth <= 0 || info.biHeight == 0 ||
            info.biHeight == LONG_MIN)
            return false;
        bitCount = info.biBitCount;
        compression = info.biCompression;
        if (!ValidBitCount(compression, bitCount)) return false;
        width = static_cast<unsigned long long>(info.biWidth);
        topDown = info.biHeight < 0;
        height = static_cast<unsigned long long>(topDown ? -static_cast<long long>(info.biHeight)
                                                         : info.biHeight);
        // Masks follow a plain info header; the larger headers hold them.
        if (compression == BI_BITFIELDS && size == kInfoSize) need += 3 * sizeof(DWORD);
        unsigned long long colors = info.biClrUsed;
        if (colors == 0 && bitCount <= 8) colors = 1ull << bitCount;
        need += colors * sizeof(RGBQUAD);
        if (size == kV5Size) {
            // A linked or embedded colour profile lies behind the header.
            const auto v5 = ReadAt<BITMAPV5HEADER>(h, 0);
            if (v5.bV5CSType == kProfileLinked || v5.bV5CSType == kProfileEmbedded) {
                const unsigned long long end =
                    static_cast<unsigned long long>(v5.bV5ProfileData) + v5.bV5ProfileSize;
                if (end > headerBytes) return false;
            }
        }
        if (compression == BI_RLE4 || compression == BI_RLE8) {
            // RLE pictures are bottom-up only; their length is biSizeImage.
            if (topDown || info.biSizeImage == 0 || info.biSizeImage > bitsBytes) return false;
            if (RowsBytes(width, height, bitCount) == 0) return false;
            if (!RleStreamEndsInside(static_cast<const BYTE*>(bits), info.biSizeImage,
                                     compression == BI_RLE4))
                return false;
        }
    } else {
        return false;
    }
    if (width == 0 || height == 0 || need > headerBytes) return false;
    if (width > kMaxPixels || height > kMaxPixels / width) return false;
    if (compression == BI_RGB || compression == BI_BITFIELDS) {
        const unsigned long long rows = RowsBytes(width, height, bitCount);
        if (rows == 0 || rows > bitsBytes) return false;
    }
    if (geometry) {
        geometry->width = static_cast<LONG>(width);
        geometry->height = static_cast<LONG>(height);
        geometry->topDown = topDown;
    }
    return true;
}
