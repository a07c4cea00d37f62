#include "fw/Gdi.h"
#include <cstring>
#include <cstdlib>

namespace fw {

UniqueFont CreatePointFont(int tenths, const char* face) {
    LOGFONTA lf{};
    lstrcpynA(lf.lfFaceName, face ? face : "", LF_FACESIZE);
    lf.lfCharSet = DEFAULT_CHARSET;
    WindowDC dc(nullptr);
    POINT pt{0, MulDiv(GetDeviceCaps(dc.get(), LOGPIXELSY), tenths, 720)};
    lf.lfHeight = -std::abs(pt.y);
    return UniqueFont(::CreateFontIndirectA(&lf));
}

}  // namespace fw
