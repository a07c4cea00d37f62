#include "host/DesignerUser.h"
#include <commctrl.h>
#include <cstdio>
#include "fw/Handle.h"
#include "host/BitmapFile.h"

namespace {
// Control ids of the designer (its resource) and the picture size that the
// tooth outlines are given in.
constexpr int kTakeList = 15012, kChart = 15037, kCanvas = 15038, kSaveAs = 15024;
constexpr int kSaveAsName = 15040;
constexpr int kPictureWidth = 529, kPictureHeight = 250;

struct Search {
    int id;
    HWND notThis, found;
};

// A plain stdcall function: the i686 build cannot pass a lambda as one.
BOOL CALLBACK MatchDialog(HWND h, LPARAM lp) {
    auto* s = reinterpret_cast<Search*>(lp);
    if (h == s->notThis || !IsWindowVisible(h) || !GetDlgItem(h, s->id)) return TRUE;
    s->found = h;
    return FALSE;
}

HWND FindDialogWith(int id, DWORD thread, HWND notThis) {
    Search s{id, notThis, nullptr};
    EnumThreadWindows(thread, MatchDialog, reinterpret_cast<LPARAM>(&s));
    return s.found;
}
}  // namespace

DesignerUser::DesignerUser(HWND dialog, std::string settingsFile)
    : m_dialog(dialog), m_settings(std::move(settingsFile)) {}

std::string DesignerUser::Caption() const {
    char text[512] = {};
    GetWindowTextA(m_dialog, text, sizeof text);
    return text;
}

void DesignerUser::MoveTo(POINT s) {
    const int w = GetSystemMetrics(SM_CXSCREEN), h = GetSystemMetrics(SM_CYSCREEN);
    INPUT in{};
    in.type = INPUT_MOUSE;
    in.mi.dwFlags = MOUSEEVENTF_MOVE | MOUSEEVENTF_ABSOLUTE;
    in.mi.dx = (s.x * 65536 + w - 1) / w;
    in.mi.dy = (s.y * 65536 + h - 1) / h;
    SendInput(1, &in, sizeof in);
    Settle(40);
}

void DesignerUser::Press(DWORD downOrUp) {
    INPUT in{};
    in.type = INPUT_MOUSE;
    in.mi.dwFlags = downOrUp;
    SendInput(1, &in, sizeof in);
    Settle();
}

void DesignerUser::Type(const std::string& text) {
    for (char c : text) {
        INPUT in[2]{};
        for (INPUT& i : in) {
            i.type = INPUT_KEYBOARD;
            i.ki.wScan = static_cast<unsigned char>(c);
            i.ki.dwFlags = KEYEVENTF_UNICODE;
        }
        in[1].ki.dwFlags |= KEYEVENTF_KEYUP;
        SendInput(2, in, sizeof(INPUT));
    }
    Settle();
}

POINT DesignerUser::ScreenOf(int id, POINT client) const {
    ClientToScreen(GetDlgItem(m_dialog, id), &client);
    return client;
}

POINT DesignerUser::ToothPoint(int tooth) const {
    char section[16];
    std::snprintf(section, sizeof section, "Tooth%d", tooth);
    double x = 0, y = 0;
    for (int v = 1; v <= 4; ++v) {
        x += GetPrivateProfileIntA(section, ("PolygonX" + std::to_string(v)).c_str(), 0, m_settings.c_str());
        y += GetPrivateProfileIntA(section, ("PolygonY" + std::to_string(v)).c_str(), 0, m_settings.c_str());
    }
    RECT c;
    GetClientRect(GetDlgItem(m_dialog, kChart), &c);
    return {static_cast<LONG>(x / 4 * c.right / kPictureWidth),
            static_cast<LONG>(y / 4 * c.bottom / kPictureHeight)};
}

void DesignerUser::DragSensor(int index, int tooth) {
    HWND list = GetDlgItem(m_dialog, kTakeList);
    RECT item{LVIR_ICON};
    SendMessageA(list, LVM_GETITEMRECT, index, reinterpret_cast<LPARAM>(&item));
    const POINT from = ScreenOf(kTakeList, {(item.left + item.right) / 2, (item.top + item.bottom) / 2});
    const POINT to = ScreenOf(kChart, ToothPoint(tooth));
    MoveTo(from);
    Press(MOUSEEVENTF_LEFTDOWN);
    for (int step = 1; step <= 8; ++step)
        MoveTo({from.x + (to.x - from.x) * step / 8, from.y + (to.y - from.y) * step / 8});
    Press(MOUSEEVENTF_LEFTUP);
}

void DesignerUser::ClickTooth(int tooth) {
    MoveTo(ScreenOf(kChart, ToothPoint(tooth)));
    Press(MOUSEEVENTF_LEFTDOWN);
    Press(MOUSEEVENTF_LEFTUP);
}

void DesignerUser::ClickCanvas(POINT client) {
    MoveTo(ScreenOf(kCanvas, client));
    Press(MOUSEEVENTF_LEFTDOWN);
    Press(MOUSEEVENTF_LEFTUP);
}

void DesignerUser::DragCanvas(POINT from, POINT to) {
    MoveTo(ScreenOf(kCanvas, from));
    Press(MOUSEEVENTF_LEFTDOWN);
    for (int step = 1; step <= 6; ++step)
        MoveTo(ScreenOf(kCanvas, {from.x + (to.x - from.x) * step / 6,
                                  from.y + (to.y - from.y) * step / 6}));
    Press(MOUSEEVENTF_LEFTUP);
}

POINT DesignerUser::FindTake(int number) {
    RECT c;
    GetClientRect(GetDlgItem(m_dialog, kCanvas), &c);
    const std::string mark = "#" + std::to_string(number) + ":";
    // Alternate rows and columns, so that neighbouring probes a double-click
    // apart never fall on one spot.
    for (int row = 1; row < 12; ++row)
        for (int col = 1; col < 12; ++col) {
            const POINT p{c.right * col / 12, c.bottom * row / 12};
            ClickCanvas(p);
            if (Caption().find(mark) != std::string::npos) return p;
        }
    return {-1, -1};
}

void DesignerUser::ClickControl(int id) {
    RECT r;
    GetWindowRect(GetDlgItem(m_dialog, id), &r);
    MoveTo({(r.left + r.right) / 2, (r.top + r.bottom) / 2});
    Press(MOUSEEVENTF_LEFTDOWN);
    Press(MOUSEEVENTF_LEFTUP);
}

bool DesignerUser::SaveAs(const std::string& name) {
    const DWORD thread = GetWindowThreadProcessId(m_dialog, nullptr);
    ClickControl(kSaveAs);
    HWND ask = nullptr;
    for (int i = 0; i < 100 && !ask; ++i, Settle(50)) ask = FindDialogWith(kSaveAsName, thread, m_dialog);
    if (!ask) return false;
    // The name field has the focus when the dialog opens.
    SetForegroundWindow(ask);
    Type(name);
    DesignerUser(ask, "").ClickControl(IDOK);
    for (int i = 0; i < 100 && IsWindow(ask) && IsWindowVisible(ask); ++i) Settle(50);
    return !IsWindowVisible(ask);
}

bool DesignerUser::Snapshot(const std::string& bmpPath) const {
    RECT r;
    GetWindowRect(m_dialog, &r);
    fw::WindowDC screen(nullptr);
    fw::UniqueDC memory(CreateCompatibleDC(screen.get()));
    fw::UniqueBitmap picture(CreateCompatibleBitmap(screen.get(), r.right - r.left, r.bottom - r.top));
    {
        fw::SelectObj sel(memory.get(), picture.get());
        BitBlt(memory.get(), 0, 0, r.right - r.left, r.bottom - r.top, screen.get(), r.left, r.top,
               SRCCOPY);
    }
    return WriteBitmapFile(picture.get(), bmpPath);
}
