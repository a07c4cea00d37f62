// Helpers shared by the test programs: test data folders, scratch folders,
// INI files, and counters for GDI objects and heap blocks (leak checks).
#pragma once
#include <windows.h>
#include <string>
#include <vector>
#include "fw/Handle.h"

namespace testing_support {

// Parses --testdata=<path> (a Unix path from CTest) out of argv.
void ParseArgs(int argc, char** argv);
// A Unix path as Wine's Z: drive shows it, with a trailing backslash.
std::string WindowsPath(std::string path);
// Windows path of the prepared test data, with a trailing backslash.
const std::string& TestData();
bool Exists(const std::string& path);
// Names of the files in `dir` that match `pattern`, in the order the system lists them.
std::vector<std::string> FilesIn(const std::string& dir, const char* pattern);

// A fresh, empty folder below %TEMP%; removed with its files at destruction.
class ScratchDir {
public:
    ScratchDir();
    ~ScratchDir();
    ScratchDir(const ScratchDir&) = delete;
    ScratchDir& operator=(const ScratchDir&) = delete;
    const std::string& path() const { return m_path; }  // with trailing backslash
    std::string File(const std::string& name) const { return m_path + name; }

private:
    std::string m_path;
};

void WriteText(const std::string& path, const std::string& text);
std::string ReadText(const std::string& path);
// A 24-bit BMP file of w x h pixels, all of one colour.
void WriteBmp(const std::string& path, int w, int h, COLORREF color);
std::string IniString(const std::string& file, const char* section, const char* key);
bool SectionExists(const std::string& file, const char* section);

// Live GDI objects of this process (stock objects not counted).
int GdiObjectCount();
// Busy blocks of the process heap, where global memory blocks live.
int HeapBlockCount();

// Points the module's import of dll!name at `replacement`; returns what the
// import pointed at before, or null when the module does not import it.
void* PatchImport(HMODULE module, const char* dll, const char* name, void* replacement);

// A screen-compatible bitmap of w x h, filled with WHITENESS or BLACKNESS,
// then painted by `paint(dc)` through a memory DC.
template <typename Paint>
fw::UniqueBitmap PaintedBitmap(int w, int h, DWORD rop, Paint paint) {
    fw::WindowDC screen(nullptr);
    fw::UniqueBitmap bitmap(CreateCompatibleBitmap(screen.get(), w, h));
    fw::UniqueDC dc(CreateCompatibleDC(screen.get()));
    fw::SelectObj sel(dc.get(), bitmap.get());
    PatBlt(dc.get(), 0, 0, w, h, rop);
    paint(dc.get());
    return bitmap;
}
inline fw::UniqueBitmap FilledBitmap(int w, int h, DWORD rop = WHITENESS) {
    return PaintedBitmap(w, h, rop, [](HDC) {});
}
// Fills a rectangle of a bitmap with one colour.
void FillBitmapRect(HBITMAP bitmap, RECT r, COLORREF color);
// What a window's client area holds now, as the last repaints left it.
fw::UniqueBitmap WindowBitmap(HWND window);

// A screen-compatible bitmap's pixels as 0x00RRGGBB, top row first.
std::vector<DWORD> BitmapPixels(HBITMAP bitmap, int* width = nullptr, int* height = nullptr);

}  // namespace testing_support
