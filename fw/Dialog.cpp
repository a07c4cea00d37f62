#include "fw/Dialog.h"
#include <commctrl.h>
#include <algorithm>
#include "fw/Module.h"

namespace fw {

Dialog::Dialog(UINT idTemplate, HWND parent) : m_idTemplate(idTemplate), m_parent(parent) {}

Dialog::~Dialog() { DestroyWindow(); }

namespace {
void InitControlsOnce() {
    static const bool done = [] {
        INITCOMMONCONTROLSEX icc{sizeof icc, ICC_LISTVIEW_CLASSES | ICC_STANDARD_CLASSES};
        return ::InitCommonControlsEx(&icc) != FALSE;
    }();
    (void)done;
}
}  // namespace

INT_PTR Dialog::DoModal() {
    InitControlsOnce();
    return ::DialogBoxParamA(Module::ResourceHandle(), MAKEINTRESOURCEA(m_idTemplate), m_parent,
                             Proc, reinterpret_cast<LPARAM>(this));
}

bool Dialog::Create(HWND parent) {
    InitControlsOnce();
    if (parent) m_parent = parent;
    HWND h = ::CreateDialogParamA(Module::ResourceHandle(), MAKEINTRESOURCEA(m_idTemplate),
                                  m_parent, Proc, reinterpret_cast<LPARAM>(this));
    return h != nullptr;
}

void Dialog::DestroyWindow() {
    if (m_hwnd && !Module::Unloading() && ::IsWindow(m_hwnd)) ::DestroyWindow(m_hwnd);
    m_hwnd = nullptr;
}

void Dialog::EndDialog(INT_PTR code) {
    if (m_hwnd) ::EndDialog(m_hwnd, code);
}

void Dialog::CenterWindow() const {
    const RECT me = GetWindowRect();
    HWND owner = ::GetWindow(m_hwnd, GW_OWNER);
    const bool overOwner = owner && ::IsWindowVisible(owner) && !::IsIconic(owner);
    RECT work;
    MONITORINFO info{sizeof info};
    HMONITOR monitor = ::MonitorFromWindow(overOwner ? owner : m_hwnd, MONITOR_DEFAULTTONEAREST);
    if (monitor && ::GetMonitorInfoA(monitor, &info))
        work = info.rcWork;
    else
        ::SystemParametersInfoA(SPI_GETWORKAREA, 0, &work, 0);
    RECT area = work;
    if (overOwner) ::GetWindowRect(owner, &area);
    const int w = me.right - me.left, h = me.bottom - me.top;
    int x = (area.left + area.right) / 2 - w / 2;
    int y = (area.top + area.bottom) / 2 - h / 2;
    // An owner near a screen edge must not push the buttons off the screen;
    // a dialog larger than the work area shows its top-left corner.
    x = std::max(static_cast<int>(work.left), std::min(x, static_cast<int>(work.right) - w));
    y = std::max(static_cast<int>(work.top), std::min(y, static_cast<int>(work.bottom) - h));
    ::SetWindowPos(m_hwnd, nullptr, x, y, 0, 0, SWP_NOSIZE | SWP_NOZORDER | SWP_NOACTIVATE);
}

RECT Dialog::GetWindowRect() const {
    RECT r{};
    ::GetWindowRect(m_hwnd, &r);
    return r;
}

BOOL Dialog::OnInitDialog() {
    DoDataExchange();
    return TRUE;
}

bool Dialog::OnCommand(WORD id, WORD code, HWND) {
    if (code != BN_CLICKED) return false;
    if (id == IDOK) {
        OnOK();
        return true;
    }
    if (id == IDCANCEL) {
        OnCancel();
        return true;
    }
    return false;
}

bool Dialog::OnNotify(NMHDR*, LRESULT&) { return false; }

void Dialog::OnTimer(UINT_PTR) {}

bool Dialog::OnDrawItem(UINT, DRAWITEMSTRUCT*) { return false; }

INT_PTR CALLBACK Dialog::Proc(HWND hwnd, UINT msg, WPARAM wp, LPARAM lp) {
    Dialog* self;
    if (msg == WM_INITDIALOG) {
        self = reinterpret_cast<Dialog*>(lp);
        self->m_hwnd = hwnd;
        ::SetWindowLongPtrA(hwnd, DWLP_USER, lp);
    } else {
        self = reinterpret_cast<Dialog*>(::GetWindowLongPtrA(hwnd, DWLP_USER));
    }
    if (!self) return FALSE;
    try {
        INT_PTR r = self->Dispatch(msg, wp, lp);
        if (msg == WM_NCDESTROY) {
            ::SetWindowLongPtrA(hwnd, DWLP_USER, 0);
            self->m_hwnd = nullptr;
        }
        return r;
    } catch (...) {
        return FALSE;  // nothing may unwind into user32
    }
}

INT_PTR Dialog::Dispatch(UINT msg, WPARAM wp, LPARAM lp) {
    switch (msg) {
    case WM_INITDIALOG:
        return OnInitDialog();
    case WM_COMMAND:
        return OnCommand(LOWORD(wp), HIWORD(wp), reinterpret_cast<HWND>(lp));
    case WM_NOTIFY: {
        LRESULT result = 0;
        if (!OnNotify(reinterpret_cast<NMHDR*>(lp), result)) return FALSE;
        ::SetWindowLongPtrA(m_hwnd, DWLP_MSGRESULT, result);
        return TRUE;
    }
    case WM_TIMER:
        OnTimer(wp);
        return TRUE;
    case WM_DRAWITEM:
        return OnDrawItem(static_cast<UINT>(wp), reinterpret_cast<DRAWITEMSTRUCT*>(lp));
    default:
        return FALSE;
    }
}

}  // namespace fw
