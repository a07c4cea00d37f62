// Shows the exposure just taken and lets the user go on, repeat, skip or end.
// Closes itself after the preview time-out as if Weiter had been pressed.
#pragma once
#include <windows.h>
#include "fw/Dialog.h"

class CTakeDlg : public fw::Dialog {
public:
    // What the user decided. The values are the dialog's end codes, which
    // the system also uses for Enter and Esc (IDOK 1, IDCANCEL 2): Esc
    // ending as Next is wanted, so they stay numbers only inside Show.
    enum class Result { Quit = 1, Next = 2, Back = 3, Skip = 4 };

    explicit CTakeDlg(HWND parent = nullptr);
    // Modal; any other end code (a dialog that could not be shown) is returned
    // as it is and makes the caller show the dialog again.
    Result Show() { return static_cast<Result>(DoModal()); }

    void SetImages(HGLOBAL hDibHeader, HGLOBAL hDibBits) {
        m_hDibHeader = hDibHeader;
        m_hDibBits = hDibBits;
    }
    void SetNoAutoAdvance(BOOL bNoAutoAdvance) { m_bNoAutoAdvance = bNoAutoAdvance; }

    // Where an image of iw x ih lands in a picture area of rw x rh: never
    // enlarged, reduced by one factor, centred.
    static RECT FitImage(const RECT& target, int iw, int ih);

protected:
    BOOL OnInitDialog() override;
    void OnOK() override;
    void OnCancel() override;
    bool OnCommand(WORD id, WORD code, HWND control) override;
    void OnTimer(UINT_PTR id) override;
    bool OnDrawItem(UINT id, DRAWITEMSTRUCT* item) override;

private:
    void PlaceWindow();
    void EndRemembering(Result result);
    bool DrawImage(const DRAWITEMSTRUCT& item);

    HGLOBAL m_hDibHeader = nullptr;
    HGLOBAL m_hDibBits = nullptr;
    UINT_PTR m_nTimerId = 0;
    BOOL m_bNoAutoAdvance = FALSE;
    RECT m_rcPlacement{};
};
