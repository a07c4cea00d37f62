// Packed device-independent bitmaps in movable global memory (header, colour
// table, pixel rows in one block), BMP files, and conversion to and from
// screen bitmaps. Whoever receives a block from these functions frees it.
#pragma once
#include <windows.h>
#include <string>

WORD DibColorCount(const void* header);
WORD DibColorTableSize(const void* header);
BOOL GetDibInfo(HGLOBAL hDib, BITMAPINFOHEADER* info);
// Reads header and colour table from the file's current position; leaves the
// file at the pixels. A bare DIB (no 'BM' file header) is accepted.
HGLOBAL ReadDibHeader(HANDLE file);
HGLOBAL ReadDibFile(const std::string& path);
BOOL WriteDibFile(const std::string& path, HGLOBAL hDib);
HGLOBAL BitmapToDib(HBITMAP bitmap, DWORD compression, WORD bits, HPALETTE palette);
HBITMAP DibToBitmap(HGLOBAL hDib, HPALETTE palette);
void StretchBitmapInPlace(HDC dc, HBITMAP bitmap, double fx, double fy);
void DrawTransparentBitmap(HDC dc, HBITMAP bitmap, int x, int y, COLORREF transparent);
