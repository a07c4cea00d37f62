#include "ui/SaveAsDlg.h"
#include <vector>
#include "fw/Beep.h"
#include "res/resource.h"
#include "text/TextService.h"

namespace {
constexpr size_t kMaxNameLength = 127;
}

CSaveAsDlg::CSaveAsDlg(HWND parent) : fw::Dialog(IDD_SAVE_AS, parent) {}

BOOL CSaveAsDlg::OnInitDialog() {
    fw::Dialog::OnInitDialog();
    NameToEdit();
    CenterWindow();

    BeginTexts("ZEMBLAX", 0, nullptr, "");
    CTextService& ts = GetTextService();
    ts.TranslateWindow(hwnd(), IDD_SAVE_AS, kTextDialog);
    ts.TranslateControl(Item(IDC_SAVE_AS_PROMPT), kTextDialog);
    ts.TranslateControl(Item(IDOK), kTextString);
    ts.TranslateControl(Item(IDCANCEL), kTextString);
    ts.LoadText(m_strName, IDS_UNNAMED, kTextString);
    EndTexts();

    // Deliberate: reading the still empty edit back drops the default name
    // just loaded, so the edit opens empty and the user always types the new
    // name instead of saving a second "Unbenannt".
    EditToName();
    return TRUE;
}

void CSaveAsDlg::OnOK() {
    EditToName();
    // Taken as typed: no trimming, no check of characters.
    if (!m_strName.empty() && m_strName.size() <= kMaxNameLength) {
        EndDialog(IDOK);
        return;
    }
    fw::Beep(MB_ICONASTERISK);
}

void CSaveAsDlg::NameToEdit() const {
    ::SetDlgItemTextA(hwnd(), IDC_SAVE_AS_NAME, m_strName.c_str());
}

void CSaveAsDlg::EditToName() {
    HWND edit = Item(IDC_SAVE_AS_NAME);
    const int length = ::GetWindowTextLengthA(edit);
    std::vector<char> text(static_cast<size_t>(length > 0 ? length : 0) + 1);
    const int got = ::GetWindowTextA(edit, text.data(), static_cast<int>(text.size()));
    m_strName.assign(text.data(), got > 0 ? static_cast<size_t>(got) : 0);
}
