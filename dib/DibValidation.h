// Checks a packed DIB handed in from outside (header with colour table in one
// block, pixels in another) before any drawing call reads it.
#pragma once
#include <windows.h>

// What a block that passed the check describes, read from either header form.
struct DibGeometry {
    LONG width = 0;   // pixels, above 0
    LONG height = 0;  // rows, above 0 (the sign of biHeight is in topDown)
    bool topDown = false;
};

// True when `header` (headerBytes readable) and `bits` (bitsBytes readable)
// hold everything StretchDIBits with DIB_RGB_COLORS reads for this header:
// header, colour masks and colour table, and every pixel row or the whole RLE
// stream up to its end mark. Headers: core (12), info (40), V4 (108), V5 (124).
// Pictures beyond 64 M pixels are refused: GDI would convert them whole.
// Nothing outside the given sizes is read, also when the check fails.
bool IsDrawablePackedDib(const void* header, SIZE_T headerBytes, const void* bits,
                         SIZE_T bitsBytes, DibGeometry* geometry = nullptr);
