#include "ui/FinishDlg.h"
#include "res/resource.h"
#include "text/TextService.h"

CFinishDlg::CFinishDlg(int nMode, HWND parent) : fw::Dialog(IDD_FINISH, parent) {
    if (nMode)
        SetFlags(1, 0, 1, 0, 1);
    else
        SetStateMiddle();
}

void CFinishDlg::SetFlags(BOOL back, BOOL skip, BOOL accept, BOOL next, BOOL quit) {
    m_bBack = back;
    m_bSkip = skip;
    m_bAccept = accept;
    m_bNext = next;
    m_bQuit = quit;
}

BOOL CFinishDlg::OnInitDialog() {
    fw::Dialog::OnInitDialog();
    TranslateDialog(hwnd(), IDD_FINISH,
                    {IDC_BACK, IDC_FINISH_SKIP, IDC_FINISH_ACCEPT, IDC_FINISH_NEXT, IDC_FINISH_QUIT});
    EnableItem(IDC_BACK, m_bBack);
    EnableItem(IDC_FINISH_SKIP, m_bSkip);
    EnableItem(IDC_FINISH_ACCEPT, m_bAccept);
    EnableItem(IDC_FINISH_NEXT, m_bNext);
    EnableItem(IDC_FINISH_QUIT, m_bQuit);
    CenterWindow();
    return TRUE;
}

bool CFinishDlg::OnCommand(WORD id, WORD code, HWND control) {
    if (code == BN_CLICKED) {
        switch (id) {
        case IDC_FINISH_NEXT: EndDialog(kNext); return true;
        case IDC_FINISH_QUIT: EndDialog(kQuit); return true;
        case IDC_BACK: EndDialog(kBack); return true;
        case IDC_FINISH_SKIP: EndDialog(kSkip); return true;
        case IDC_FINISH_ACCEPT: EndDialog(kAccept); return true;
        }
    }
    // Esc ends with IDCANCEL, which is 2: the loop reads it as Weiter.
    return fw::Dialog::OnCommand(id, code, control);
}
