// Synthetic intraoral radiographs for the demo host: grey teeth on a dark
// background, sized and turned like the take's sensor, the label burned in.
#pragma once
#include <windows.h>
#include <string>

struct Exposure {
    HGLOBAL header = nullptr;  // BITMAPINFO with a grey palette
    HGLOBAL bits = nullptr;    // 8-bit rows
};

// A new exposure; the caller passes both blocks on (the plug-in frees them).
Exposure MakeExposure(const std::string& label, bool vertical, int seed);
// A bitmap of the same picture for the host's own layout.
HBITMAP ExposureToBitmap(const Exposure& e);
