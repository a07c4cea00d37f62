#include "Floors.h"
#include <memory>
#include "fw/Gdi.h"
#include "fw/Handle.h"

namespace floors {
namespace {

INT_PTR CALLBACK PlainProc(HWND dialog, UINT msg, WPARAM wp, LPARAM lp) {
    if (msg == WM_INITDIALOG) {
        if (auto* init = reinterpret_cast<const std::function<void(HWND)>*>(lp); init && *init)
            (*init)(dialog);
        return TRUE;
    }
    if (msg == WM_COMMAND && (LOWORD(wp) == IDOK || LOWORD(wp) == IDCANCEL)) {
        ::EndDialog(dialog, LOWORD(wp));
        return TRUE;
    }
    return FALSE;
}

fw::UniqueHandle Open(const std::string& path, bool write) {
    HANDLE h = ::CreateFileA(path.c_str(), write ? GENERIC_WRITE : GENERIC_READ,
                             write ? 0 : FILE_SHARE_READ, nullptr,
                             write ? CREATE_ALWAYS : OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
    return fw::UniqueHandle(h == INVALID_HANDLE_VALUE ? nullptr : h);
}

std::string ReadBytes(const std::string& path) {
    std::string bytes;
    fw::UniqueHandle file = Open(path, false);
    if (!file) return bytes;
    bytes.resize(::GetFileSize(file.get(), nullptr));
    DWORD read = 0;
    ::ReadFile(file.get(), bytes.data(), static_cast<DWORD>(bytes.size()), &read, nullptr);
    bytes.resize(read);
    return bytes;
}

}  // namespace

Samples PlainDialog(IdleDriver& driver, HMODULE dll, int resourceId, int control, int repeats,
                    const std::function<void(HWND)>& init, bool untilPainted) {
    Samples samples;
    for (int i = 0; i < repeats; ++i) {
        const double start = NowMs();
        auto shown = [&](HWND dialog) {
            samples.Add(NowMs() - start);
            IdleDriver::Click(dialog, IDCANCEL);
        };
        if (untilPainted)
            driver.ThenPainted(control, shown);
        else
            driver.Then(control, shown);
        ::DialogBoxParamA(dll, MAKEINTRESOURCEA(resourceId), driver.host(), PlainProc,
                          reinterpret_cast<LPARAM>(&init));
    }
    return samples;
}

void Settle() {
    MSG msg;
    while (::PeekMessageW(&msg, nullptr, 0, 0, PM_REMOVE)) {
        ::TranslateMessage(&msg);
        ::DispatchMessageW(&msg);
    }
}

Samples Blit(HWND window, int w, int h, int repeats) {
    fw::WindowDC screen(nullptr);
    fw::UniqueDC memory(::CreateCompatibleDC(screen.get()));
    fw::UniqueBitmap picture(::CreateCompatibleBitmap(screen.get(), w, h));
    fw::SelectObj select(memory.get(), picture.get());
    for (int y = 0; y < h; y += 8) ::PatBlt(memory.get(), 0, y, w, 4, y % 16 ? WHITENESS : BLACKNESS);
    return Samples::Time(repeats, [&](int i) {
        {
            fw::WindowDC dc(window);
            // Alternate the source so that no layer can skip an unchanged copy.
            ::BitBlt(dc.get(), 0, 0, w, h, memory.get(), 0, i % 2 * 4, SRCCOPY);
        }
        Settle();
    });
}

namespace {
LRESULT CALLBACK BareProc(HWND hwnd, UINT msg, WPARAM wp, LPARAM lp) {
    if (msg != WM_PAINT) return ::DefWindowProcA(hwnd, msg, wp, lp);
    PAINTSTRUCT ps;
    HDC dc = ::BeginPaint(hwnd, &ps);
    auto memory = reinterpret_cast<HDC>(::GetWindowLongPtrA(hwnd, GWLP_USERDATA));
    ::BitBlt(dc, ps.rcPaint.left, ps.rcPaint.top, ps.rcPaint.right - ps.rcPaint.left,
             ps.rcPaint.bottom - ps.rcPaint.top, memory, ps.rcPaint.left, ps.rcPaint.top, SRCCOPY);
    ::EndPaint(hwnd, &ps);
    return 0;
}
}  // namespace

Samples BareRepaint(int w, int h, int repeats) {
    WNDCLASSA wc{};
    wc.lpfnWndProc = BareProc;
    wc.hInstance = ::GetModuleHandleA(nullptr);
    wc.lpszClassName = "ZemblaxBenchBare";
    ::RegisterClassA(&wc);
    HWND window = ::CreateWindowExA(WS_EX_TOPMOST, wc.lpszClassName, "", WS_POPUP | WS_VISIBLE,
                                    1280 - w, 0, w, h, nullptr, nullptr, wc.hInstance, nullptr);
    fw::WindowDC screen(nullptr);
    fw::UniqueDC memory(::CreateCompatibleDC(screen.get()));
    fw::UniqueBitmap picture(::CreateCompatibleBitmap(screen.get(), w, h));
    fw::SelectObj select(memory.get(), picture.get());
    ::SetWindowLongPtrA(window, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(memory.get()));
    Settle();
    Samples s = Samples::Time(repeats, [&](int) {
        ::InvalidateRect(window, nullptr, FALSE);
        ::UpdateWindow(window);
        Settle();
    });
    ::DestroyWindow(window);
    return s;
}

Samples WriteFiles(const std::vector<std::string>& files, const std::string& scratch,
                   int repeats) {
    std::vector<std::string> contents;
    for (const auto& f : files) contents.push_back(ReadBytes(f));
    return Samples::Time(repeats, [&](int) {
        for (size_t i = 0; i < contents.size(); ++i) {
            fw::UniqueHandle file = Open(scratch + std::to_string(i), true);
            DWORD written = 0;
            ::WriteFile(file.get(), contents[i].data(), static_cast<DWORD>(contents[i].size()),
                        &written, nullptr);
        }
    });
}

Samples ReadFiles(const std::vector<std::string>& files, int repeats) {
    return Samples::Time(repeats, [&](int) {
        for (const auto& f : files) (void)ReadBytes(f);
    });
}

}  // namespace floors
