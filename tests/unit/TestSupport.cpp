#include "TestSupport.h"
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <winternl.h>
#include "fw/Handle.h"

namespace testing_support {
namespace {
std::string g_testData;

void RemoveTree(const std::string& dir) {
    std::error_code ignored;
    std::filesystem::remove_all(dir, ignored);
}
}  // namespace

std::string WindowsPath(std::string p) {
    if (!p.empty() && p[0] == '/') p = "Z:" + p;
    for (char& c : p)
        if (c == '/') c = '\\';
    if (!p.empty() && p.back() != '\\') p += '\\';
    return p;
}

void ParseArgs(int argc, char** argv) {
    for (int i = 1; i < argc; ++i)
        if (std::strncmp(argv[i], "--testdata=", 11) == 0) g_testData = WindowsPath(argv[i] + 11);
}

const std::string& TestData() { return g_testData; }

bool Exists(const std::string& path) { return GetFileAttributesA(path.c_str()) != INVALID_FILE_ATTRIBUTES; }

std::vector<std::string> FilesIn(const std::string& dir, const char* pattern) {
    std::vector<std::string> names;
    WIN32_FIND_DATAA fd;
    HANDLE h = FindFirstFileA((dir + pattern).c_str(), &fd);
    if (h == INVALID_HANDLE_VALUE) return names;
    do names.push_back(fd.cFileName);
    while (FindNextFileA(h, &fd));
    FindClose(h);
    return names;
}

ScratchDir::ScratchDir() {
    static int counter = 0;
    char temp[MAX_PATH];
    GetTempPathA(MAX_PATH, temp);
    char name[64];
    std::snprintf(name, sizeof name, "zemblax-%lu-%d\\", GetCurrentProcessId(), ++counter);
    m_path = std::string(temp) + name;
    RemoveTree(m_path);
    CreateDirectoryA(m_path.c_str(), nullptr);
}

ScratchDir::~ScratchDir() { RemoveTree(m_path); }

void WriteText(const std::string& path, const std::string& text) {
    std::ofstream(path, std::ios::binary) << text;
}

std::string ReadText(const std::string& path) {
    std::ifstream f(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(f), std::istreambuf_iterator<char>()};
}

void WriteBmp(const std::string& path, int w, int h, COLORREF color) {
    const int row = (w * 3 + 3) & ~3;
    BITMAPINFOHEADER ih{sizeof ih, w, h, 1, 24, BI_RGB, static_cast<DWORD>(row * h)};
    BITMAPFILEHEADER fh{0x4D42, static_cast<DWORD>(14 + 40 + row * h), 0, 0, 54};
    std::string data(reinterpret_cast<char*>(&fh), 14);
    data.append(reinterpret_cast<char*>(&ih), 40);
    std::string pixels;
    for (int x = 0; x < w; ++x)
        pixels += {static_cast<char>(GetBValue(color)), static_cast<char>(GetGValue(color)),
                   static_cast<char>(GetRValue(color))};
    pixels.resize(row);
    for (int y = 0; y < h; ++y) data += pixels;
    WriteText(path, data);
}

std::string IniString(const std::string& file, const char* section, const char* key) {
    char buf[1024];
    GetPrivateProfileStringA(section, key, "\x01", buf, sizeof buf, file.c_str());
    return std::strcmp(buf, "\x01") == 0 ? std::string("<missing>") : std::string(buf);
}

bool SectionExists(const std::string& file, const char* section) {
    char buf[4096];
    return GetPrivateProfileSectionA(section, buf, sizeof buf, file.c_str()) > 0;
}

int GdiObjectCount() {
    // Wine keeps the handle table at PEB+0xF8 (x64): 24-byte entries whose
    // upper word holds the type; bit 0x80 marks stock objects.
    struct Entry {
        void* object;
        ULONG owner;
        USHORT unique;
        BYTE type;
        BYTE flags;
        void* user;
    };
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Warray-bounds"  // the TEB is read through gs:0x30
    auto* peb = reinterpret_cast<BYTE*>(NtCurrentTeb()->ProcessEnvironmentBlock);
#pragma GCC diagnostic pop
    auto* table = *reinterpret_cast<Entry**>(peb + 0xF8);
    if (!table) return -1;
    int count = 0;
    for (int i = 0; i < 0x4000; ++i) {
        const Entry& e = table[i];
        if (e.type && !(e.flags & 0x80) && e.object) ++count;
    }
    return count;
}

int HeapBlockCount() {
    HANDLE heap = GetProcessHeap();
    PROCESS_HEAP_ENTRY entry{};
    int count = 0;
    HeapLock(heap);
    while (HeapWalk(heap, &entry))
        if (entry.wFlags & PROCESS_HEAP_ENTRY_BUSY) ++count;
    HeapUnlock(heap);
    return count;
}

void* PatchImport(HMODULE module, const char* dll, const char* name, void* replacement) {
    auto* base = reinterpret_cast<BYTE*>(module);
    auto* dos = reinterpret_cast<IMAGE_DOS_HEADER*>(base);
    auto* nt = reinterpret_cast<IMAGE_NT_HEADERS*>(base + dos->e_lfanew);
    const auto& dir = nt->OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_IMPORT];
    for (auto* imp = reinterpret_cast<IMAGE_IMPORT_DESCRIPTOR*>(base + dir.VirtualAddress);
         imp->Name; ++imp) {
        if (lstrcmpiA(reinterpret_cast<char*>(base + imp->Name), dll) != 0) continue;
        auto* names = reinterpret_cast<IMAGE_THUNK_DATA*>(base + imp->OriginalFirstThunk);
        auto* slots = reinterpret_cast<IMAGE_THUNK_DATA*>(base + imp->FirstThunk);
        for (; names->u1.AddressOfData; ++names, ++slots) {
            if (IMAGE_SNAP_BY_ORDINAL(names->u1.Ordinal)) continue;
            auto* byName = reinterpret_cast<IMAGE_IMPORT_BY_NAME*>(base + names->u1.AddressOfData);
            if (std::strcmp(reinterpret_cast<char*>(byName->Name), name) != 0) continue;
            DWORD old;
            VirtualProtect(&slots->u1.Function, sizeof(void*), PAGE_READWRITE, &old);
            void* previous = reinterpret_cast<void*>(slots->u1.Function);
            slots->u1.Function = reinterpret_cast<ULONG_PTR>(replacement);
            VirtualProtect(&slots->u1.Function, sizeof(void*), old, &old);
            return previous;
        }
    }
    return nullptr;
}

void FillBitmapRect(HBITMAP bitmap, RECT r, COLORREF color) {
    fw::WindowDC screen(nullptr);
    fw::UniqueDC dc(CreateCompatibleDC(screen.get()));
    fw::SelectObj sel(dc.get(), bitmap);
    fw::UniqueBrush brush(CreateSolidBrush(color));
    FillRect(dc.get(), &r, brush.get());
}

fw::UniqueBitmap WindowBitmap(HWND window) {
    RECT r{};
    GetClientRect(window, &r);
    fw::WindowDC source(window);
    return PaintedBitmap(r.right, r.bottom, BLACKNESS, [&](HDC dc) {
        BitBlt(dc, 0, 0, r.right, r.bottom, source.get(), 0, 0, SRCCOPY);
    });
}

std::vector<DWORD> BitmapPixels(HBITMAP bitmap, int* width, int* height) {
    BITMAP bm{};
    GetObjectA(bitmap, sizeof bm, &bm);
    if (width) *width = bm.bmWidth;
    if (height) *height = bm.bmHeight;
    std::vector<DWORD> px(static_cast<size_t>(bm.bmWidth) * bm.bmHeight);
    BITMAPINFOHEADER bih{sizeof bih, bm.bmWidth, -bm.bmHeight, 1, 32, BI_RGB};
    fw::WindowDC dc(nullptr);
    GetDIBits(dc.get(), bitmap, 0, bm.bmHeight, px.data(), reinterpret_cast<BITMAPINFO*>(&bih),
              DIB_RGB_COLORS);
    for (DWORD& p : px) p &= 0xFFFFFF;
    return px;
}

}  // namespace testing_support
