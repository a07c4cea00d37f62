// Asks how to go on at the end of a template, or after the host asked to step
// back: a column of five buttons whose enabled states show where the run is.
#pragma once
#include <windows.h>
#include "fw/Dialog.h"

class CFinishDlg : public fw::Dialog {
public:
    // What the user decided; the values are the dialog's end codes.
    enum class Result { Quit = 1, Next = 2, Back = 3, Skip = 4, Accept = 5 };

    // nMode != 0: end of template; 0: middle of the template.
    explicit CFinishDlg(int nMode, HWND parent = nullptr);
    // Modal; an end code outside Result makes the caller show it again.
    Result Show() { return static_cast<Result>(DoModal()); }

    void SetStateFirst() { SetFlags(0, 1, 0, 1, 1); }
    void SetStateMiddle() { SetFlags(1, 1, 0, 1, 1); }
    void SetStateLast() { SetFlags(1, 0, 0, 1, 1); }

protected:
    BOOL OnInitDialog() override;
    bool OnCommand(WORD id, WORD code, HWND control) override;
    void OnCancel() override;

private:
    void SetFlags(BOOL back, BOOL skip, BOOL accept, BOOL next, BOOL quit);
    void End(Result result) { EndDialog(static_cast<INT_PTR>(result)); }

    BOOL m_bBack = TRUE;
    BOOL m_bSkip = TRUE;
    BOOL m_bAccept = FALSE;
    BOOL m_bNext = TRUE;
    BOOL m_bQuit = TRUE;
};
