// Asks how to go on at the end of a template, or after the host asked to step
// back: a column of five buttons whose enabled states show where the run is.
#pragma once
#include <windows.h>
#include "fw/Dialog.h"

class CFinishDlg : public fw::Dialog {
public:
    enum { kQuit = 1, kNext = 2, kBack = 3, kSkip = 4, kAccept = 5 };

    // nMode != 0: end of template; 0: middle of the template.
    explicit CFinishDlg(int nMode, HWND parent = nullptr);

    void SetStateFirst() { SetFlags(0, 1, 0, 1, 1); }
    void SetStateMiddle() { SetFlags(1, 1, 0, 1, 1); }
    void SetStateLast() { SetFlags(1, 0, 0, 1, 1); }

protected:
    BOOL OnInitDialog() override;
    bool OnCommand(WORD id, WORD code, HWND control) override;

private:
    void SetFlags(BOOL back, BOOL skip, BOOL accept, BOOL next, BOOL quit);

    BOOL m_bBack = TRUE;
    BOOL m_bSkip = TRUE;
    BOOL m_bAccept = FALSE;
    BOOL m_bNext = TRUE;
    BOOL m_bQuit = TRUE;
};
