#include "ui/PreviewDlg.h"
#include "res/resource.h"
#include "settings/Settings.h"

CPreviewDlg::CPreviewDlg(HWND parent) : fw::Dialog(IDD_PREVIEW, parent) {}

void CPreviewDlg::DoDataExchange() { m_canvas.Subclass(Item(IDC_PREVIEW_CANVAS)); }

BOOL CPreviewDlg::OnInitDialog() {
    fw::Dialog::OnInitDialog();
    const std::string noFile;
    m_canvas.Init(nullptr, &noFile);
    m_canvas.SetTemplate(m_pTemplate);
    m_canvas.SetOrderMode(!TheSettings().GetShowToothNumbers());
    CenterWindow();
    return TRUE;
}

void CPreviewDlg::SetActiveTake(int nIndex) {
    m_canvas.SelectTake(nIndex);
    m_canvas.Invalidate(nullptr, true);
}

void CPreviewDlg::PlaceWindow(int x, int y, int cx, int cy, BOOL bRepaint) {
    ::MoveWindow(hwnd(), x, y, cx, cy, bRepaint);
    RECT client{};
    ::GetClientRect(hwnd(), &client);
    if (m_canvas.hwnd())
        ::MoveWindow(m_canvas.hwnd(), 0, 0, client.right, client.bottom, TRUE);
}
