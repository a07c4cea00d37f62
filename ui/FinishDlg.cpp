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
        case IDC_FINISH_NEXT: End(Result::Next); return true;
        case IDC_FINISH_QUIT: End(Result::Quit); return true;
        case IDC_BACK: End(Result::Back); return true;
        case IDC_FINISH_SKIP: End(Result::Skip); return true;
        case IDC_FINISH_ACCEPT: End(Result::Accept); return true;
        }
    }
    return fw::Dialog::OnCommand(id, code, control);
}

// Kept on purpose: Esc is Weiter even while Weiter is disabled. At the end of
// the template the delivery then finds no take, GetNext returns -1 and the
// run stays active until the host stops it; hosts rely on that answer.
void CFinishDlg::OnCancel() { End(Result::Next); }
