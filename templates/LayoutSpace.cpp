#include "templates/LayoutSpace.h"

// The i686 DLL must round as the x86_64 build that the tests run: doubles in
// SSE2 registers, never in the x87 unit at whatever precision a host left it.
#if defined(__i386__) && !defined(__SSE2_MATH__)
#error "build i686 with -msse2 -mfpmath=sse"
#endif

namespace layout {

RECT MapToHost(const RECT& take, const RECT& host) {
    const int w = host.right - host.left, h = host.bottom - host.top;
    // Multiplied by the reciprocal, not divided: the host sees these roundings.
    const double sx = w * (1.0 / kAreaWidth), sy = h * (1.0 / kAreaHeight);
    RECT r = take;
    ::OffsetRect(&r, -kAreaLeft, -kAreaTop);
    return {static_cast<LONG>(r.left * sx), static_cast<LONG>(r.top * sy),
            static_cast<LONG>(r.right * sx), static_cast<LONG>(r.bottom * sy)};
}

CanvasScale CanvasScale::For(const RECT& client) {
    return {static_cast<double>(kWidth) / (client.right - client.left),
            static_cast<double>(kHeight) / (client.bottom - client.top)};
}

RECT CanvasScale::ToPixels(const RECT& l) const {
    return {PixelX(l.left), PixelY(l.top), PixelX(l.right), PixelY(l.bottom)};
}

}  // namespace layout
