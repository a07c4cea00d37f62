// Writes what a screen bitmap shows as a 24-bit BMP file (for the pictures
// the demo leaves behind).
#pragma once
#include <windows.h>
#include <string>

bool WriteBitmapFile(HBITMAP bitmap, const std::string& path);
