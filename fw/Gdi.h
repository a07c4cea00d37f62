// Small GDI helpers that the framework classes of other toolkits provide.
#pragma once
#include <windows.h>
#include "fw/Handle.h"

namespace fw {

// A font of `tenths` tenths of a point for the screen, like a point font.
UniqueFont CreatePointFont(int tenths, const char* face);

inline int Width(const RECT& r) { return r.right - r.left; }
inline int Height(const RECT& r) { return r.bottom - r.top; }

}  // namespace fw
