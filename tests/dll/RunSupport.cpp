#include "RunSupport.h"
#include <commctrl.h>
#include <algorithm>
#include <cstring>

void SelectEntry(HWND dlg, int index) {
    LVITEMA item{};
    item.stateMask = LVIS_SELECTED | LVIS_FOCUSED;
    item.state = index >= 0 ? item.stateMask : 0;
    SendMessageA(GetDlgItem(dlg, IDC_SELECTION_LIST), LVM_SETITEMSTATE, index,
                 reinterpret_cast<LPARAM>(&item));
}

void ChooseTemplate(DialogDriver& d, int index) {
    HWND dlg = d.WaitFor(IDC_SELECTION_LIST);
    if (!dlg) return;
    SelectEntry(dlg, index);
    DialogDriver::Click(dlg, IDOK);
    DialogDriver::WaitGone(dlg);
}

std::string EnabledStates(HWND dlg, const std::vector<int>& ids) {
    std::string s;
    for (int id : ids) s += DialogDriver::Enabled(dlg, id) ? '1' : '0';
    return s;
}

Images MakeImages(int width, int height, COLORREF colour) {
    Images im;
    im.header = GlobalAlloc(GMEM_MOVEABLE | GMEM_ZEROINIT, sizeof(BITMAPINFOHEADER) + 256 * 4);
    const int row = (width + 3) & ~3;
    im.bits = GlobalAlloc(GMEM_MOVEABLE | GMEM_ZEROINIT, static_cast<SIZE_T>(row) * height);
    auto* bi = static_cast<BITMAPINFO*>(GlobalLock(im.header));
    bi->bmiHeader = {sizeof(BITMAPINFOHEADER), width, height, 1, 8, BI_RGB};
    for (int i = 0; i < 256; ++i)
        bi->bmiColors[i] = colour == CLR_INVALID
                               ? RGBQUAD{static_cast<BYTE>(i), static_cast<BYTE>(i), static_cast<BYTE>(i), 0}
                               : RGBQUAD{GetBValue(colour), GetGValue(colour), GetRValue(colour), 0};
    GlobalUnlock(im.header);
    auto* bits = static_cast<BYTE*>(GlobalLock(im.bits));
    for (int i = 0; i < row * height; ++i) bits[i] = static_cast<BYTE>(i % 251);
    GlobalUnlock(im.bits);
    return im;
}

bool IsFreed(HGLOBAL h) { return GlobalFlags(h) == GMEM_INVALID_HANDLE; }

RECT PaintedBox(HWND window, COLORREF colour) {
    RECT client{};
    GetClientRect(window, &client);
    const int w = client.right, h = client.bottom;
    const auto px = testing_support::BitmapPixels(
        testing_support::PaintedBitmap(w, h, BLACKNESS, [&](HDC dc) {
            PrintWindow(window, dc, PW_CLIENTONLY);
        }).get());
    const DWORD rgb = (GetRValue(colour) << 16) | (GetGValue(colour) << 8) | GetBValue(colour);
    RECT box{w, h, 0, 0};
    for (int y = 0; y < h; ++y)
        for (int x = 0; x < w; ++x)
            if (px[y * w + x] == rgb) {
                box.left = std::min<LONG>(box.left, x);
                box.top = std::min<LONG>(box.top, y);
                box.right = std::max<LONG>(box.right, x + 1);
                box.bottom = std::max<LONG>(box.bottom, y + 1);
            }
    return box.right ? box : RECT{};
}

Delivery Next(HWND host, Images images, bool stepBackAndAsk, const RECT& hostRect) {
    Delivery d;
    char label[64];
    std::memset(label, 'x', sizeof label);
    label[63] = 0;
    d.result = PluginHost::Get().GetNext(host, images.header, images.bits, &hostRect, label,
                                         &d.orientation, &d.rect, stepBackAndAsk, &d.done);
    d.label = label;
    return d;
}

bool StartOn(const Catalog& cat, HWND host, int index) {
    PluginHost& p = PluginHost::Get();
    p.Initialize(cat.base().c_str());
    return WithUser<BOOL>([&] { return p.Start(host); },
                          [&](DialogDriver& d) { ChooseTemplate(d, index); }) != FALSE;
}

void ResetModule() {
    PluginHost& p = PluginHost::Get();
    p.Initialize("C:\\");
    p.Stop();
    p.Uninitialize();
    TakeBeeps();
}
