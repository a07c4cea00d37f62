#include "DialogDriver.h"
#include <cstring>
#include "res/resource.h"

namespace {
struct Search {
    int id;
    HWND found;
};

BOOL CALLBACK FindDialog(HWND h, LPARAM lp) {
    auto* s = reinterpret_cast<Search*>(lp);
    char cls[16];
    GetClassNameA(h, cls, sizeof cls);
    if (std::strcmp(cls, "#32770") != 0 || !IsWindowVisible(h)) return TRUE;
    // Window handles are reused: a mark tells a dialog already answered from a new one.
    if (!GetDlgItem(h, s->id) || GetPropA(h, "DialogDriverSeen")) return TRUE;
    SetPropA(h, "DialogDriverSeen", reinterpret_cast<HANDLE>(1));
    s->found = h;
    return FALSE;
}
}  // namespace

HWND DialogDriver::WaitFor(int id, int timeoutMs) const {
    for (int waited = 0; waited < timeoutMs; waited += 20) {
        Search s{id, nullptr};
        EnumThreadWindows(m_uiThread, FindDialog, reinterpret_cast<LPARAM>(&s));
        if (s.found) {
            Sleep(30);  // let the dialog finish its initialisation
            return s.found;
        }
        Sleep(20);
    }
    return nullptr;
}

std::string DialogDriver::AnswerBox(int answer, int timeoutMs, std::string* caption) const {
    constexpr int kBoxText = 0xFFFF;  // the message box's text control
    HWND box = WaitFor(kBoxText, timeoutMs);
    if (!box) return std::string();
    if (caption) *caption = Text(box);
    const std::string text = ItemText(box, kBoxText);
    Click(box, answer);
    WaitGone(box);
    return text;
}

namespace {
BOOL CALLBACK Dismiss(HWND h, LPARAM) {
    char cls[16];
    GetClassNameA(h, cls, sizeof cls);
    if (std::strcmp(cls, "#32770") == 0 && IsWindowVisible(h) && !GetDlgItem(h, IDC_PREVIEW_CANVAS))
        PostMessageA(h, WM_COMMAND, GetDlgItem(h, IDC_FINISH_QUIT) ? IDC_FINISH_QUIT : IDCANCEL, 0);
    return TRUE;
}
}  // namespace

void DialogDriver::DismissAll() const { EnumThreadWindows(m_uiThread, Dismiss, 0); }

bool DialogDriver::WaitGone(HWND hwnd, int timeoutMs) {
    for (int waited = 0; waited < timeoutMs; waited += 20) {
        if (!IsWindow(hwnd) || !IsWindowVisible(hwnd)) return true;
        Sleep(20);
    }
    return false;
}

bool DialogDriver::Enabled(HWND dialog, int id) {
    HWND b = GetDlgItem(dialog, id);
    return b && IsWindowEnabled(b);
}

bool DialogDriver::Click(HWND dialog, int id) {
    // Wine clicks disabled buttons too; a person cannot.
    if (!Enabled(dialog, id)) return false;
    PostMessageA(GetDlgItem(dialog, id), BM_CLICK, 0, 0);
    return true;
}

std::string DialogDriver::Text(HWND window) {
    char buf[512] = {};
    GetWindowTextA(window, buf, sizeof buf);
    return buf;
}

void DialogDriver::PressEscape(HWND dialog) {
    // The key goes where the focus is; the dialog manager turns it into IDCANCEL.
    GUITHREADINFO info{sizeof info};
    HWND target = dialog;
    if (GetGUIThreadInfo(GetWindowThreadProcessId(dialog, nullptr), &info) && info.hwndFocus)
        target = info.hwndFocus;
    PostMessageA(target, WM_KEYDOWN, VK_ESCAPE, 0x00010001);
    PostMessageA(target, WM_KEYUP, VK_ESCAPE, 0xC0010001);
}
