#include "ui/TakeDlg.h"
#include <utility>
#include "dib/DibValidation.h"
#include "fw/Gdi.h"
#include "fw/Handle.h"
#include "res/resource.h"
#include "settings/Settings.h"
#include "text/TextService.h"

CTakeDlg::CTakeDlg(HWND parent) : fw::Dialog(IDD_TAKE, parent) {}

BOOL CTakeDlg::OnInitDialog() {
    fw::Dialog::OnInitDialog();
    PlaceWindow();
    TranslateDialog(hwnd(), IDD_TAKE, {IDC_BACK, IDC_TAKE_SKIP, IDC_TAKE_QUIT, IDOK});
    m_nTimerId = ::SetTimer(hwnd(), 1, TheSettings().GetPreviewTimeout(), nullptr);
    return TRUE;
}

// The first showing sits centred over the owner with the top edges aligned;
// later showings of the same object come back where the user left it.
void CTakeDlg::PlaceWindow() {
    if (::IsRectEmpty(&m_rcPlacement)) {
        HWND owner = ::GetParent(hwnd());
        if (owner && ::IsWindow(owner)) {
            RECT r;
            ::GetWindowRect(owner, &r);
            m_rcPlacement = GetWindowRect();
            const int w = fw::Width(m_rcPlacement), h = fw::Height(m_rcPlacement);
            m_rcPlacement.left = r.left + (fw::Width(r) - w) / 2;
            m_rcPlacement.top = r.top;
            m_rcPlacement.right = m_rcPlacement.left + w;
            m_rcPlacement.bottom = r.top + h;
        }
    }
    if (::IsRectEmpty(&m_rcPlacement))
        CenterWindow();
    else
        ::MoveWindow(hwnd(), m_rcPlacement.left, m_rcPlacement.top, fw::Width(m_rcPlacement),
                     fw::Height(m_rcPlacement), TRUE);
}

void CTakeDlg::EndRemembering(Result result) {
    m_rcPlacement = GetWindowRect();
    EndDialog(static_cast<INT_PTR>(result));
}

void CTakeDlg::OnOK() { EndRemembering(Result::Next); }

// Esc goes on, as Weiter does: the review never ends the run by accident.
void CTakeDlg::OnCancel() { EndRemembering(Result::Next); }

bool CTakeDlg::OnCommand(WORD id, WORD code, HWND control) {
    if (code == BN_CLICKED) {
        switch (id) {
        case IDC_TAKE_SKIP: EndRemembering(Result::Skip); return true;
        case IDC_BACK: EndRemembering(Result::Back); return true;
        case IDC_TAKE_QUIT: EndRemembering(Result::Quit); return true;
        }
    }
    return fw::Dialog::OnCommand(id, code, control);
}

void CTakeDlg::OnTimer(UINT_PTR id) {
    if (!m_bNoAutoAdvance && id == m_nTimerId) EndRemembering(Result::Next);
}

RECT CTakeDlg::FitImage(const RECT& target, int iw, int ih) {
    const int rw = fw::Width(target), rh = fw::Height(target);
    int w = iw, h = ih;
    if (iw > rw || ih > rh) {
        const double sx = static_cast<double>(rw) / iw, sy = static_cast<double>(rh) / ih;
        const double s = sx <= sy ? sx : sy;
        w = static_cast<int>(iw * s);
        h = static_cast<int>(ih * s);
    }
    RECT r{target.left, target.top, target.left + w, target.top + h};
    ::OffsetRect(&r, rw / 2 - w / 2, rh / 2 - h / 2);
    return r;
}

bool CTakeDlg::DrawImage(const DRAWITEMSTRUCT& item) {
    fw::GlobalLock<BYTE> header(m_hDibHeader);
    fw::GlobalLock<BYTE> bits(m_hDibBits);
    if (!header || !bits) return false;
    // The host's blocks are checked whole before GDI reads them: a header,
    // colour table or pixel block shorter than the header says shows nothing.
    DibGeometry image;
    if (!IsDrawablePackedDib(header.get(), ::GlobalSize(m_hDibHeader), bits.get(),
                             ::GlobalSize(m_hDibBits), &image))
        return false;
    RECT target = item.rcItem;
    target.right -= 1;
    target.bottom -= 1;
    if (target.left > target.right) std::swap(target.left, target.right);
    if (target.top > target.bottom) std::swap(target.top, target.bottom);
    const RECT r = FitImage(target, image.width, image.height);
    const int oldMode = ::SetStretchBltMode(item.hDC, COLORONCOLOR);
    ::StretchDIBits(item.hDC, r.left, r.top, fw::Width(r), fw::Height(r), 0, 0, image.width,
                    image.height, bits.get(), reinterpret_cast<const BITMAPINFO*>(header.get()),
                    DIB_RGB_COLORS, SRCCOPY);
    ::SetStretchBltMode(item.hDC, oldMode);
    return false;  // the default handling follows, as for every item
}

bool CTakeDlg::OnDrawItem(UINT id, DRAWITEMSTRUCT* item) {
    if (id != IDC_TAKE_PICTURE || !(item->itemAction & ODA_DRAWENTIRE)) return false;
    if (!m_hDibHeader || !m_hDibBits) return true;
    return DrawImage(*item);
}
