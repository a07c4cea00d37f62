#include "ui/SelectionDlg.h"
#include <commctrl.h>
#include <cstdio>
#include "dib/Dib.h"
#include "fw/Beep.h"
#include "fw/IniSection.h"
#include "fw/IniSnapshot.h"
#include "res/resource.h"
#include "templates/Template.h"
#include "text/TextService.h"

namespace {
constexpr int kThumbWidth = 200, kThumbHeight = 150;
}

CSelectionDlg::CSelectionDlg(const std::string& catalogPath, HWND parent)
    : fw::Dialog(IDD_SELECTION, parent),
      m_strCatalogPath(catalogPath),
      m_textImages(::ImageList_Create(1, 1, ILC_COLOR | ILC_MASK, 1, 1)) {}

BOOL CSelectionDlg::OnInitDialog() {
    fw::Dialog::OnInitDialog();
    BeginTexts("ZEMBLAX", 0, nullptr, "");
    CTextService& ts = GetTextService();
    ts.TranslateWindow(hwnd(), IDD_SELECTION, kTextDialog);
    ts.TranslateControl(Item(IDC_SELECTION_PREVIEW), kTextDialog);
    ts.TranslateControl(Item(IDOK), kTextString);
    ts.TranslateControl(Item(IDCANCEL), kTextString);
    EndTexts();

    m_list.Attach(Item(IDC_SELECTION_LIST));
    m_list.SetExtendedStyle(m_list.GetExtendedStyle() | LVS_EX_FULLROWSELECT);
    const RECT client = m_list.GetClientRect();
    m_list.InsertColumn(0, "", client.right - ::GetSystemMetrics(SM_CXVSCROLL));

    const fw::IniSnapshot catalog(m_strCatalogPath);  // one read for all entries
    std::vector<int> entries;
    for (int n = 1;; ++n) {
        const fw::IniSection entry = catalog.Section(CTemplate::SectionName(n));
        std::string name = entry.Str("Name", "", 260);
        if (name.empty()) break;
        if (entry.Int("Deleted", 0)) continue;
        m_names.push_back(std::move(name));
        m_numbers.push_back(static_cast<BYTE>(n));  // what the host's BYTE keeps of it
        entries.push_back(n);
    }
    LoadThumbnails(entries);
    const bool thumbs = ::GetPrivateProfileIntA("SelectionDlg", "Mode", 0, m_strCatalogPath.c_str()) != 0;
    FillList(thumbs);
    ::CheckDlgButton(hwnd(), IDC_SELECTION_PREVIEW, thumbs ? BST_CHECKED : BST_UNCHECKED);
    CenterWindow();
    return TRUE;
}

// The list is made for the whole catalog at once: grown one image at a time,
// as its creation in the constructor asks, every addition would copy all
// earlier thumbnails. It holds the same images in the same order either way.
void CSelectionDlg::LoadThumbnails(const std::vector<int>& entries) {
    const int count = static_cast<int>(entries.size());
    m_thumbnails.reset(::ImageList_Create(kThumbWidth, kThumbHeight, ILC_COLOR24,
                                          count > 0 ? count : 1, 1));
    fw::WaitCursor wait;  // once for all thumbnails
    const std::string folder = CTemplate::FolderOf(m_strCatalogPath);
    for (int number : entries) {
        fw::UniqueGlobal dib(ReadDibFile(folder + CTemplate::SectionName(number) + ".bmp"));
        fw::UniqueBitmap bitmap(dib ? DibToBitmap(dib.get(), nullptr) : nullptr);
        dib.reset();
        if (bitmap)
            AddImage(bitmap.get());
        else
            AddPlaceholder();
    }
}

// The thumbnail list has no mask, so adding with black as the mask colour
// (which would blacken black pixels and build a mask only to drop it) keeps
// exactly the pixels that a plain add keeps, at half the cost.
void CSelectionDlg::AddImage(HBITMAP bitmap) { ::ImageList_Add(m_thumbnails.get(), bitmap, nullptr); }

void CSelectionDlg::AddPlaceholder() {
    fw::WindowDC dc(hwnd());
    fw::UniqueDC memory(::CreateCompatibleDC(dc.get()));
    fw::UniqueBitmap black(::CreateCompatibleBitmap(dc.get(), kThumbWidth, kThumbHeight));
    {
        fw::SelectObj sel(memory.get(), black.get());
        ::PatBlt(memory.get(), 0, 0, kThumbWidth, kThumbHeight, BLACKNESS);
    }
    AddImage(black.get());
}

void CSelectionDlg::FillList(bool bThumbnails) {
    // The list draws once, when it is filled: redrawn after every row, a
    // catalog of hundreds of entries would take longer to list than to load.
    ::SendMessageA(m_list.hwnd(), WM_SETREDRAW, FALSE, 0);
    m_list.DeleteAllItems();
    m_list.SetImageList(bThumbnails ? m_thumbnails.get() : m_textImages.get(), LVSIL_SMALL);
    for (size_t i = 0; i < m_names.size(); ++i) {
        const int index = static_cast<int>(i);
        m_list.InsertItem(index, m_names[i].c_str(), bThumbnails ? index : -1);
    }
    ::SendMessageA(m_list.hwnd(), WM_SETREDRAW, TRUE, 0);
    if (!m_names.empty()) {
        m_list.EnsureVisible(0, true);
        m_list.SetSelection(0);
    }
    m_list.Invalidate();
}

void CSelectionDlg::OnOK() {
    const int index = m_list.GetSelection();
    if (index < 0) {
        fw::Beep(MB_ICONASTERISK);
        return;
    }
    if (index < static_cast<int>(m_numbers.size())) {
        m_nSelectedNumber = m_numbers[index];
        EndDialog(IDOK);
    }
}

bool CSelectionDlg::OnCommand(WORD id, WORD code, HWND control) {
    if (id == IDC_SELECTION_PREVIEW && code == BN_CLICKED) {
        const bool thumbs = ::IsDlgButtonChecked(hwnd(), IDC_SELECTION_PREVIEW) == BST_CHECKED;
        FillList(thumbs);
        ::WritePrivateProfileStringA("SelectionDlg", "Mode", thumbs ? "1" : "0",
                                     m_strCatalogPath.c_str());
        return true;
    }
    return fw::Dialog::OnCommand(id, code, control);
}

bool CSelectionDlg::OnNotify(NMHDR* header, LRESULT& result) {
    if (header->idFrom == IDC_SELECTION_LIST && header->code == NM_DBLCLK) {
        result = 0;
        OnOK();
        return true;
    }
    return false;
}
